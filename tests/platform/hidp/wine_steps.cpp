#include "tests/platform/hidp/wine_steps.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace reference {

using hidp_test::Bytes;
using nlohmann::json;

namespace {

/// Arguments in words. A usage is found by its first word (HID Usage Tables, Generic Desktop page).
const std::map<std::string, json> words = {
    {"X", 0x30},
    {"Z", 0x32},
    {"RX", 0x33},
    {"RY", 0x34},
    {"hat", 0x39},
    {"any", 1},
    // Of a link collection: page and usage.
    {"the node with usage 0x10 of page 0x0E", {0x0E, 0x10}},
    {"SYSTEM_CTL 0x80 node", {0x01, 0x80}},
};

/// An argument in words that stands for several calls, each with one of these.
const std::map<std::string, std::vector<int>> series = {
    {"i = 1..5", {1, 2, 3, 4, 5}},
    {"1..5", {1, 2, 3, 4, 5}},
    {"i = 6..10", {6, 7, 8, 9, 10}},
};

/// A report's length in words: what is added to that of the direction.
const std::map<std::string, std::vector<int>> report_lengths = {
    {"caps length - 1 or + 1", {-1, 1}},
    {"caps + 1", {1}},
};

/// What the record says about a call in a sentence.
struct Remark {
    std::vector<Change> changes{};
    bool begins_empty = false;
    json results = json::object();  ///< further results
    int series_offset = 0;          ///< of a byte that becomes `i`, counted from number i of a series; or 0
};

const std::map<std::string, Remark> remarks = {
    {"= button cap 0", {.results = {{"capability", 0}}}},
    {"the output items are constant without usages: no caps", {}},
    {"byte 0 = id, the rest of the caps length zeroed", {.results = {{"is_empty", true}}}},
    {"report[16..] = the data", {.changes = {{16, counted(6)}}}},  // two fields of 24 bits
    {"report[16]=8, report[17]=0 (a value array: first element)", {.changes = {{16, {8, 0, 0}}}}},
    {"logical -128..127, no physical range", {}},
    {"before any keyboard usage is set", {}},
    {"two array slots; the first two are written: report[13]=2, report[14]=4 (1 + usage - usage min... with "
     "logical min 0: usage - 8 + 1)",
     {.changes = {{13, {2, 4}}}}},
    {"a button is no value", {}},
    {"LED usages listed one by one: caps are in reverse order, hence the order", {}},
    {"[data index, value]; buttons that are off are absent", {}},
    {"id 02 03 00...", {.changes = {{1, {2, 3}}}, .begins_empty = true}},
    {"(0: Y written last 3? report[1] is X = data index 1 = 2, report[2] is Y = data index 0 = 3)", {}},
    {"as before, byte 13 = 02", {.changes = {{13, {2}}}}},
    {"array slot: 18 set, 19 set, 18 cleared, clearing again fails", {}},
    {"byte 3 = 01, byte 13 = 02, byte 14 = 01", {.changes = {{3, {1}}, {13, {2, 1}}}}},
    {"into a fresh report; HidP_GetData then gives the same list",
     {.begins_empty = true, .results = {{"is_listed_again", true}}}},
    {"n-ary array 1..16: last two bytes become 03 04", {.changes = {{-2, {3, 4}}}}},
    {"00 00", {.changes = {{-2, {0, 0}}}}},
    {"second last byte = 01", {.changes = {{-2, {1}}}}},
    {"bytes 1-2, little endian", {.changes = {{1, {0x05, 0x10}}}}},  // 4101
    {"with ids 1 and 2: report[0]=0 is accepted; without ids: report[0]=1 is not", {}},
    {"report[9..16] = the first 8 bytes", {.changes = {{9, counted(8)}}}},
    {"report[20+i] = i", {.series_offset = 20}},
    {"logical 0..255, physical 0..4080: report[20+i] = i; GetScaled gives i*16",
     {.results = {{"scaled", "i*16"}}, .series_offset = 20}},
};

/// The number `i` that a series is at, and the report id of the record.
struct Context {
    int i;
    int report_id;
};

/// A value of the record with numbers for its words.
json resolved(const json& value, const Context& context) {
    if (value.is_array()) {
        json result = json::array();
        for (const json& element : value) {
            result.push_back(resolved(element, context));
        }
        return result;
    }
    if (!value.is_string()) {
        return value;
    }
    const std::map<std::string, int> expressions = {{"i", context.i},
                                                    {"i*16", context.i * 16},
                                                    {"report_id", context.report_id},
                                                    {"1 - report_id", 1 - context.report_id}};
    const auto text = value.get<std::string>();
    if (const auto found = expressions.find(text); found != expressions.end()) {
        return found->second;
    }
    for (const std::string& word : {text, text.substr(0, text.find(' '))}) {
        if (const auto found = words.find(word); found != words.end()) {
            return found->second;
        }
    }
    const bool is_number = !text.empty() && text.front() >= '0' && text.front() <= '9';
    if (!is_number) {
        throw std::out_of_range(text);
    }
    return std::stoul(text, nullptr, 0);
}

/// What stands as it is, in words or not: names of types, bytes in hexadecimal, and what is no list.
bool is_literal(const std::string& name) {
    return name == "type" || name == "report[16..17]" || name == "text";
}

Remark merged_remarks(const json& expectation) {
    Remark all;
    for (const char* field : {"note", "report_after"}) {
        if (!expectation.contains(field)) {
            continue;
        }
        const auto text = expectation.at(field).get<std::string>();
        const auto found = remarks.find(text);
        if (found == remarks.end()) {
            throw std::out_of_range(text);
        }
        const Remark& remark = found->second;
        all.changes.insert(all.changes.end(), remark.changes.begin(), remark.changes.end());
        all.begins_empty = all.begins_empty || remark.begins_empty;
        all.results.update(remark.results);
        all.series_offset += remark.series_offset;
    }
    return all;
}

/// The numbers that one expectation is to be made with, and the argument that they are for.
struct Series {
    std::string argument;
    std::vector<int> numbers;
};

Series series_of(const json& arguments) {
    const auto find = [&](const char* name, const auto& table) -> const std::vector<int>* {
        const json value = arguments.value(name, json());
        const auto found = value.is_string() ? table.find(value.get<std::string>()) : table.end();
        return found == table.end() ? nullptr : &found->second;
    };
    if (const auto* numbers = find("usage", series)) {
        return {"usage", *numbers};
    }
    if (const auto* numbers = find("length", report_lengths)) {
        return {"report_length", *numbers};
    }
    return {"", {0}};
}

class Reader {
  public:
    explicit Reader(const json& record) : report_id_(record.at("report_id").get<int>()) {}

