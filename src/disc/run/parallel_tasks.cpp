#include "disc/run/parallel_tasks.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "disc/run/fault.h"

namespace tkv::disc {

ParallelTasks::ParallelTasks(std::size_t count, ProgramStop& stop,
                             std::function<void(std::size_t)> task)
    : task_(std::move(task)), stop_(stop), areDone_(count) {
    const unsigned threads = std::clamp(std::thread::hardware_concurrency() / 2 + 1, 2U, 4U);
    try {
        for (unsigned i = 0; i < threads; ++i)
            threads_.emplace_back([this] { work(); });
    } catch (const std::system_error& error) {
        // One does them all.
        if (!threads_.empty()) return;
        throw DiscError(fmt::format("No thread can be started: {}.", error.code().message()));
    }
}

ParallelTasks::~ParallelTasks() {
    const std::lock_guard lock(mutex_);
    if (std::ranges::count(areDone_, false) == 0) return;
    next_ = areDone_.size();
    stop_.stop();
}

void ParallelTasks::wait(std::size_t task) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return areDone_[task] || error_; });
    if (error_) std::rethrow_exception(error_);
}

void ParallelTasks::rethrow() {
    const std::lock_guard lock(mutex_);
    if (error_) std::rethrow_exception(error_);
}

void sideBySide(std::size_t count, ProgramStop& stop,
                const std::function<void(std::size_t)>& action) {
    ParallelTasks tasks(count, stop, action);
    for (std::size_t i = 0; i < count; ++i)
        tasks.wait(i);
}

void ParallelTasks::work() {
    const std::size_t count = areDone_.size();
    for (std::size_t task = 0; (task = next_++) < count;) {
        std::exception_ptr error;
        try {
            task_(task);
        } catch (...) {
            error = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        areDone_[task] = !error;
        if (error && !error_) {
            error_ = error;
            next_ = count;
            stop_.stop();
        }
        changed_.notify_all();
    }
}

}  // namespace tkv::disc
