#include <cstdio>
#include <exception>
#include <iostream>

#include "tools/headset/commands.h"
#include "tools/headset/errors.h"
#include "tools/headset/linux_system.h"

namespace {

using namespace headset;

int fail(int status, const std::exception& error) {
    std::fprintf(stderr, "headset: %s\n", error.what());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        const auto parsed = parse_options(argc, argv);
        if (const int* status = std::get_if<int>(&parsed))
            return *status;
        std::cout.exceptions(std::ios::badbit | std::ios::failbit);
        LinuxSystem system;
        const int status = run(std::get<Options>(parsed), system, std::cin, std::cout);
        std::cout.flush();
        return status;
    } catch (const UsageError& error) {
        return fail(exit_usage, error);
    } catch (const Refused& error) {
        std::cout.flush();
        return fail(exit_refused, error);
    } catch (const std::exception& error) {
        return fail(exit_system_error, error);
    }
}
