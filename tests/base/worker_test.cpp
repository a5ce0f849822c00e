#include "base/worker.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <thread>
#include <vector>

#include "base/plugin_log.h"
#include "tests/support/layer_log.h"

namespace {

using headset_plugin::Worker;
using headset_plugin::WorkerTask;
using test_support::install_layer_logger;
using test_support::patience;

/// Something that happens once, on some thread, and that others wait for.
class Signal {
  public:
    void set() { promise_.set_value(); }
    bool wait() const { return future_.wait_for(patience) == std::future_status::ready; }

  private:
    std::promise<void> promise_;
    std::shared_future<void> future_{promise_.get_future()};
};

WorkerTask task(std::function<void()> work) {
    return {"test", std::move(work)};
}

/// Waits until everything that was posted before has run.
void wait_for_all(Worker& worker) {
    Signal done;
    worker.post(task([&] { done.set(); }));
    ASSERT_TRUE(done.wait());
}

TEST(Worker, runs_tasks_in_posting_order_each_after_the_one_before_returned) {
    std::string trace;
    Worker worker;
    for (const char name : {'A', 'B', 'C'}) {
        worker.post(task([&trace, name] {
            trace += {name, '('};
            std::this_thread::yield();
            trace += ')';
        }));
    }
    wait_for_all(worker);
    EXPECT_EQ(trace, "A()B()C()");
}

TEST(Worker, runs_all_tasks_on_one_thread_of_its_own_with_a_name) {
    std::array<char, 16> name{};
    std::thread::id first;
    std::thread::id second;
    Worker worker;  // named when its constructor returns
    worker.post(task([&] {
        first = std::this_thread::get_id();
        pthread_getname_np(pthread_self(), name.data(), name.size());
    }));
    worker.post(task([&] { second = std::this_thread::get_id(); }));
    wait_for_all(worker);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, std::this_thread::get_id());
    EXPECT_STREQ(name.data(), "orvex-worker");
}

