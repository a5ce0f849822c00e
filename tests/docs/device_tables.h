// What drivers send and read, and which keys a headset lets through, found out with the real ones.
#pragma once

#include <cstdint>
#include <map>

#include "tests/docs/markdown_table.h"

namespace docs {

/// Who makes a key of what a headset sends.
struct KeySource {
    bool is_standard = false;  ///< the standard driver, on one of the models that have it
    Cells dormant_drivers{};   ///< their names
};

/// The sources of each key that any driver makes, by its code.
std::map<std::int32_t, KeySource> key_sources();

/// Which hook keys a headset passes on, by what it shows and what came before.
void print_key_filter();
/// The reports of the standard driver, on every model that has it.
void print_standard_reports();
/// What the standard driver makes of the keys of these models.
void print_standard_keys();
/// What users can do at the models, and what these show them.
void print_support();
/// The reports of the dormant drivers.
void print_dormant_reports();
/// The reports with which the standard driver answers a change or a key.
void print_standard_follow_ups();
/// Which drivers make which key.
void print_key_sources(const std::map<std::int32_t, KeySource>& sources);
/// The keys of the dormant drivers.
void print_dormant_keys();
/// The reports with which dormant drivers answer a change or a key.
void print_dormant_follow_ups();

}  // namespace docs
