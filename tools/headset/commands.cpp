#include "tools/headset/commands.h"

#include <algorithm>

#include "tools/headset/caps_json.h"
#include "tools/headset/caps_table.h"
#include "tools/headset/decode.h"
#include "tools/headset/descriptor_file.h"
#include "tools/headset/doctor.h"
#include "tools/headset/encode.h"
#include "tools/headset/end_request.h"
#include "tools/headset/errors.h"
#include "tools/headset/explain.h"
#include "tools/headset/interfaces.h"
#include "tools/headset/list.h"
#include "tools/headset/monitor.h"
#include "tools/headset/udev_rules.h"

namespace headset {
namespace {

/// What a command is to do, and with what.
struct Task {
    const Options& options;
    System& system;
    std::istream& input;
    std::ostream& output;
};

Bytes parse_report(const std::string& text) {
    try {
        return parse_hex(text);
    } catch (const Refused& error) {
        throw UsageError("a report is hexadecimal: " + std::string(error.what()));
    }
}

std::vector<Assignment> parse_assignments(const std::vector<std::string>& arguments) {
    std::vector<Assignment> assignments;
    for (const auto& argument : arguments)
        assignments.push_back(parse_assignment(argument));
    return assignments;
}

Collections load_collections(const Task& task) {
    return parse_collections(load_descriptor(task.options.descriptor, task.input).bytes);
}

template <class Report>
void print(const Report& report, const Task& task) {
    task.output << (task.options.json ? to_line(to_json(report)) : to_text(report));
}

int run_caps(const Task& task) {
    if (task.options.descriptor == "-") {
        answer_caps_lines(task.input, task.output);
        return exit_ok;
    }
    const auto collections = load_collections(task);
    task.output << (task.options.json ? to_line(caps_to_json(collections)) : caps_table(collections));
    return exit_ok;
}

int run_decode(const Task& task) {
    std::vector<Bytes> reports;
    for (const auto& argument : task.options.arguments)
        reports.push_back(parse_report(argument));
    const auto collections = load_collections(task);
    for (const auto& report : reports)
        print(decode(collections, task.options.direction, report), task);
    return exit_ok;
}

int run_encode(const Task& task) {
    const auto assignments = parse_assignments(task.options.arguments);
    const auto collections = load_collections(task);
    for (const auto& report : encode(collections, task.options.direction, assignments))
        print(report, task);
    return exit_ok;
}

/// The descriptor of a device, by its path or serial number, or one that is given as in other commands.
Descriptor find_descriptor(const Task& task) {
    const auto& argument = task.options.descriptor;
    if (names_node(task.system, argument))
        return describe(task.system, find_node(task.system, argument));
    if (names_file(argument))
        return load_descriptor(argument, task.input);
    if (const auto node = find_serial(task.system, argument))
        return describe(task.system, *node);
    try {
        return load_descriptor(argument, task.input);
    } catch (const UsageError& error) {
        throw UsageError(std::string(error.what()) +
                         "; \"headset list\" shows the devices with their serial numbers");
    }
}

int run_explain(const Task& task) {
    task.output << to_text(explain(find_descriptor(task)));
    return exit_ok;
}

int run_list(const Task& task) {
    const auto nodes = list(task.system);
    if (!task.options.json)
        task.output << to_text(nodes);
    else
        for (const auto& interface : to_json(nodes))
            task.output << to_line(interface);
    return exit_ok;
}

int run_doctor(const Task& task) {
    const auto diagnosis = diagnose(task.system);
    print(diagnosis, task);
    return diagnosis.calls_work() ? exit_ok : exit_refused;
}

std::string monitor_heading(const std::vector<Node>& nodes) {
    std::string text = "Reports of " + device_name(nodes.front().interfaces.front()) + ", until Ctrl-C:\n";
    for (const auto& node : nodes)
        for (const auto& info : node.interfaces)
            text += "  " + info.path + "  " + usage_label({info.usage_page, info.usage}) + '\n';
    return text + '\n';
}

int run_monitor(const Task& task) {
    auto assignments = parse_assignments(task.options.arguments);
    const auto nodes = find_headset(task.system, task.options.device);
    Monitor monitor(task.system, nodes, [&](const SeenReport& report) {
        print(report, task);
        task.output.flush();
    });
    const EndRequest end_request([&] { monitor.end(); });
    try {
        if (!task.options.json)
            task.output << monitor_heading(nodes) << std::flush;
        if (!assignments.empty())
            monitor.set(assignments);
        if (const auto loss = monitor.run(); !loss.empty())
            throw Refused("the headset is gone: " + loss);
        for (auto& assignment : assignments)
            assignment.value = 0;
        if (!assignments.empty())
            monitor.set(assignments);
    } catch (...) {
        // The output may be what failed; the headset does not stay lit for that.
        if (!assignments.empty())
            monitor.reset(assignments);
        throw;
    }
    return exit_ok;
}

int run_udev_rules(const Task& task) {
    task.output << udev_rules();
    return exit_ok;
}

struct Row {
    Command command;
    int (*run)(const Task&);
};
constexpr Row rows[] = {
    {Command::caps, run_caps},       {Command::decode, run_decode},
    {Command::encode, run_encode},   {Command::explain, run_explain},
    {Command::list, run_list},       {Command::doctor, run_doctor},
    {Command::monitor, run_monitor}, {Command::udev_rules, run_udev_rules},
};

}  // namespace

int run(const Options& options, System& system, std::istream& input, std::ostream& output) {
    return std::ranges::find(rows, options.command, &Row::command)->run({options, system, input, output});
}

}  // namespace headset
