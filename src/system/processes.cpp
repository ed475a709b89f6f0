#include "system/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

#include "system/program_start.h"

namespace tkv {

namespace {

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
        std::array<char, 4096> buffer{};
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
        startProgram(program.command, environ, {input.number(), written, errors.writeEnd.number()},
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
