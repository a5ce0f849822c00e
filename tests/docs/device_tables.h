// What drivers send and read, and which keys a headset lets through, found out with the real ones.
#pragma once

namespace docs {

/// Which hook keys a headset passes on, by what it shows and what came before.
void print_key_filter();
/// The reports of the standard driver, on every model that has it.
void print_standard_reports();
/// What the standard driver makes of the keys of these models.
void print_standard_keys();
/// The reports of the dormant drivers.
void print_dormant_reports();
/// The reports with which drivers answer a change or a key.
void print_follow_ups();
/// The keys of the dormant drivers.
void print_dormant_keys();

}  // namespace docs
