#include "system/processes.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <utility>

#include "system/descriptor.h"

#ifdef __APPLE__
extern char** environ;
#endif

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

// An argv or envp array of the words, which must outlive it. posix_spawn does not change them.
std::vector<char*> argvOf(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

enum class ErrorStream { inherited, toOutput };

// Starts the command; none when that was not possible. `input`: -1 leaves it this process's own.
std::optional<pid_t> start(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment, int input, int output,
                           ErrorStream errors) {
    const std::vector<char*> argv = argvOf(command);
    const std::vector<char*> envp = argvOf(environment);

    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    if (input >= 0) posix_spawn_file_actions_adddup2(&streams, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&streams, output, STDOUT_FILENO);
    if (errors == ErrorStream::toOutput)
        posix_spawn_file_actions_adddup2(&streams, output, STDERR_FILENO);

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
    const int error = posix_spawn(&child, argv[0], &streams, &attributes, argv.data(), envp.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&streams);
    if (error != 0) return std::nullopt;
    return child;
}

// Programs that were started and have not been seen to end.
std::vector<pid_t> children;

// Takes leave of those that have ended; waits for none.
void reap() {
    std::erase_if(children, [](pid_t child) { return waitpid(child, nullptr, WNOHANG) != 0; });
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

void openStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is given out, and those below this one are taken.
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) != stream) return;
    }
}

std::map<std::string, std::string> environmentVariables() {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::size_t end = variable.find('=');
        if (end != std::string_view::npos) {
            variables.emplace(variable.substr(0, end), variable.substr(end + 1));
        }
    }
    return variables;
}

std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment) {
    std::vector<Pipe> pipes = makePipes(commands.size());
    if (pipes.empty()) return {};

    for (std::size_t i = 0; i < commands.size(); ++i) {
        const int input = i == 0 ? -1 : pipes[i - 1].readEnd.number();
        const ErrorStream errors =
            i + 1 == commands.size() ? ErrorStream::toOutput : ErrorStream::inherited;
        const auto child =
            start(commands[i], environment, input, pipes[i].writeEnd.number(), errors);
        if (child) children.push_back(*child);
        pipes[i].writeEnd.close();
        if (i > 0) pipes[i - 1].readEnd.close();
    }

    std::string output = readToEnd(pipes.back().readEnd.number());
    reap();
    return output;
}

}  // namespace tkv
