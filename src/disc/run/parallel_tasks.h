#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "system/processes.h"

namespace tkv::disc {

/// Does tasks side by side, in their order, while somebody else goes on with what is ready. ffmpeg
/// keeps less than two processors busy with one film.
class ParallelTasks {
  public:
    /// Does tasks 0 to `count` - 1, in several threads. `stop`: of the programs that they run; must
    /// outlive it.
    ParallelTasks(std::size_t count, ProgramStop& stop, std::function<void(std::size_t)> task);

    /// Stops the programs of those that are not done.
    ~ParallelTasks();
    ParallelTasks(ParallelTasks&&) = delete;

    /// Returns when the task is done, and what it has written may be read. Throws what has ended
    /// any of them.
    void wait(std::size_t task);

    /// Throws what has ended a task, if something has.
    void rethrow();

  private:
    void work();

    std::function<void(std::size_t)> task_;
    ProgramStop& stop_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<bool> areDone_;
    std::exception_ptr error_;
    std::vector<std::jthread> threads_;
};

/// Does `count` things side by side, and returns when all are done. Throws what has ended one.
void sideBySide(std::size_t count, ProgramStop& stop,
                const std::function<void(std::size_t)>& action);

}  // namespace tkv::disc
