// A background thread that runs tasks one after another.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/mutex.h"

namespace headset_plugin {

struct WorkerTask {
    std::string name;  ///< the function that posted it; for whoever looks at the queue in a debugger
    std::function<void()> fn;
};

/// Runs posted tasks in posting order on a thread of its own. A task that throws ends the process: better
/// that than a device list that is half updated.
class Worker {
  public:
    Worker();

    /// Lets the running task finish, discards the others and joins the thread; on the worker's own thread,
    /// which cannot wait for itself, the thread ends by itself after the task that destroys the Worker.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Queues a task. Thread: any, a running task included.
    void post(WorkerTask task);

  private:
    struct Queue {
        std::atomic<bool> stop_{false};
        platform::Mutex mutex_;
        platform::Condition work_;
        std::deque<WorkerTask> tasks_ GUARDED_BY(mutex_);
    };

    static void worker_thread(Queue& queue);
    static bool take(Queue& queue, WorkerTask& task);

    std::shared_ptr<Queue> queue_;  // shared with the thread, which may outlive this object
    std::thread thread_;
};

}  // namespace headset_plugin