    void read(std::size_t number, const json& expectation);
    std::vector<Step> take() { return std::move(steps_); }

  private:
    void add(Step step, const json& arguments, const Remark& remark, int i);

    int report_id_;
    json repeated_ = json::object();
    std::vector<Step> steps_;
};

/// A call that does not name both page and usage repeats the arguments of the last one that did, but for what
/// it states.
void Reader::read(std::size_t number, const json& expectation) {
    json stated = expectation.at("args");
    if (stated.is_string()) {
        stated = {{"text", stated}};
    }
    const bool is_complete = stated.contains("page") && stated.contains("usage");
    json arguments = is_complete ? json::object() : repeated_;
    arguments.update(stated);
    if (is_complete) {
        repeated_ = stated;
    }

    Step step{.number = number, .call = expectation.at("call"), .expected = expectation};
    const Remark remark = merged_remarks(expectation);
    for (const char* field : {"call", "args", "note", "report_after"}) {
        step.expected.erase(field);
    }
    step.expected.update(remark.results);
    for (const auto& [name, value] : stated.items()) {
        step.stated.insert(name);
    }
    const auto [argument, numbers] = series_of(arguments);
    if (argument == "report_length") {
        arguments.erase("length");
        step.stated.erase("length");
        step.stated.insert(argument);
    }
    for (const int i : numbers) {
        if (!argument.empty()) {
            arguments[argument] = i;
        }
        add(step, arguments, remark, i);
    }
}

void Reader::add(Step step, const json& arguments, const Remark& remark, int i) {
    const Context context{i, report_id_};
    step.arguments = json::object();
    for (const auto& [name, value] : arguments.items()) {
        step.arguments[name] = is_literal(name) ? value : resolved(value, context);
    }
    for (auto& [name, value] : step.expected.items()) {
        value = name == "status" ? value : resolved(value, context);
    }
    step.begins_empty = remark.begins_empty || step.arguments.value("fresh", false);
    step.stated.erase("fresh");
    step.changes = remark.changes;
    if (remark.series_offset != 0) {
        step.changes.push_back({remark.series_offset + i, {static_cast<std::uint8_t>(i)}});
    }
    steps_.push_back(std::move(step));
}

}  // namespace

Bytes counted(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

std::vector<Step> steps(const json& record) {
    Reader reader(record);
    const json& expectations = record.at("expectations");
    for (std::size_t i = 0; i < expectations.size(); ++i) {
        reader.read(i, expectations[i]);
    }
    return reader.take();
}

}  // namespace reference
