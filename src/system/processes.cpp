#include "system/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

#include "system/paths.h"
#include "system/program_start.h"

namespace tkv {

namespace {

// Splits a stream into lines and passes them to a callback, or the bytes as they come to another.
class StreamReader {
  public:
    using OnLine = std::function<void(std::string_view)>;
    using OnBytes = std::function<bool(std::string_view)>;

    StreamReader(Descriptor stream, const OnLine& onLine, OnBytes onBytes = {})
        : stream_(std::move(stream)), onLine_(onLine), onBytes_(std::move(onBytes)) {}

    int number() const { return stream_.number(); }
    std::size_t bytes() const { return bytes_; }

    // Reads what is available; at the end of file passes on the last line and closes the stream.
    void read() {
        const ssize_t got = ::read(number(), buffer_.data(), buffer_.size());
        if (got < 0 && errno == EINTR) return;
        const std::string_view bytes(buffer_.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
        bytes_ += bytes.size();
        if (bytes.empty()) handOn();
        if (bytes.empty() || !take(bytes)) stream_.close();
    }

  private:
    static constexpr std::size_t kLongestLine = 65536;
    static constexpr std::size_t kPipe = 65536;  // A pipe holds no more.

    // False when no more is wanted.
    bool take(std::string_view bytes) {
        if (onBytes_) return onBytes_(bytes);
        for (const char byte : bytes) {
            if (byte == '\n' || byte == '\r') {
                handOn();
            } else if (line_.size() < kLongestLine) {
                line_ += byte;
            }
        }
        return true;
    }

    void handOn() {
        if (!line_.empty() && onLine_) onLine_(line_);
        line_.clear();
    }

    Descriptor stream_;
    const OnLine& onLine_;
    OnBytes onBytes_;
    std::vector<char> buffer_ = std::vector<char>(kPipe);
    std::string line_;
    std::size_t bytes_ = 0;
};

// False when there is more output than that; the rest is not read.
bool readStreams(StreamReader& output, StreamReader& errors, std::size_t mostOutput) {
    while (output.number() >= 0 || errors.number() >= 0) {
        if (output.bytes() > mostOutput) return false;
        // A closed stream's descriptor is -1, which poll ignores.
        std::array<pollfd, 2> waiting{{{output.number(), POLLIN, 0}, {errors.number(), POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), -1) < 0) continue;
        if (waiting[0].revents != 0) output.read();
        if (waiting[1].revents != 0) errors.read();
    }
    return true;
}

// This process's environment, ended by a null pointer.
std::vector<char*> environmentWithout(const std::vector<std::string>& names) {
    std::vector<char*> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string_view name = text.substr(0, text.find('='));
        if (std::ranges::find(names, name) == names.end()) entries.push_back(*entry);
    }
    entries.push_back(nullptr);
    return entries;
}

// Waits until the child has exited, without reaping it: its process id cannot be reused until then.
void waitFor(pid_t child) {
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) < 0 &&
           errno == EINTR) {
    }
}

ProgramEnd reap(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) return {ProgramEnd::How::killed, WTERMSIG(status)};
    return {ProgramEnd::How::exited, WEXITSTATUS(status)};
}

}  // namespace

void openStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open returns the lowest free descriptor, and those below this one are open.
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

void ProgramStop::stop() {
    signalAll(stopped_.exchange(true) ? SIGKILL : SIGTERM);
}

void ProgramStop::signalAll(int signal) const {
    const int error = errno;
    for (const std::atomic<pid_t>& child : running_) {
        const pid_t number = child;
        if (number != 0) kill(-number, signal);
    }
    errno = error;
}

ProgramStop::Slot::Slot(ProgramStop& stop, pid_t child) {
    for (std::atomic<pid_t>& slot : stop.running_) {
        pid_t nobody = 0;
        if (!slot.compare_exchange_strong(nobody, child)) continue;
        slot_ = &slot;
        break;
    }
    if (stop.stopped_) kill(-child, SIGTERM);  // It was registered too late for stop().
}

ProgramStop::Slot::~Slot() {
    if (slot_ != nullptr) *slot_ = 0;
}

ProgramEnd runProgram(Program program, ProgramStop& stop) {
    if (stop.isStopped()) return {ProgramEnd::How::stopped, 0};
    const auto placed = [&](const std::string& path) {
        return path.starts_with('/') ? path : joinPath(program.folder, path);
    };
    Descriptor input = std::move(program.stream);
    if (input.number() < 0) {
        const std::string path = program.input.empty() ? "/dev/null" : placed(program.input);
        input = Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }
    if (input.number() < 0) return {ProgramEnd::How::noFile, errno};
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    const Descriptor file(
        program.output.empty() ? -1 : open(placed(program.output).c_str(), flags, 0666));
    if (file.number() < 0 && !program.output.empty()) return {ProgramEnd::How::noFile, errno};

    std::vector<Pipe> pipes = makePipes(2);
    if (pipes.empty()) return {ProgramEnd::How::notStarted, EMFILE};
    Pipe& output = pipes[0];
    Pipe& errors = pipes[1];
    const int written = file.number() >= 0 ? file.number() : output.writeEnd.number();
    std::vector<char*> environment = environmentWithout(program.hiddenVariables);
    pid_t child = 0;
    const int error = startProgram(program.command, environment.data(),
                                   {input.number(), written, errors.writeEnd.number()}, Group::own,
                                   child, program.folder);
    if (error != 0) return {ProgramEnd::How::notStarted, error};
    // Closed, so that whoever writes to the program gets a broken pipe when it exits.
    input.close();
    output.writeEnd.close();
    errors.writeEnd.close();

    bool isRead = true;
    {
        const ProgramStop::Slot slot(stop, child);
        StreamReader outputStream(std::move(output.readEnd), program.onOutput, program.onBytes);
        StreamReader errorStream(std::move(errors.readEnd), program.onError);
        isRead = readStreams(outputStream, errorStream, program.mostOutput);
        if (!isRead) kill(-child, SIGKILL);
        waitFor(child);
    }
    const ProgramEnd end = reap(child);
    if (stop.isStopped()) return {ProgramEnd::How::stopped, 0};
    return isRead ? end : ProgramEnd{ProgramEnd::How::tooMuch, 0};
}

}  // namespace tkv
