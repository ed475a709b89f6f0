#include "disc/run/terminal_progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "disc/run/environment.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

using namespace std::chrono_literals;

constexpr auto kTerminalInterval = 200ms;
constexpr auto kPlainInterval = 30s;

// To the first column, and nothing left of what stood there.
constexpr const char* kLineStart = "\r\033[K";

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

std::string lineOf(const ProgressState& state) {
    const std::string left =
        state.secondsLeft ? fmt::format(", about {} left", duration(*state.secondsLeft)) : "";
    return printable(
        fmt::format("{:3.0f} %{}  {}", std::floor(state.part * 100), left, state.task));
}

}  // namespace

TerminalProgress::~TerminalProgress() {
    clear();
}

TerminalProgress::Style TerminalProgress::suitableStyle() {
    return isatty(STDERR_FILENO) == 1 && movesCursor() ? Style::terminal : Style::plain;
}

void TerminalProgress::clear() const {
    if (style_ == Style::terminal) write(kLineStart);
}

void TerminalProgress::say(std::string_view line) {
    if (style_ == Style::quiet) return;
    clear();
    write(printable(line) + "\n");
}

void TerminalProgress::tellResult(std::string_view line) {
    if (style_ == Style::quiet) return;
    clear();
    fmt::print("{}\n", printable(line));
}

void TerminalProgress::show(const ProgressState& state) {
    const auto now = Clock::now();
    const auto since = now - shown_;
    if (style_ == Style::terminal && (state.isNewTask || since >= kTerminalInterval)) {
        write(kLineStart + firstColumns(lineOf(state), terminalWidth() - 1));
        shown_ = now;
    } else if (style_ == Style::plain && (state.isNewTask || since >= kPlainInterval)) {
        write(lineOf(state) + "\n");
        shown_ = now;
    }
}

}  // namespace tkv::disc
