// What is shown for calls, and what keys ask for, found out with a client of the whole plug-in.
#pragma once

#include <cstdint>
#include <map>

#include "tests/docs/device_tables.h"

namespace docs {

class Client;

/// What the headset shows for all calls together, once it is ready or the client has replaced them.
void print_shown_calls(Client& client);
/// What each operation of the client sends and changes.
void print_operations(Client& client);
/// Which request each key leads to.
void print_requests(Client& client);
/// Which requests there are, which keys lead to them, and whether a headset has such a key today.
void print_reach(Client& client, const std::map<std::int32_t, KeySource>& sources);

}  // namespace docs
