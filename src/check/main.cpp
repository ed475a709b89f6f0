// SPDX-License-Identifier: GPL-2.0-or-later
#include <fmt/format.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "check/titles.h"
#include "check/walk.h"

// Walks a disc with libdvdnav, which players use:
//
//     tkvDvdCheck EXPECTATION.json DISC
//     tkvDvdCheck --titles FOLDER
//
// The second tells a disc's titles, as titlesOf returns them, with libdvdread. Each fault is a line
// of the standard output, and without one what was looked at. Exit status 0: the disc is as it is
// to be; 1: it is not; 2: nothing was looked at.

namespace {

using namespace tkv::check;

// Seconds of the processor for one step: where a disc's commands lead in a circle, the library
// follows them for ever. A film of 8 GB takes the processor less.
constexpr int kPatience = 30;

std::array<char, 1000> endless{};  // the fault, while a step lasts

void endByPatience(int) {
    static_cast<void>(!write(STDOUT_FILENO, endless.data(), std::strlen(endless.data())));
    _exit(1);
}

void expectEnd(const std::string& what) {
    // The signal may come while this is written.
    endless.back() = '\0';
    const std::string line = fmt::format("{}: the disc leads on without an end.\n", what);
    std::copy_n(line.c_str(), std::min(line.size() + 1, endless.size() - 1), endless.begin());
    const itimerval timer{{0, 0}, {kPatience, 0}};
    setitimer(ITIMER_PROF, &timer, nullptr);
}

void tell(const std::string& line) {
    fmt::print("{}\n", line);
    static_cast<void>(std::fflush(stdout));
}

std::string counted(int count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

int check(const std::string& file, const std::string& disc) {
    std::ifstream input(file, std::ios::binary);
    if (!input) throw std::runtime_error(file + " cannot be read");
    const Expectation expected = readExpectation({std::istreambuf_iterator<char>(input), {}});
    const Report report = checkDisc(expected, disc, {expectEnd, tell});
    if (report.faults > 0) return 1;
    const bool hasMenus = report.pages > 0;
    const int count = hasMenus ? report.buttons : static_cast<int>(expected.films.size());
    tell(fmt::format("Checked: {}{} {} should.", counted(count, hasMenus ? "button" : "film"),
                     hasMenus ? " on " + counted(report.pages, "page") : "",
                     count == 1 ? "leads where it" : "lead where they"));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fmt::print(stderr,
                   "Usage: tkvDvdCheck EXPECTATION.json DISC\n"
                   "       tkvDvdCheck --titles FOLDER\n");
        return 2;
    }
    static_cast<void>(std::signal(SIGPROF, endByPatience));
    try {
        if (argv[1] == std::string_view("--titles")) {
            expectEnd("The titles");
            tell(titlesOf(argv[2]));
            return 0;
        }
        return check(argv[1], argv[2]);
    } catch (const std::exception& error) {
        fmt::print(stderr, "tkvDvdCheck: {}\n", error.what());
    }
    return 2;
}
