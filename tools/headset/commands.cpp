#include "tools/headset/commands.h"

#include "tools/headset/caps_json.h"
#include "tools/headset/caps_table.h"
#include "tools/headset/decode.h"
#include "tools/headset/descriptor_file.h"
#include "tools/headset/encode.h"
#include "tools/headset/errors.h"
#include "tools/headset/explain.h"

namespace headset {
namespace {

Bytes parse_report(const std::string& text) {
    try {
        return parse_hex(text);
    } catch (const Refused& error) {
        throw UsageError("a report is hexadecimal: " + std::string(error.what()));
    }
}

template <class Report>
void print(const Report& report, bool json, std::ostream& output) {
    output << (json ? to_line(to_json(report)) : to_text(report));
}

void run_caps(const Options& options, std::istream& input, std::ostream& output) {
    if (options.descriptor == "-")
        return answer_caps_lines(input, output);
    const auto collections = parse_collections(load_descriptor(options.descriptor, input).bytes);
    output << (options.json ? to_line(caps_to_json(collections)) : caps_table(collections));
}

void run_decode(const Options& options, std::istream& input, std::ostream& output) {
    std::vector<Bytes> reports;
    for (const auto& argument : options.arguments)
        reports.push_back(parse_report(argument));
    const auto collections = parse_collections(load_descriptor(options.descriptor, input).bytes);
    for (const auto& report : reports)
        print(decode(collections, options.direction, report), options.json, output);
}

void run_encode(const Options& options, std::istream& input, std::ostream& output) {
    std::vector<Assignment> assignments;
    for (const auto& argument : options.arguments)
        assignments.push_back(parse_assignment(argument));
    const auto collections = parse_collections(load_descriptor(options.descriptor, input).bytes);
    for (const auto& report : encode(collections, options.direction, assignments))
        print(report, options.json, output);
}

void run_explain(const Options& options, std::istream& input, std::ostream& output) {
    output << to_text(explain(load_descriptor(options.descriptor, input)));
}

}  // namespace

void run(const Options& options, std::istream& input, std::ostream& output) {
    switch (options.command) {
        case Command::caps:
            return run_caps(options, input, output);
        case Command::decode:
            return run_decode(options, input, output);
        case Command::encode:
            return run_encode(options, input, output);
        case Command::explain:
            return run_explain(options, input, output);
    }
}

}  // namespace headset
