#include "base/worker.h"

#include <exception>
#include <utility>

#include "base/plugin_log.h"
#include "platform/thread.h"

namespace headset_plugin {

Worker::Worker() : queue_(std::make_shared<Queue>()) {
    thread_ = platform::start_thread("orvex-worker", [queue = queue_] { worker_thread(*queue); });
}

Worker::~Worker() {
    {
        platform::MutexLock lock(queue_->mutex_);
        queue_->stop_ = true;
    }
    queue_->work_.notify_one();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else if (thread_.joinable()) {
        thread_.join();
    }
    std::deque<WorkerTask> discarded;  // destroyed with the lock released: a task may own anything
    platform::MutexLock lock(queue_->mutex_);
    discarded.swap(queue_->tasks_);
}

void Worker::post(WorkerTask task) {
    {
        platform::MutexLock lock(queue_->mutex_);
        queue_->tasks_.push_back(std::move(task));
    }
    queue_->work_.notify_one();
}

bool Worker::take(Queue& queue, WorkerTask& task) {
    platform::MutexLock lock(queue.mutex_);
    while (queue.tasks_.empty() && !queue.stop_) {
        queue.work_.wait(queue.mutex_);
    }
    if (queue.stop_) {
        return false;
    }
    task = std::move(queue.tasks_.front());
    queue.tasks_.pop_front();
    return true;
}

void Worker::worker_thread(Queue& queue) {
    while (!queue.stop_) {
        WorkerTask task;
        if (!take(queue, task)) {
            break;
        }
        try {
            task.fn();
        } catch (const std::exception& error) {
            plugin_log("HeadsetPlugin: %s: exception caught: %s \n", "headset_plugin::Worker::worker_thread",
                       error.what());
            std::terminate();
        }  // anything else leaves the thread, which ends the process as well
    }
}

}  // namespace headset_plugin
