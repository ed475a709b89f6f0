#include "platform/processes.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

#include "platform/descriptor.h"

namespace tkv {

namespace {

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

// Both ends are closed in every program that is started, but for those that it is given: an end
// left open there would hide the end of the data, or that nobody reads any more.
std::optional<Pipe> makePipe() {
    std::array<int, 2> ends{};
#ifdef __linux__
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
#else
    if (pipe(ends.data()) != 0) return std::nullopt;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
#endif
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

// None when there are too many open files.
std::vector<Pipe> makePipes(std::size_t count) {
    std::vector<Pipe> pipes;
    while (pipes.size() < count) {
        std::optional<Pipe> made = makePipe();
        if (!made) return {};
        pipes.push_back(std::move(*made));
    }
    return pipes;
}

// The texts as the C library takes them, which does not change them.
std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

// Starts the command; none when that was not possible. `input`: -1 leaves it this process's own.
std::optional<pid_t> start(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment, int input, int output,
                           bool withErrors) {
    const std::vector<char*> arguments = pointersTo(command);
    const std::vector<char*> variables = pointersTo(environment);

    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    if (input >= 0) posix_spawn_file_actions_adddup2(&streams, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&streams, output, STDOUT_FILENO);
    if (withErrors) posix_spawn_file_actions_adddup2(&streams, output, STDERR_FILENO);

    // Whatever this process blocks or ignores, a program whose reader is gone is to end.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t child = 0;
    const int error = posix_spawn(&child, arguments[0], &streams, &attributes, arguments.data(),
                                  variables.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&streams);
    if (error != 0) return std::nullopt;
    return child;
}

std::string readToEnd(int descriptor) {
    std::string bytes;
    std::array<char, 65536> buffer;
    std::size_t got = 0;
    do {
        got = transferAll(buffer.size(), [&](std::size_t done) {
            return read(descriptor, buffer.data() + done, buffer.size() - done);
        });
        bytes.append(buffer.data(), got);
    } while (got == buffer.size());
    return bytes;
}

}  // namespace

std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment) {
    std::vector<Pipe> pipes = makePipes(commands.size());
    if (pipes.empty()) return {};

    std::vector<pid_t> children;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const int input = i == 0 ? -1 : pipes[i - 1].readEnd.number();
        const bool isLast = i + 1 == commands.size();
        const auto child =
            start(commands[i], environment, input, pipes[i].writeEnd.number(), isLast);
        if (child) children.push_back(*child);
        pipes[i].writeEnd.close();
        if (i > 0) pipes[i - 1].readEnd.close();
    }

    std::string output = readToEnd(pipes.back().readEnd.number());
    for (const pid_t child : children) {
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    return output;
}

}  // namespace tkv
