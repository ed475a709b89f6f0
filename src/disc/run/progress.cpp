#include "disc/run/progress.h"

#include <algorithm>
#include <utility>

namespace tkv::disc {

void Progress::say(std::string_view line) {
    const std::lock_guard lock(mutex_);
    receiver_.say(line);
}

void Progress::tellResult(std::string_view line) {
    const std::lock_guard lock(mutex_);
    receiver_.tellResult(line);
}

void Progress::expect(double weight) {
    const std::lock_guard lock(mutex_);
    expected_ += weight;
}

void Progress::show(const std::string& task, bool isNew) {
    ProgressState state;
    state.part = expected_ > 0 ? std::clamp(done_ / expected_, 0.0, 1.0) : 0;
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    // Before that the estimate jumps.
    if (state.part > 0.02 && elapsed > 3) state.secondsLeft = elapsed / state.part - elapsed;
    state.task = task;
    state.isNewTask = isNew;
    receiver_.show(state);
}

Progress::Task::Task(Progress& progress, std::string what, double weight)
    : progress_(progress), what_(std::move(what)), weight_(weight) {
    const std::lock_guard lock(progress_.mutex_);
    progress_.show(what_, true);
}

Progress::Task::~Task() {
    reach(1);
}

void Progress::Task::reach(double fraction) {
    const double done = std::clamp(fraction, done_, 1.0);
    const std::lock_guard lock(progress_.mutex_);
    progress_.done_ += (done - done_) * weight_;
    done_ = done;
    progress_.show(what_, false);
}

}  // namespace tkv::disc
