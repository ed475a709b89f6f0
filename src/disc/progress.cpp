#include "disc/progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "system/unicode.h"

namespace tkv::disc {

namespace {

using namespace std::chrono_literals;

constexpr auto kTerminalInterval = 200ms;
constexpr auto kPlainInterval = 30s;

void write(std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

int terminalWidth() {
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

std::string duration(double seconds) {
    if (seconds < 60) return fmt::format("{:.0f} s", std::ceil(seconds));
    if (seconds < 5400) return fmt::format("{:.0f} min", std::ceil(seconds / 60));
    return fmt::format("{:.1f} h", seconds / 3600);
}

}  // namespace

Progress::Progress(Style style) : style_(style) {}

Progress::~Progress() {
    clear();
}

Progress::Style Progress::suitableStyle() {
    return isatty(STDERR_FILENO) == 1 ? Style::terminal : Style::plain;
}

void Progress::say(std::string_view line) {
    if (style_ == Style::quiet) return;
    const std::lock_guard lock(mutex_);
    write(fmt::format("{}{}\n", style_ == Style::terminal ? "\r\033[K" : "", printable(line)));
}

void Progress::clear() {
    const std::lock_guard lock(mutex_);
    if (style_ == Style::terminal) write("\r\033[K");
}

void Progress::expect(double weight) {
    const std::lock_guard lock(mutex_);
    expected_ += weight;
}

std::string Progress::howFar() const {
    const double part = expected_ > 0 ? std::clamp(done_ / expected_, 0.0, 1.0) : 0;
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    std::string text = fmt::format("{:3.0f} %", std::floor(part * 100));
    // Before that the estimate jumps.
    if (part > 0.02 && elapsed > 3)
        text += fmt::format(", about {} left", duration(elapsed / part * (1 - part)));
    return text;
}

void Progress::show(const std::string& what, bool isNew) {
    const auto now = Clock::now();
    const auto since = now - shown_;
    if (style_ == Style::terminal && (isNew || since >= kTerminalInterval)) {
        const std::string line = printable(fmt::format("{}  {}", howFar(), what));
        write(fmt::format("\r\033[K{}", firstColumns(line, terminalWidth() - 1)));
        shown_ = now;
    } else if (style_ == Style::plain && (isNew || since >= kPlainInterval)) {
        write(fmt::format("{}  {}\n", howFar(), printable(what)));
        shown_ = now;
    }
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
