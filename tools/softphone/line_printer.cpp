#include <optional>

#include "tools/softphone/hid_names.h"
#include "tools/softphone/printers.h"

namespace softphone {
namespace {

/// The kind of a line: what stands in front of it in a list of events, and in a story.
struct Kind {
    std::string_view label;
    std::string_view in_story;  ///< empty: a story leaves it out, because another line says it already
    Colour colour;
};

constexpr Kind host_call{"host", "host > plug-in", Colour::cyan};
constexpr Kind host_result{"result", "host < plug-in", Colour::dim};
constexpr Kind call{"call", "", Colour::blue};
constexpr Kind attached{"attached", "", Colour::dim};
constexpr Kind action{"action", "plug-in > host", Colour::magenta};
constexpr Kind ready{"ready", "plug-in > host", Colour::green};
constexpr Kind refused{"refused", "plug-in > host", Colour::red};
constexpr Kind removed{"removed", "plug-in > host", Colour::yellow};
constexpr Kind plugged{"plugged", "headset", Colour::green};
constexpr Kind unplugged{"unplugged", "headset", Colour::yellow};
constexpr Kind report{"report", "plug-in > headset", Colour::yellow};
constexpr Kind input{"input", "", Colour::magenta};
constexpr Kind indicator{"indicator", "", Colour::dim};
constexpr Kind key{"key", "headset > plug-in", Colour::magenta};
constexpr Kind log_line{"log", "log", Colour::dim};
constexpr Kind met{"ok", "checked", Colour::green};
constexpr Kind failed{"FAILED", "FAILED", Colour::red};
constexpr Kind listed_call{"call", "call", Colour::none};
constexpr Kind listed_headset{"headset", "headset", Colour::none};
constexpr Kind listed_device{"device", "device", Colour::none};
constexpr Kind model{"model", "model", Colour::none};

struct Line {
    const Kind& kind;
    std::string text;
};

struct ArgumentText {
    std::string operator()(const std::string& text) const { return quoted(text); }
    std::string operator()(int number) const { return std::to_string(number); }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(const Words& list) const {
        std::string elements;
        for (const auto& element : list)
            elements += (elements.empty() ? "" : ", ") + quoted(element);
        return "{" + elements + "}";
    }
};

std::string call_text(const HostCall& event) {
    std::string arguments;
    for (const auto& argument : event.arguments)
        arguments += (arguments.empty() ? "" : ", ") + std::visit(ArgumentText{}, argument);
    return event.function + "(" + arguments + ")";
}

std::string notice_text(const char* function, const DeviceNotice& notice) {
    const auto id = [](int number) { return "0x" + to_hex16(static_cast<unsigned>(number)); };
    return std::string(function) + "(" + quoted(notice.host_device_id) + ", " + id(notice.vendor_id) + ", " +
           id(notice.product_id) + ", " + quoted(notice.vendor_name) + ", " + quoted(notice.device_name) +
           ", " + quoted(notice.serial) + ")";
}

std::string headset_text(const Headset& headset, bool has_permission) {
    std::string text = headset.name;
    if (headset.number != 0)
        text += " (" + std::to_string(headset.number) + ")";
    text += ": " + headset.product + ", serial " + quoted(headset.serial);
    text += headset.plugged ? "" : ", not plugged";
    if (!has_permission)
        text += ", no permission";
    else if (headset.ready)
        text += ", ready";
    return headset.number == 0 ? text : text + ", " + lit_names(headset.indicators);
}

/// The line that says an event. Events of another form have none here.
struct Describer {
    const HeadsetList& headsets;

