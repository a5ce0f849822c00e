// What is shown for calls, and what keys ask for, found out with a client of the whole plug-in.
#pragma once

namespace docs {

class Client;

/// What the headset shows for all calls together, once it is ready or the client has replaced them.
void print_shown_calls(Client& client);
/// What each operation of the client sends and changes.
void print_operations(Client& client);
/// Which request each key leads to.
void print_requests(Client& client);

}  // namespace docs
