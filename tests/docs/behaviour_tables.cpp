// Prints the tables of docs/behaviour.md, which tell what the plug-in's own code does with calls, keys and
// reports, or those of docs/dormant-drivers.md, or that of README.md.
//
// Usage: behaviour_tables [dormant|readme]
#include <exception>
#include <iostream>
#include <string_view>

#include "tests/docs/call_tables.h"
#include "tests/docs/client.h"
#include "tests/docs/device_tables.h"

namespace docs {
namespace {

void print_behaviour() {
    // Before the plug-in runs, which would open what is plugged, and take the keys.
    print_key_filter();
    print_standard_reports();
    print_standard_keys();
    print_standard_follow_ups();
    const auto sources = key_sources();
    print_key_sources(sources);

    Client client;
    print_shown_calls(client);
    print_operations(client);
    print_requests(client);
    print_reach(client, sources);
}

void print_dormant_drivers() {
    print_dormant_reports();
    print_dormant_keys();
    print_dormant_follow_ups();
}

}  // namespace
}  // namespace docs

int main(int argc, char** argv) try {
    if (argc == 1) {
        docs::print_behaviour();
        return 0;
    }
    if (argc == 2 && std::string_view(argv[1]) == "dormant") {
        docs::print_dormant_drivers();
        return 0;
    }
    if (argc == 2 && std::string_view(argv[1]) == "readme") {
        docs::print_support();
        return 0;
    }
    std::cerr << "usage: behaviour_tables [dormant|readme]\n";
    return 2;
} catch (const std::exception& error) {
    std::cerr << "behaviour_tables: " << error.what() << '\n';
    return 1;
}