    std::optional<Line> operator()(const HostCall& event) const { return Line{host_call, call_text(event)}; }
    std::optional<Line> operator()(const HostResult& event) const {
        return Line{host_result, event.function + " returns " + ArgumentText{}(event.result)};
    }
    std::optional<Line> operator()(const CallChanged& event) const {
        return Line{call, to_string(event.call)};
    }
    std::optional<Line> operator()(const ListenerAttached& /*event*/) const {
        return Line{attached, "onListenerAttached"};
    }
    std::optional<Line> operator()(const ActionRequested& event) const {
        HostCall request{std::string(listener_operation(event.action)), {event.device_id, event.cid}};
        if (event.muted)
            request.arguments.emplace_back(*event.muted);
        return Line{action, call_text(request)};
    }
    std::optional<Line> operator()(const ConfigKeyPressed& event) const {
        return Line{action, call_text({"onConfigKey", {event.pressed}})};
    }
    std::optional<Line> operator()(const HeadsetReady& event) const {
        const std::string text = notice_text("onActiveDeviceNotify", event.notice);
        return headsets.has_permission(event.notice.serial) ? Line{ready, text}
                                                            : Line{refused, text + ", no permission"};
    }
    std::optional<Line> operator()(const HeadsetRemoved& event) const {
        return Line{removed, notice_text("onDeviceRemovedNotify", event.notice)};
    }
    std::optional<Line> operator()(const Plugged& event) const {
        return Line{plugged, headsets.name_of(event.headset) + " plugged: " + event.product + ", serial " +
                                 quoted(event.serial)};
    }
    std::optional<Line> operator()(const Unplugged& event) const {
        return Line{unplugged, headsets.name_of(event.headset) + " unplugged"};
    }
    std::optional<Line> operator()(const ReportReceived& event) const {
        return Line{report, headsets.name_of(event.headset) + "  " + to_hex(event.report) + "  " +
                                lit_names(event.indicators)};
    }
    std::optional<Line> operator()(const ReportSent& event) const {
        return Line{input, headsets.name_of(event.headset) + "  " + to_hex(event.report)};
    }
    std::optional<Line> operator()(const IndicatorChanged& event) const {
        return Line{indicator, headsets.name_of(event.headset) + "  " +
                                   usage_name(indicator_names(), event.indicator.usage) +
                                   (event.indicator.lit ? " on" : " off")};
    }
    std::optional<Line> operator()(const KeyWorked& event) const {
        return Line{key, headsets.name_of(event.headset) + "  " + event.key + " " + event.movement};
    }
    std::optional<Line> operator()(const LogLine& event) const { return Line{log_line, event.text}; }
    std::optional<Line> operator()(const ExpectationChecked& event) const {
        if (event.met)
            return Line{met, event.wanted};
        return Line{failed, (event.place.empty() ? "" : event.place + ": ") + "wanted " + event.wanted +
                                "; found " + event.found};
    }
    std::optional<Line> operator()(const CallListed& event) const {
        return Line{listed_call, to_string(event.call)};
    }
    std::optional<Line> operator()(const HeadsetListed& event) const {
        return Line{listed_headset,
                    headset_text(event.headset, headsets.has_permission(event.headset.serial))};
    }
    std::optional<Line> operator()(const DeviceListed& event) const {
        return Line{listed_device, event.headset + ": " + quoted(event.id) + ", " + quoted(event.name) +
                                       ", serial " + quoted(event.serial)};
    }
    std::optional<Line> operator()(const ModelListed& event) const {
        return Line{model, event.name + ": " + event.product};
    }
    std::optional<Line> operator()(const CommandGiven& /*event*/) const { return std::nullopt; }
    std::optional<Line> operator()(const Said& /*event*/) const { return std::nullopt; }
    std::optional<Line> operator()(const CommandFailed& /*event*/) const { return std::nullopt; }
    std::optional<Line> operator()(const Text& /*event*/) const { return std::nullopt; }
};

/// The text with spaces up to a width, at least two.
std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(std::max(width, text.size() + 2) - text.size(), ' ');
}

/// Texts come from devices, from the plug-in's log and from files: they are made printable here, where lines
/// are put together.
class LinePrinter : public Printer {
  public:
    LinePrinter(Display& display, Style style) : display_(display), style_(style) {}

    void print(const Event& event, const HeadsetList& headsets) override {
        if (const auto* error = std::get_if<CommandFailed>(&event))
            print_error(*error);
        else if (const auto* text = std::get_if<Text>(&event))
            display_.line(printable(text->text));
        else if (const auto* said = std::get_if<Said>(&event))
            print_said(*said);
        else if (const auto* command = std::get_if<CommandGiven>(&event))
            print_command(*command);
        else if (const auto line = std::visit(Describer{headsets}, event))
            print_line(*line);
    }

  protected:
    virtual void print_said(const Said& said) = 0;
    virtual void print_command(const CommandGiven& command) = 0;
    virtual void print_line(const Line& line) = 0;

    Display& display_;
    Style style_;

  private:
    void print_error(const CommandFailed& error) {
        const std::string place = error.place.empty() ? "" : error.place + ": ";
        display_.error(style_.paint(Colour::red, printable(place + error.text)));
    }
};

class PlainPrinter final : public LinePrinter {
  public:
    using LinePrinter::LinePrinter;

  private:
    static constexpr std::size_t label_width = 11;

    void print_said(const Said& said) override {
        display_.line(style_.paint(Colour::bold, printable(said.text)));
    }
    // The user has just typed it, or it stands in the script.
    void print_command(const CommandGiven& /*command*/) override {}
    void print_line(const Line& line) override {
        display_.line(style_.paint(line.kind.colour, padded(line.kind.label, label_width)) +
                      printable(line.text));
    }
};

class StoryPrinter final : public LinePrinter {
  public:
    using LinePrinter::LinePrinter;

  private:
    static constexpr std::size_t label_width = 19;

    void print_said(const Said& said) override {
        display_.line("");
        display_.line(style_.paint(Colour::bold, printable(said.text)));
    }
    void print_command(const CommandGiven& command) override {
        // These two show themselves, by what they say and by what they found.
        if (command.name != "say" && command.name != "expect")
            display_.line("  $ " + printable(command.line));
    }
    void print_line(const Line& line) override {
        if (!line.kind.in_story.empty())
            display_.line("      " + style_.paint(line.kind.colour, padded(line.kind.in_story, label_width)) +
                          printable(line.text));
    }
};

}  // namespace

std::unique_ptr<Printer> make_plain_printer(Display& display, Style style) {
    return std::make_unique<PlainPrinter>(display, style);
}

std::unique_ptr<Printer> make_story_printer(Display& display, Style style) {
    return std::make_unique<StoryPrinter>(display, style);
}

}  // namespace softphone
