#include "platform/thread.h"

#include <array>
#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <pthread.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using platform::start_detached_thread;
using platform::start_thread;

std::string name_of_this_thread() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

/// The name that a thread has once it was started with this one.
std::string name_given(const char* name) {
    std::string seen;
    std::latch started{1};
    std::thread thread = start_thread(name, [&] {
        started.wait();
        seen = name_of_this_thread();
    });
    started.count_down();
    thread.join();
    return seen;
}

TEST(StartThread, names_the_thread) {
    EXPECT_EQ(name_given("orvex-test"), "orvex-test");
    EXPECT_EQ(name_given("fifteen letters"), "fifteen letters");
}

TEST(StartThread, cuts_a_name_to_what_the_system_holds) {
    EXPECT_EQ(name_given("sixteen letters!"), "sixteen letters");
}

TEST(StartThread, leaves_the_callers_name_alone) {
    const std::string before = name_of_this_thread();
    start_thread("orvex-test", [] {}).join();
    EXPECT_EQ(name_of_this_thread(), before);
}

sigset_t signal_mask() {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return mask;
}

/// The signals that can be blocked at all.
std::vector<int> signals() {
    std::vector<int> numbers;
    for (int number = 1; number < SIGSYS + 1; ++number) {
        if (number != SIGKILL && number != SIGSTOP) {
            numbers.push_back(number);
        }
    }
    for (int number = SIGRTMIN; number <= SIGRTMAX; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

TEST(StartThread, blocks_every_signal_in_the_thread) {
    sigset_t mask{};
    start_thread("orvex-test", [&] { mask = signal_mask(); }).join();
    for (const int number : signals()) {
        EXPECT_EQ(sigismember(&mask, number), 1) << "signal " << number;
    }
}

TEST(StartThread, leaves_the_callers_signals_as_they_were) {
    sigset_t usr1;
    sigemptyset(&usr1);
    sigaddset(&usr1, SIGUSR1);
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &usr1, &former);
    const sigset_t before = signal_mask();
    start_thread("orvex-test", [] {}).join();
    const sigset_t after = signal_mask();
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    for (const int number : signals()) {
        EXPECT_EQ(sigismember(&after, number), sigismember(&before, number)) << "signal " << number;
    }
    EXPECT_EQ(sigismember(&after, SIGUSR1), 1);
}

bool is_this_thread_detached() {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    int state = 0;
    pthread_attr_getdetachstate(&attributes, &state);
    pthread_attr_destroy(&attributes);
    return state == PTHREAD_CREATE_DETACHED;
}

TEST(StartDetachedThread, is_detached_and_has_its_name_when_its_body_begins) {
    constexpr int repeats = 200;  // an attempt alone may be in time by luck
    for (int i = 0; i < repeats; ++i) {
        const auto seen = std::make_shared<std::promise<std::pair<bool, std::string>>>();
        start_detached_thread("orvex-test", [seen] {
            seen->set_value({is_this_thread_detached(), name_of_this_thread()});
        });
        EXPECT_EQ(seen->get_future().get(), std::pair(true, std::string("orvex-test")));
    }
}

TEST(StartDetachedThread, blocks_every_signal_in_the_thread) {
    const auto seen = std::make_shared<std::promise<sigset_t>>();
    start_detached_thread("orvex-test", [seen] { seen->set_value(signal_mask()); });
    const sigset_t mask = seen->get_future().get();
    for (const int number : signals()) {
        EXPECT_EQ(sigismember(&mask, number), 1) << "signal " << number;
    }
}

}  // namespace
