// SPDX-License-Identifier: MIT
#include "engine/chain/worker_pool.h"

#include <algorithm>
#include <new>
#include <system_error>

namespace vireo {

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wanted_.notify_all();
    for (std::thread& worker : workers_) worker.join();
}

void WorkerPool::start(int wanted) {
    // Where the system gives no more threads, those that there are do the work.
    try {
        while (static_cast<int>(workers_.size()) < wanted) workers_.emplace_back([this] { serve(); });
    } catch (const std::system_error&) {
    } catch (const std::bad_alloc&) {
    }
}

void WorkerPool::runNext(Task& task, std::unique_lock<std::mutex>& lock) {
    const int index = task.next++;
    if (task.next == task.count) leaveQueue(task);
    ++task.running;
    lock.unlock();
    std::exception_ptr failure;
    try {
        (*task.work)(index);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    if (failure != nullptr && task.failure == nullptr) {
        task.failure = failure;
        if (task.next < task.count) leaveQueue(task);
        task.next = task.count;
    }
    if (--task.running == 0 && task.next == task.count) done_.notify_all();
}

void WorkerPool::leaveQueue(Task& task) {
    Task** place = &queue_;
    while (*place != &task) place = &(*place)->behind;
    *place = task.behind;
}

void WorkerPool::serve() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wanted_.wait(lock, [this] { return ending_ || queue_ != nullptr; });
        if (ending_) return;
        runNext(*queue_, lock);
    }
}

void WorkerPool::run(int parts, const std::function<void(int)>& work) {
    if (parts <= 0) return;
    if (parts == 1 || threads_ <= 1) {
        for (int i = 0; i < parts; ++i) work(i);
        return;
    }
    Task task{&work, parts};
    std::unique_lock lock(mutex_);
    start(std::min(threads_, parts) - 1);
    Task** end = &queue_;
    while (*end != nullptr) end = &(*end)->behind;
    *end = &task;
    wanted_.notify_all();
    while (task.next < task.count) runNext(task, lock);
    done_.wait(lock, [&] { return task.running == 0; });
    if (task.failure != nullptr) std::rethrow_exception(task.failure);
}

}  // namespace vireo
