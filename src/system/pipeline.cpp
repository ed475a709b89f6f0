#include "system/pipeline.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "system/descriptor.h"
#include "system/pipe.h"
#include "system/program_start.h"
#include "system/unicode.h"

namespace tkv {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Child processes that have not been reaped.
std::vector<pid_t> children;

// Reaps those that have exited, without blocking.
void reap() {
    std::erase_if(children, [](pid_t child) { return waitpid(child, nullptr, WNOHANG) != 0; });
}

// Waits for data or the end of file; false when the deadline `end` passes first.
bool isReadableBy(steady_clock::time_point end, int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    int found = -1;
    do {
        const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now()).count();
        found = poll(&waiting, 1, static_cast<int>(std::clamp<decltype(left)>(left, 0, 1 << 30)));
    } while (found < 0 && errno == EINTR);
    return found != 0;
}

// Reads to the end of file, or to one of the limits; then `isCut` is set.
std::string readAnswer(int descriptor, const PipelineLimits* limits, bool& isCut) {
    const auto end = steady_clock::now() + (limits != nullptr ? limits->time : milliseconds(0));
    std::string bytes;
    std::array<char, 65536> buffer{};
    while (limits == nullptr || (bytes.size() < limits->bytes && isReadableBy(end, descriptor))) {
        std::size_t room = buffer.size();
        if (limits != nullptr) room = std::min(room, limits->bytes - bytes.size());
        const ssize_t got = read(descriptor, buffer.data(), room);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(got));
    }
    isCut = true;
    return bytes;
}

}  // namespace

std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment, const PipelineLimits* limits) {
    std::vector<Pipe> pipes = makePipes(commands.size());
    if (pipes.empty()) return {};
    const std::vector<char*> envp = argvOf(environment);
    const Descriptor nothing(limits != nullptr ? open("/dev/null", O_RDONLY | O_CLOEXEC) : -1);
    const std::size_t others = children.size();
    const Group group = limits != nullptr ? Group::own : Group::ours;

    for (std::size_t i = 0; i < commands.size(); ++i) {
        Streams streams;
        streams.input = i > 0 ? pipes[i - 1].readEnd.number() : nothing.number();
        streams.output = pipes[i].writeEnd.number();
        if (i + 1 == commands.size()) streams.errors = streams.output;
        pid_t child = 0;
        if (startProgram(commands[i], envp.data(), streams, group, child) == 0) {
            children.push_back(child);
        }
        pipes[i].writeEnd.close();
        if (i > 0) pipes[i - 1].readEnd.close();
    }

    bool isCut = false;
    std::string output = readAnswer(pipes.back().readEnd.number(), limits, isCut);
    if (isCut) {
        // Those that have exited are zombies until they are reaped, so no process id has been
        // reused.
        for (std::size_t i = others; i < children.size(); ++i)
            kill(-children[i], SIGKILL);
        if (!isUtf8(output)) output = firstCharacters(output, characterCount(output) - 1);
    }
    reap();
    return output;
}

}  // namespace tkv
