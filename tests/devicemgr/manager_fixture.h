// What the tests of the device manager share: headsets on the virtual bus, the log, and the manager, either
// one of the test's own, whose passes run on the test's thread, or the process's own with its message thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "devicemgr/device_mgr.h"
#include "devicemgr/device_mgr_api.h"
#include "devicemgr/message_thread.h"
#include "tests/support/glue_calls.h"
#include "tests/support/layer_log.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace manager_test {

using headset_plugin::device;
using platform::virtual_platform::Fault;
using platform::virtual_platform::HeadsetDescription;
using plugin_control::device_mgr;
using Lines = std::vector<std::string>;

inline constexpr std::uint16_t jabra = 0x0B0E;
inline constexpr std::uint16_t logitech = 0x046D;
inline constexpr std::uint16_t orvex = ORVEX_CONFIGURED_VENDOR_ID;
inline constexpr std::uint16_t product = 0x24C9;

inline constexpr std::uint16_t generic_desktop = 0x01;
inline constexpr std::uint16_t telephony = 0x0B;
inline constexpr std::uint16_t consumer = 0x0C;
inline constexpr platform::virtual_platform::FullUsage mute_indicator{0x08, 0x09};

/// A headset with one top-level collection for each usage page, in this order.
HeadsetDescription headset(const std::string& serial, const std::string& name = "Test Headset",
                           const std::vector<std::uint16_t>& pages = {telephony, consumer},
                           std::uint16_t vendor_id = jabra);

/// "3rdPartyHeadsetPlugin: plugin_control::device_mgr::<function>: <text>\n"
std::string manager_line(const std::string& function, const std::string& text);
/// "3rdPartyHeadsetPlugin: <function>: <text>\n"
std::string api_line(const std::string& function, const std::string& text);
/// "HeadsetPlugin: <function>: <text>\n"
std::string window_line(const std::string& function, const std::string& text);
Lines manager_lines(const std::string& function, const Lines& texts);
Lines operator+(Lines first, const Lines& second);

// The lines of a pass about one interface of such a headset.
std::string plugged_in_line(std::uint16_t page);
std::string supported_line(const std::string& name);
std::string found_line(const std::string& serial, const std::string& name);
std::string already_open_line();
std::string count_line(int count);
Lines creation_lines(const std::string& serial, const std::string& name, int count);
Lines pass_start_lines();
/// The last line of a removal, with the number of headsets that are left.
std::string left_line(int count);
/// The line of a device that is given the state of the calls.
std::string state_line(int state);
/// The line of the message thread before its first pass.
std::string loaded_line();

/// What the host is told of the headset "SN-1".
inline const std::string ready_call = "on_headset_ready(host-SN-1, 2830, 9417, Jabra, Test Headset, SN-1)";

/// The last line of a read thread before it sees to the headset.
inline const std::string read_thread_exit =
    "3rdPartyHeadsetPlugin: headset_plugin::device::read_thread: Exit device_thread_ \n";

/// The last line of a read thread whose headset was stopped.
inline const std::string shutting_down =
    "3rdPartyHeadsetPlugin: headset_plugin::device::read_thread: read failed, shuting down \n";

/// Holds a thread up until the test lets it go on.
class Gate {
  public:
    void pass();
    bool wait_for_arrival();
    void open();

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool arrived_ = false;
    bool open_ = false;
};

class HeadsetsTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    static platform::virtual_platform::VirtualPlatform& platform() {
        return platform::virtual_platform::virtual_platform();
    }
    static platform::virtual_platform::VirtualBus& bus() { return platform().bus(); }
    static int plug(const HeadsetDescription& description);
    /// Holds the thread up that logs this line next.
    void hold_up_at(const std::string& line, Gate& gate);
    /// Waits for it, and lets others pass from then on.
    bool held_up(Gate& gate);
    /// The lines of the manager itself.
    Lines log() const { return logger_->lines_with("plugin_control::device_mgr::"); }

    std::shared_ptr<test_support::RecordingLogger> logger_;

  private:
    std::mutex drivers_mutex_;
    std::vector<std::weak_ptr<headset_plugin::call_control_generic>> drivers_;
};

/// A manager without a message thread.
class ManagerTest : public HeadsetsTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    void pass() { manager_->enumerate_hid_device(); }
    /// Lists a headset that nobody opened.
    std::shared_ptr<device> list(const std::string& serial, const std::string& name,
                                 std::uint16_t vendor_id = jabra);
    bool select(const std::string& id, const std::string& name = "", const std::string& serial = "") {
        return manager_->setAudioDevice(id.c_str(), name.c_str(), serial.c_str());
    }
    std::string active_serial() const;

    std::shared_ptr<device_mgr> manager_;
};

/// The process's manager.
class RunningManagerTest : public HeadsetsTest {
  protected:
    void TearDown() override;

    /// Starts the manager and waits for the end of the first pass.
    void start();
    /// Clears the log; nothing may be under way.
    void clear_log();
    /// Waits until every message thread has ended.
    bool wait_for_message_threads() const;
    /// Waits until the message thread is through with the message that it handles.
    static void settle();
    /// Plugs a headset and waits for the passes that this causes.
    int plug_and_wait(const HeadsetDescription& description);
    void wait_for_arrivals(std::size_t count);
    void unplug_and_wait(int headset, std::size_t interfaces = 2);

  private:
    std::size_t threads_started() const;
    std::size_t threads_ended() const;
    std::size_t started_before_ = 0, ended_before_ = 0;
};

}  // namespace manager_test
