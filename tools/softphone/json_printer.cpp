#include "tools/common/json.h"
#include "tools/softphone/printers.h"

namespace softphone {
namespace {

using tools::Json;

Json lit_list(const std::vector<Indicator>& indicators) {
    Json lit = Json::array();
    for (const auto& indicator : indicators)
        if (indicator.lit)
            lit.push_back(usage_name(indicator_names(), indicator.usage));
    return lit;
}

Json call(const Call& call) {
    return {{"event", "call"},
            {"cid", call.cid},
            {"state", to_string(call.phase)},
            {"muted", call.muted},
            {"direction", call.direction}};
}

struct ToJson {
    const HeadsetList& headsets;

    Json notice(const char* event, const DeviceNotice& notice) const {
        const Headset* known = headsets.find_serial(notice.serial);
        return {{"event", event},
                {"headset", known ? known->name : ""},
                {"device_id", notice.host_device_id},
                {"vendor_id", notice.vendor_id},
                {"product_id", notice.product_id},
                {"vendor", notice.vendor_name},
                {"product", notice.device_name},
                {"serial", notice.serial}};
    }

    Json operator()(const HostCall& event) const {
        Json arguments = Json::array();
        for (const auto& argument : event.arguments)
            std::visit([&](const auto& value) { arguments.push_back(value); }, argument);
        return {{"event", "host"}, {"function", event.function}, {"arguments", arguments}};
    }
    Json operator()(const HostResult& event) const {
        return {{"event", "result"}, {"function", event.function}, {"result", event.result}};
    }
    Json operator()(const CallChanged& event) const { return call(event.call); }
    Json operator()(const CallListed& event) const { return call(event.call); }
    Json operator()(const ListenerAttached& /*event*/) const { return {{"event", "attached"}}; }
    Json operator()(const ActionRequested& event) const {
        return {{"event", "action"},
                {"action", to_string(event.action)},
                {"device_id", event.device_id},
                {"cid", event.cid}};
    }
    Json operator()(const ConfigKeyPressed& event) const {
        return {{"event", "config_key"}, {"pressed", event.pressed}};
    }
    Json operator()(const HeadsetReady& event) const {
        Json json = notice("ready", event.notice);
        json["permission"] = headsets.has_permission(event.notice.serial);
        return json;
    }
    Json operator()(const HeadsetRemoved& event) const { return notice("removed", event.notice); }
    Json operator()(const Plugged& event) const {
        return {{"event", "plugged"},
                {"headset", headsets.name_of(event.headset)},
                {"product", event.product},
                {"serial", event.serial}};
    }
    Json operator()(const Unplugged& event) const {
        return {{"event", "unplugged"}, {"headset", headsets.name_of(event.headset)}};
    }
    Json operator()(const ReportReceived& event) const {
        return {{"event", "report"},
                {"headset", headsets.name_of(event.headset)},
                {"bytes", to_hex(event.report)},
                {"lit", lit_list(event.indicators)}};
    }
    Json operator()(const ReportSent& event) const {
        return {{"event", "input"},
                {"headset", headsets.name_of(event.headset)},
                {"bytes", to_hex(event.report)}};
    }
    Json operator()(const IndicatorChanged& event) const {
        return {{"event", "indicator"},
                {"headset", headsets.name_of(event.headset)},
                {"indicator", usage_name(indicator_names(), event.indicator.usage)},
                {"usage_page", event.indicator.usage.page},
                {"usage", event.indicator.usage.id},
                {"on", event.indicator.lit}};
    }
    Json operator()(const KeyWorked& event) const {
        return {{"event", "key"},
                {"headset", headsets.name_of(event.headset)},
                {"key", event.key},
                {"movement", event.movement}};
    }
    Json operator()(const LogLine& event) const { return {{"event", "log"}, {"line", event.text}}; }
    Json operator()(const CommandGiven& event) const { return {{"event", "command"}, {"line", event.line}}; }
    Json operator()(const Said& event) const { return {{"event", "say"}, {"text", event.text}}; }
    Json operator()(const ExpectationChecked& event) const {
        return {{"event", "expect"},
                {"ok", event.met},
                {"wanted", event.wanted},
                {"found", event.found},
                {"place", event.place}};
    }
    Json operator()(const CommandFailed& event) const {
        return {{"event", "error"}, {"text", event.text}, {"place", event.place}};
    }
    Json operator()(const HeadsetListed& event) const {
        const Headset& headset = event.headset;
        const bool has_permission = headsets.has_permission(headset.serial);
        return {{"event", "headset"},
                {"headset", headset.name},
                {"number", headset.number},
                {"product", headset.product},
                {"serial", headset.serial},
                {"plugged", headset.plugged},
                {"permission", has_permission},
                {"ready", headset.ready && has_permission},
                {"lit", lit_list(headset.indicators)}};
    }
    Json operator()(const DeviceListed& event) const {
        return {{"event", "device"},
                {"headset", event.headset},
                {"device_id", event.id},
                {"name", event.name},
                {"serial", event.serial}};
    }
    Json operator()(const ModelListed& event) const {
        return {{"event", "model"}, {"name", event.name}, {"product", event.product}};
    }
    Json operator()(const Text& event) const { return {{"event", "text"}, {"text", event.text}}; }
};

class JsonPrinter final : public Printer {
  public:
    explicit JsonPrinter(Display& display) : display_(display) {}

    void print(const Event& event, const HeadsetList& headsets) override {
        display_.line(tools::to_text(std::visit(ToJson{headsets}, event)));
    }

  private:
    Display& display_;
};

}  // namespace

std::unique_ptr<Printer> make_json_printer(Display& display) {
    return std::make_unique<JsonPrinter>(display);
}

}  // namespace softphone
