// Prints the tables of docs/behaviour.md: what the plug-in's own code does with calls, keys and reports.
//
// Usage: behaviour_tables
#include <exception>
#include <iostream>

#include "tests/docs/call_tables.h"
#include "tests/docs/client.h"
#include "tests/docs/device_tables.h"

int main() try {
    // Before the plug-in runs, which would open what is plugged, and take the keys.
    docs::print_key_filter();
    docs::print_standard_reports();
    docs::print_standard_keys();
    docs::print_dormant_reports();
    docs::print_follow_ups();
    docs::print_dormant_keys();

    docs::Client client;
    docs::print_shown_calls(client);
    docs::print_operations(client);
    docs::print_requests(client);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "behaviour_tables: " << error.what() << '\n';
    return 1;
}