TEST(Worker, keeps_the_order_of_every_thread_that_posts) {
    constexpr int posters = 4;
    constexpr int tasks_each = 100;
    std::array<std::vector<int>, posters> ran;
    Worker worker;
    std::vector<std::thread> threads;
    for (auto& mine : ran) {
        threads.emplace_back([&worker, &mine] {
            for (int i = 0; i < tasks_each; ++i) {
                worker.post(task([&mine, i] { mine.push_back(i); }));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    wait_for_all(worker);
    for (const auto& mine : ran) {
        ASSERT_EQ(mine.size(), static_cast<std::size_t>(tasks_each));
        EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
    }
}

TEST(Worker, lets_a_task_post_another_which_runs_after_those_that_wait) {
    std::string trace;
    Signal both_posted;
    Signal done;
    Worker worker;
    worker.post(task([&] {
        both_posted.wait();
        trace += 'A';
        worker.post(task([&] {
            trace += 'C';
            done.set();
        }));
    }));
    worker.post(task([&] { trace += 'B'; }));
    both_posted.set();
    EXPECT_TRUE(done.wait());
    EXPECT_EQ(trace, "ABC");
}

TEST(Worker, destroys_a_task_before_it_runs_the_next) {
    auto owned = std::make_shared<int>();
    const std::weak_ptr<int> seen = owned;
    bool gone = false;
    Worker worker;
    worker.post(task([kept = std::move(owned)] {}));
    worker.post(task([&] { gone = seen.expired(); }));
    wait_for_all(worker);
    EXPECT_TRUE(gone);
}

TEST(Worker, waits_for_the_running_task_when_destroyed) {
    constexpr std::chrono::milliseconds time_to_return_early{100};
    Signal running;
    Signal destroying;
    Signal released;
    std::atomic<bool> finished = false;
    auto worker = std::make_unique<Worker>();
    worker->post(task([&] {
        running.set();
        finished = released.wait();
    }));
    EXPECT_TRUE(running.wait());
    auto finished_when_destroyed = std::async(std::launch::async, [&] {
        destroying.set();
        worker.reset();
        return finished.load();
    });
    EXPECT_TRUE(destroying.wait());
    EXPECT_EQ(finished_when_destroyed.wait_for(time_to_return_early), std::future_status::timeout);
    released.set();
    ASSERT_EQ(finished_when_destroyed.wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(finished_when_destroyed.get());
}

TEST(Worker, discards_waiting_tasks_when_destroyed) {
    // Every task posts the next, so that one always waits: a destructor that ran them all would not come to
    // an end before the tasks give up.
    const auto given_up = std::chrono::steady_clock::now() + patience;
    Signal running;
    std::atomic<bool> exhausted = false;
    auto worker = std::make_unique<Worker>();
    std::function<void()> chain = [&, posting = worker.get()] {
        exhausted = std::chrono::steady_clock::now() >= given_up;
        if (!exhausted) {
            posting->post(task(chain));
        }
    };
    worker->post(task([&] { running.set(); }));
    worker->post(task(chain));
    EXPECT_TRUE(running.wait());
    worker.reset();
    EXPECT_FALSE(exhausted);
}

TEST(Worker, may_be_destroyed_by_a_task_of_its_own_and_discards_the_others) {
    Signal all_posted;
    Signal destroyed;
    bool ran_another = false;
    auto owned = std::make_shared<int>();
    const std::weak_ptr<int> seen = owned;
    auto worker = std::make_unique<Worker>();
    worker->post(task([&] {
        all_posted.wait();
        worker.reset();
        destroyed.set();
    }));
    worker->post(task([&ran_another, kept = std::move(owned)] { ran_another = true; }));
    all_posted.set();
    ASSERT_TRUE(destroyed.wait());
    EXPECT_TRUE(seen.expired());
    EXPECT_FALSE(ran_another);
}

/// Posts to a worker when it goes.
class PostsAtTheEnd {
  public:
    explicit PostsAtTheEnd(Worker* worker) : worker_(worker) {}
    ~PostsAtTheEnd() {
        worker_->post(task([] {}));
    }

  private:
    Worker* const worker_;
};

TEST(Worker, lets_what_a_discarded_task_owned_post_once_more) {
    Signal all_posted;
    Signal destroyed;
    auto worker = std::make_unique<Worker>();
    worker->post(task([&] {
        all_posted.wait();
        worker.reset();
        destroyed.set();
    }));
    worker->post(task([kept = std::make_shared<PostsAtTheEnd>(worker.get())] {}));
    all_posted.set();
    EXPECT_TRUE(destroyed.wait());
}

TEST(Worker, goes_at_once_when_it_has_nothing_to_do) {
    const auto logger = install_layer_logger();
    for (int i = 0; i < 100; ++i) {
        Worker worker;
    }
    EXPECT_EQ(logger->lines(), std::vector<std::string>()) << "and says nothing of it";
}

class WorkerDeathTest : public testing::Test {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void print(const std::string& line) {
    std::fputs(line.c_str(), stderr);
}

/// Runs a task whose failure ends the process.
void run_failing(std::function<void()> work, const std::function<void(const std::string&)>& on_line = print) {
    const auto logger = install_layer_logger();
    logger->on_line(on_line);
    const Signal never;
    Worker worker;
    worker.post(task(std::move(work)));
    never.wait();
}

constexpr const char* caught = "^HeadsetPlugin: headset_plugin::Worker::worker_thread: exception caught: ";

TEST_F(WorkerDeathTest, logs_the_text_of_an_exception_and_ends_the_process) {
    EXPECT_EXIT(run_failing([] { throw std::runtime_error("disk on fire"); }),
                testing::KilledBySignal(SIGABRT), std::string(caught) + "disk on fire \n");
}

TEST_F(WorkerDeathTest, ends_the_process_when_the_logger_throws) {
    const auto fail = [](const std::string&) { throw std::runtime_error("the log is full"); };
    EXPECT_EXIT(run_failing([] { plugin_log("%s\n", "a line"); }, fail), testing::KilledBySignal(SIGABRT),
                "the log is full");
}

TEST_F(WorkerDeathTest, ends_the_process_at_an_empty_task) {
    EXPECT_EXIT(run_failing({}), testing::KilledBySignal(SIGABRT),
                std::string(caught) + "bad_function_call \n");
}

TEST_F(WorkerDeathTest, ends_the_process_without_a_line_at_an_exception_of_another_type) {
    EXPECT_EXIT(run_failing([] { throw 42; }), testing::KilledBySignal(SIGABRT),
                "^terminate called after throwing an instance of 'int'");
}

}  // namespace
