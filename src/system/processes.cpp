#include "system/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <utility>

#include "system/pipe.h"

#ifdef __APPLE__
extern char** environ;
#endif

namespace tkv {

namespace {

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

// What a program gets as its streams; -1 leaves one as this process has it.
struct Streams {
    int input = -1;
    int output = -1;
    int errors = -1;
};

enum class Lookup { asItStands, inPath };

// Starts the command; the answer is 0, or errno of why that was not possible.
int start(const std::vector<std::string>& command, char* const* environment, const Streams& streams,
          Lookup lookup, pid_t& child) {
    const std::vector<char*> argv = argvOf(command);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const auto& [descriptor, stream] : {std::pair(streams.input, STDIN_FILENO),
                                             {streams.output, STDOUT_FILENO},
                                             {streams.errors, STDERR_FILENO}}) {
        if (descriptor >= 0) posix_spawn_file_actions_adddup2(&actions, descriptor, stream);
    }

    // Whatever this process blocks or ignores, a program whose reader is gone is to end.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    const auto spawn = lookup == Lookup::inPath ? posix_spawnp : posix_spawn;
    const int error = spawn(&child, argv[0], &actions, &attributes, argv.data(), environment);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
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

std::atomic<bool> stopped = false;

// The programs that runProgram waits for, where a signal handler finds them; 0 in a free place.
std::array<std::atomic<pid_t>, 64> running{};
static_assert(std::atomic<pid_t>::is_always_lock_free);

// A started program that can be stopped while this lives. When all places are taken it ends by
// itself.
class Stoppable {
  public:
    explicit Stoppable(pid_t child) {
        for (std::atomic<pid_t>& place : running) {
            pid_t nobody = 0;
            if (!place.compare_exchange_strong(nobody, child)) continue;
            place_ = &place;
            break;
        }
        if (stopped) kill(child, SIGTERM);  // It came too late for stopPrograms.
    }
    ~Stoppable() {
        if (place_ != nullptr) *place_ = 0;
    }
    Stoppable(Stoppable&&) = delete;

  private:
    std::atomic<pid_t>* place_ = nullptr;
};

// Cuts what a stream brings into lines and hands them on.
class LineReader {
  public:
    LineReader(Descriptor stream, const std::function<void(std::string_view)>& onLine)
        : stream_(std::move(stream)), onLine_(onLine) {}

    int number() const { return stream_.number(); }

    // Reads what is there; at the stream's end hands on the last line and closes it.
    void read() {
        std::array<char, 4096> buffer;
        const ssize_t got = ::read(number(), buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) return;
        for (ssize_t i = 0; i < got; ++i) {
            const char byte = buffer[static_cast<std::size_t>(i)];
            if (byte == '\n' || byte == '\r') {
                handOn();
            } else if (line_.size() < kLongestLine) {
                line_ += byte;
            }
        }
        if (got > 0) return;
        handOn();
        stream_.close();
    }

  private:
    static constexpr std::size_t kLongestLine = 65536;

    void handOn() {
        if (!line_.empty() && onLine_) onLine_(line_);
        line_.clear();
    }

    Descriptor stream_;
    const std::function<void(std::string_view)>& onLine_;
    std::string line_;
};

void readLines(LineReader& output, LineReader& errors) {
    while (output.number() >= 0 || errors.number() >= 0) {
        // A closed stream has the number -1, which poll passes over.
        std::array<pollfd, 2> waiting{{{output.number(), POLLIN, 0}, {errors.number(), POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), -1) < 0) continue;
        if (waiting[0].revents != 0) output.read();
        if (waiting[1].revents != 0) errors.read();
    }
}

ProgramEnd endOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (stopped) return {ProgramEnd::How::stopped, 0};
    if (WIFSIGNALED(status)) return {ProgramEnd::How::killed, WTERMSIG(status)};
    return {ProgramEnd::How::exited, WEXITSTATUS(status)};
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
    const std::vector<char*> envp = argvOf(environment);

    for (std::size_t i = 0; i < commands.size(); ++i) {
        Streams streams;
        if (i > 0) streams.input = pipes[i - 1].readEnd.number();
        streams.output = pipes[i].writeEnd.number();
        if (i + 1 == commands.size()) streams.errors = streams.output;
        pid_t child = 0;
        if (start(commands[i], envp.data(), streams, Lookup::asItStands, child) == 0) {
            children.push_back(child);
        }
        pipes[i].writeEnd.close();
        if (i > 0) pipes[i - 1].readEnd.close();
    }

    std::string output = readToEnd(pipes.back().readEnd.number());
    reap();
    return output;
}

ProgramEnd runProgram(Program program) {
    if (stopped) return {ProgramEnd::How::stopped, 0};
    Descriptor input = std::move(program.stream);
    if (input.number() < 0) {
        input = Descriptor(open(program.input.empty() ? "/dev/null" : program.input.c_str(),
                                O_RDONLY | O_CLOEXEC));
    }
    if (input.number() < 0) return {ProgramEnd::How::noFile, errno};
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    const Descriptor file(program.output.empty() ? -1 : open(program.output.c_str(), flags, 0666));
    if (file.number() < 0 && !program.output.empty()) return {ProgramEnd::How::noFile, errno};

    std::vector<Pipe> pipes = makePipes(2);
    if (pipes.empty()) return {ProgramEnd::How::notStarted, EMFILE};
    Pipe& output = pipes[0];
    Pipe& errors = pipes[1];
    const int written = file.number() >= 0 ? file.number() : output.writeEnd.number();
    pid_t child = 0;
    const int error =
        start(program.command, environ, {input.number(), written, errors.writeEnd.number()},
              Lookup::inPath, child);
    if (error != 0) return {ProgramEnd::How::notStarted, error};
    // Whoever feeds the program is to see when nobody reads any more.
    input.close();
    output.writeEnd.close();
    errors.writeEnd.close();

    {
        const Stoppable stoppable(child);
        LineReader outputLines(std::move(output.readEnd), program.onOutput);
        LineReader errorLines(std::move(errors.readEnd), program.onError);
        readLines(outputLines, errorLines);
        // Until it is taken leave of, its number is nobody else's.
        siginfo_t ended{};
        while (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) < 0 &&
               errno == EINTR) {
        }
    }
    return endOf(child);
}

void stopPrograms() {
    // The second time they get no choice.
    const int signal = stopped.exchange(true) ? SIGKILL : SIGTERM;
    for (const std::atomic<pid_t>& child : running) {
        const pid_t number = child;
        if (number != 0) kill(number, signal);
    }
}

bool areProgramsStopped() {
    return stopped;
}

}  // namespace tkv
