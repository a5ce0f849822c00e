#include <exception>
#include <iostream>

#include "tools/common/output.h"
#include "tools/headset/commands.h"
#include "tools/headset/errors.h"
#include "tools/headset/linux_system.h"

namespace {

using namespace headset;

int fail(int status, const std::exception& error) {
    return tools::fail("headset", status, error);
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        const auto parsed = parse_options(argc, argv);
        if (const int* status = std::get_if<int>(&parsed))
            return *status;
        LinuxSystem system;
        tools::OutputStream output;
        const int status = run(std::get<Options>(parsed), system, std::cin, output);
        output.flush();
        return status;
    } catch (const UsageError& error) {
        return fail(exit_usage, error);
    } catch (const Refused& error) {
        return fail(exit_refused, error);
    } catch (const std::exception& error) {
        return fail(exit_system_error, error);
    }
}
