// How fast a report descriptor is parsed, and reports of it are built and read. "copy" is the yardstick:
// figures of different machines, or of one machine on different days, compare as ratios to it alone.
//
//   build/release/bench/bench_parser [--benchmark_filter=...]
#include <benchmark/benchmark.h>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/hidp/hidp.h"
#include "tests/platform/hidp/costly_descriptors.h"
#include "virtual_headset/models/model.h"

using namespace platform;
using virtual_headsets::HeadsetModel;

namespace {

using Bytes = std::vector<UCHAR>;

constexpr USAGE telephony_page = 0x0B;  // HID Usage Tables, section 3
constexpr USAGE led_page = 0x08;
constexpr USAGE led_mute = 0x09;    // HID Usage Tables, section 11
constexpr USAGE phone_mute = 0x2F;  // HID Usage Tables, section 14

/// The telephony collection of a model, with an empty report of each direction.
struct Headset {
    explicit Headset(const HeadsetModel& model) : parsed(hidp::parse(model.descriptor)) {
        for (const auto& collection : parsed.collections) {
            hidp::parser().HidP_GetCaps(collection.get(), &caps);
            if (caps.UsagePage == telephony_page) {
                data = collection.get();
                break;
            }
        }
        if (data == nullptr || caps.OutputReportByteLength == 0) {
            throw std::invalid_argument("the model has no telephony collection with indicators");
        }
        output.resize(caps.OutputReportByteLength);
        input.resize(caps.InputReportByteLength);
    }

    hidp::ParsedDescriptor parsed;
    PHIDP_PREPARSED_DATA data = nullptr;
    HIDP_CAPS caps{};
    Bytes input;
    Bytes output;
};

void copy(benchmark::State& state, const HeadsetModel& model) {
    Bytes to(model.descriptor.size());
    for (auto _ : state) {
        std::memcpy(to.data(), model.descriptor.data(), to.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(to.size()));
}

void parse_descriptor(benchmark::State& state, const Bytes& descriptor) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(hidp::parse(descriptor));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(descriptor.size()));
}

void parse(benchmark::State& state, const HeadsetModel& model) {
    parse_descriptor(state, model.descriptor);
}

void get_caps(benchmark::State& state, const HeadsetModel& model) {
    const Headset headset(model);
    HIDP_CAPS caps;
    for (auto _ : state) {
        benchmark::DoNotOptimize(hidp::parser().HidP_GetCaps(headset.data, &caps));
        benchmark::ClobberMemory();
    }
}

void get_button_caps(benchmark::State& state, const HeadsetModel& model) {
    const Headset headset(model);
    std::vector<HIDP_BUTTON_CAPS> caps(headset.caps.NumberInputButtonCaps);
    for (auto _ : state) {
        auto count = static_cast<USHORT>(caps.size());
        benchmark::DoNotOptimize(
            hidp::parser().HidP_GetButtonCaps(HidP_Input, caps.data(), &count, headset.data));
        benchmark::ClobberMemory();
    }
}

void set_usages(benchmark::State& state, const HeadsetModel& model) {
    Headset headset(model);
    for (auto _ : state) {
        USAGE usage = led_mute;
        ULONG count = 1;
        headset.output[0] = 0;
        const NTSTATUS status =
            hidp::parser().HidP_SetUsages(HidP_Output, led_page, 0, &usage, &count, headset.data,
                                          headset.output.data(), static_cast<ULONG>(headset.output.size()));
        if (status != HIDP_STATUS_SUCCESS) {
            state.SkipWithError("the headset has no mute indicator");
            break;
        }
        benchmark::ClobberMemory();
    }
}

void get_usages(benchmark::State& state, const HeadsetModel& model) {
    Headset headset(model);
    const auto length = static_cast<ULONG>(headset.input.size());
    USAGE mute = phone_mute;
    ULONG count = 1;
    hidp::parser().HidP_SetUsages(HidP_Input, telephony_page, 0, &mute, &count, headset.data,
                                  headset.input.data(), length);
    std::vector<USAGE> usages(
        hidp::parser().HidP_MaxUsageListLength(HidP_Input, telephony_page, headset.data));
    for (auto _ : state) {
        count = static_cast<ULONG>(usages.size());
        hidp::parser().HidP_GetUsages(HidP_Input, telephony_page, 0, usages.data(), &count, headset.data,
                                      headset.input.data(), length);
        if (count != 1) {
            state.SkipWithError("the headset has no mute key");
            break;
        }
        benchmark::ClobberMemory();
    }
}

struct Size {
    const char* name;
    const char* model;
};
constexpr Size sizes[] = {
    {"small", "anker-powerconf"}, {"typical", "jabra-link-380c"}, {"large", "poly-voyager-base"}};

struct Work {
    const char* name;
    void (*run)(benchmark::State&, const HeadsetModel&);
};
constexpr Work works[] = {{"copy", copy},
                          {"parse", parse},
                          {"HidP_GetCaps", get_caps},
                          {"HidP_GetButtonCaps", get_button_caps},
                          {"HidP_SetUsages", set_usages},
                          {"HidP_GetUsages", get_usages}};

}  // namespace

int main(int argc, char** argv) {
    const auto costly_descriptors = hidp_test::costly_descriptors();
    for (const Work& work : works) {
        for (const Size& size : sizes) {
            const HeadsetModel& model = *virtual_headsets::find_model(size.model);
            const std::string name = std::string(work.name) + "/" + size.name;
            benchmark::RegisterBenchmark(name.c_str(),
                                         [&](benchmark::State& state) { work.run(state, model); });
        }
    }
    for (const hidp_test::Costly& costly : costly_descriptors) {
        const std::string name = std::string("parse_costly/") + costly.name;
        benchmark::RegisterBenchmark(
            name.c_str(), [&](benchmark::State& state) { parse_descriptor(state, costly.descriptor); });
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
}
