#include "system/program_start.h"

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

namespace tkv {

std::vector<Pipe> makePipes(std::size_t count) {
    std::vector<Pipe> pipes;
    while (pipes.size() < count) {
        std::optional<Pipe> made = makePipe();
        if (!made) return {};
        pipes.push_back(std::move(*made));
    }
    return pipes;
}

std::vector<char*> argvOf(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

namespace {

// The functions below run in the child, a copy of this process in which another thread may have
// held any lock: nothing but system calls.

// No handler of this process runs in it. What was ignored before this process began stays so.
void resetSignals() {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0) continue;
        const bool isOurs = signal == SIGPIPE || signal == SIGXFSZ;
        if (action.sa_handler == SIG_IGN && !isOurs) continue;
        action = {};
        action.sa_handler = SIG_DFL;
        sigaction(signal, &action, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

// False with errno set.
bool leaveGroup([[maybe_unused]] pid_t parent) {
    if (setpgid(0, 0) != 0) return false;
#ifdef PR_SET_PDEATHSIG
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) return false;
    if (getppid() != parent) _exit(1);  // It ended before that.
#endif
    return true;
}

// False with errno set.
bool redirect(const Streams& streams) {
    for (const auto& [descriptor, stream] : {std::pair(streams.input, STDIN_FILENO),
                                             {streams.output, STDOUT_FILENO},
                                             {streams.errors, STDERR_FILENO}}) {
        if (descriptor >= 0 && dup2(descriptor, stream) < 0) return false;
    }
    return true;
}

// Forks with all signals blocked.
pid_t forkQuietly() {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    const int error = errno;
    if (child != 0) pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return child;
}

}  // namespace

int startProgram(const std::vector<std::string>& command, char* const* environment,
                 const Streams& streams, Group group, pid_t& child, const std::string& folder) {
    const std::vector<char*> argv = argvOf(command);
    // Closed by a successful exec; otherwise it tells why there was none.
    std::optional<Pipe> failure = makePipe();
    if (!failure) return errno;
    const pid_t parent = getpid();
    child = forkQuietly();
    if (child < 0) return errno;
    if (child == 0) {
        resetSignals();
        if ((group == Group::ours || leaveGroup(parent)) && redirect(streams) &&
            (folder.empty() || chdir(folder.c_str()) == 0)) {
            execve(argv[0], argv.data(), environment);
        }
        const int error = errno;
        _exit(write(failure->writeEnd.number(), &error, sizeof error) > 0 ? 1 : 2);
    }
    failure->writeEnd.close();
    int error = 0;
    while (read(failure->readEnd.number(), &error, sizeof error) < 0 && errno == EINTR) {
    }
    while (error != 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return error;
}

}  // namespace tkv
