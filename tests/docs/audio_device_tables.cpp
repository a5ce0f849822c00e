// Prints the tables of docs/audio-devices.md: which headset the plug-in finds for the texts by which sound
// systems know an audio device. Each text is tried as each of the three arguments of setAudioDevice, on
// virtual headsets.
//
// Usage: audio_device_tables TEXTS
#include <chrono>
#include <exception>
#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"
#include "tests/docs/markdown_table.h"
#include "tests/support/recording_host.h"

namespace docs {
namespace {

using Json = nlohmann::json;

/// What a client says of an audio device.
struct Request {
    std::string device_id;
    std::string device_name;
    std::string serial;
};

/// The plug-in with virtual headsets, which are told apart by their serial numbers.
class Headsets {
  public:
    explicit Headsets(const Json& headsets);
    ~Headsets();
    Headsets(const Headsets&) = delete;
    Headsets& operator=(const Headsets&) = delete;

    /// The serial number of the headset that the plug-in chooses; empty for none.
    std::string chosen_by(const Request& request);

  private:
    std::string wait_for_notice();

    std::shared_ptr<test_support::RecordingListener> listener_ =
        std::make_shared<test_support::RecordingListener>();
    std::shared_ptr<plugin_control::IPluginCallControlCallback> control_;
};

Headsets::Headsets(const Json& headsets) {
    std::vector<int> plugged;
    for (const auto& headset : headsets) {
        plugged.push_back(orvex_virtual_plug(headset.at("model").get<std::string>().c_str(),
                                             headset.at("serial").get<std::string>().c_str()));
        if (plugged.back() < 0) {
            throw std::runtime_error(orvex_virtual_error());
        }
    }
    control_ = plugin_control::createPluginControl({});
    control_->setCallControlListener(listener_);
    for (const int headset : plugged) {  // one that is opened is unmuted and put to rest
        constexpr auto limit_ms = static_cast<int>(std::chrono::milliseconds(test_support::patience).count());
        if (orvex_virtual_wait_outputs(headset, 1, limit_ms) != 1) {
            throw std::runtime_error("a headset is not opened");
        }
    }
    // From the first match on, no request is repeated or taken for one that is.
    for (const auto& headset : headsets) {
        const auto serial = headset.at("serial").get<std::string>();
        if (chosen_by({serial, "", ""}).empty()) {
            throw std::runtime_error("no headset is found by the serial number " + serial);
        }
    }
}

Headsets::~Headsets() {
    plugin_control::stopPluginControl();
    orvex_virtual_reset();
}

std::string Headsets::chosen_by(const Request& request) {
    const auto notice = std::make_shared<std::promise<std::string>>();
    listener_->on_call(
        [notice, wanted = "onActiveDeviceNotify(" + request.device_id + ", "](const std::string& call) {
            if (call.starts_with(wanted)) {
                notice->set_value(call);
            }
        });
    if (!control_->setAudioDevice(request.device_id, request.device_name, request.serial)) {
        return {};
    }
    auto told = notice->get_future();
    if (told.wait_for(test_support::patience) != std::future_status::ready) {
        throw std::runtime_error("no headset becomes ready");
    }
    const std::string call = told.get();
    const auto begin = call.rfind(", ") + 2;
    return call.substr(begin, call.rfind(')') - begin);
}

/// Whether the right headset was found.
std::string found_words(const std::string& chosen, const std::string& wanted) {
    if (chosen.empty()) {
        return nothing;
    }
    return chosen == wanted ? "found" : "**another one**: " + code(chosen);
}

/// No serial number occurs in it.
constexpr const char* no_id = "~";

/// A text as each of the arguments, with nothing in the others.
std::vector<Request> requests_with(const std::string& text) {
    return {{text, "", ""}, {no_id, text, ""}, {no_id, "", text}};
}

void print_texts(Headsets& headsets, const Json& table) {
    MarkdownTable printed(table.at("name"),
                          {"What", "Text", "as `device_id`", "as `device_name`", "as `serial`"});
    for (const auto& row : table.at("texts")) {
        const auto text = row.at("text").get<std::string>();
        Cells cells = {row.at("what"), code(text)};
        for (const Request& request : requests_with(text)) {
            cells.push_back(found_words(headsets.chosen_by(request), row.at("serial")));
        }
        printed.add(cells);
    }
    printed.print();
}

/// A text of a headset in a table; empty for no name.
std::string text_of(const Json& tables, const std::string& table, const std::string& what,
                    const std::string& serial) {
    for (const auto& one : tables) {
        for (const auto& row : one.at("texts")) {
            if (one.at("name") == table && row.at("what") == what && row.at("serial") == serial) {
                return row.at("text");
            }
        }
    }
    if (!what.empty()) {
        throw std::runtime_error("table " + table + " has no text " + what);
    }
    return {};
}

/// What clients pass whole, by the names of the texts.
void print_requests(Headsets& headsets, const Json& tables, const Json& requests) {
    MarkdownTable printed(requests.at("name"),
                          {"Sound system", "`device_id`", "`device_name`", "`serial`", "Headset"});
    for (const auto& row : requests.at("rows")) {
        const auto text = [&](const char* argument) {
            return text_of(tables, row.at("table"), row.at(argument), row.at("headset"));
        };
        const Request request = {text("device_id"), text("device_name"), text("serial")};
        const auto name = [&](const char* argument) {
            const auto what = row.at(argument).get<std::string>();
            return what.empty() ? std::string("empty") : what;
        };
        printed.add({row.at("system"), name("device_id"), name("device_name"), name("serial"),
                     found_words(headsets.chosen_by(request), row.at("headset"))});
    }
    printed.print();
}

void print_headsets(const Json& headsets) {
    MarkdownTable printed("headsets", {"Headset", "Serial number"});
    for (const auto& headset : headsets) {
        printed.add({code(orvex_virtual_model_product(headset.at("model").get<std::string>().c_str())),
                     code(headset.at("serial"))});
    }
    printed.print();
}

void print_tables(const Json& texts) {
    print_headsets(texts.at("headsets"));
    for (const auto& group : texts.at("groups")) {
        Json plugged = texts.at("headsets");
        for (const auto& more : group.value("more_headsets", Json::array())) {
            plugged.push_back(more);
        }
        Headsets headsets(plugged);
        if (group.contains("requests")) {
            print_requests(headsets, group.at("tables"), group.at("requests"));
        }
        for (const auto& table : group.at("tables")) {
            print_texts(headsets, table);
        }
    }
}

}  // namespace
}  // namespace docs

int main(int count, char** arguments) try {
    if (count != 2) {
        std::cerr << "Usage: audio_device_tables TEXTS\n";
        return 2;
    }
    std::ifstream file(arguments[1]);
    docs::print_tables(nlohmann::json::parse(file));
    return 0;
} catch (const std::exception& error) {
    std::cerr << "audio_device_tables: " << error.what() << '\n';
    return 1;
}
