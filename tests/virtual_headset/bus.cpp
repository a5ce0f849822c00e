#include "tests/virtual_headset/bus.h"

#include <algorithm>

#include "platform/text.h"
#include "virtual_headset/models/model.h"

namespace bus_test {

HeadsetDescription describe(std::string_view model) {
    const auto* const found = platform::virtual_headsets::find_model(model);
    return {.descriptor = found->descriptor,
            .vendor_id = found->vendor_id,
            .product_id = found->product_id,
            .manufacturer = found->manufacturer,
            .product = found->product,
            .serial = found->serial};
}

int BusTest::plug(std::string_view model) {
    return plug(describe(model));
}

int BusTest::plug(const HeadsetDescription& description) {
    Failure failure;
    const auto headset = bus_.plug(description, failure);
    EXPECT_TRUE(headset) << failure;
    return headset.value_or(no_headset);
}

std::string BusTest::path(USAGE page) const {
    const auto interfaces = bus_.enumerate(0, 0);
    const auto found = std::ranges::find(interfaces, page, &HidInterfaceInfo::usage_page);
    return found == interfaces.end() ? "" : found->path;
}

std::unique_ptr<HidInterface> BusTest::open(USAGE page) {
    auto opened = bus_.open(path(page));
    EXPECT_NE(opened.interface, nullptr) << platform::to_utf8(opened.error);
    return std::move(opened.interface);
}

std::vector<bool> BusTest::take_changes() {
    std::lock_guard lock(changes_mutex_);
    return std::exchange(changes_, {});
}

Read read(HidInterface& interface, std::chrono::milliseconds timeout, std::size_t room) {
    Read read{{}, Bytes(room, 0xEE)};
    read.result = interface.read(read.report, timeout);
    read.report.resize(read.result.size);
    return read;
}

std::vector<Bytes> read_all(HidInterface& interface) {
    std::vector<Bytes> reports;
    while (true) {
        Read next = read(interface);
        if (next.result.status != IoResult::Status::done) {
            return reports;
        }
        reports.push_back(std::move(next.report));
    }
}

IoResult write(HidInterface& interface, const Bytes& report) {
    return interface.write(report, std::chrono::seconds(1));
}

testing::AssertionResult failed_with(const IoResult& result, const std::wstring& error) {
    if (result.status == IoResult::Status::failed && result.error == error) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "status " << static_cast<int>(result.status) << ", error \""
                                       << platform::to_utf8(result.error) << "\"";
}

}  // namespace bus_test
