#include "system/program_start.h"

#include <spawn.h>
#include <unistd.h>

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

int startProgram(const std::vector<std::string>& command, char* const* environment,
                 const Streams& streams, Lookup lookup, pid_t& child, const std::string& folder) {
    const std::vector<char*> argv = argvOf(command);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const auto& [descriptor, stream] : {std::pair(streams.input, STDIN_FILENO),
                                             {streams.output, STDOUT_FILENO},
                                             {streams.errors, STDERR_FILENO}}) {
        if (descriptor >= 0) posix_spawn_file_actions_adddup2(&actions, descriptor, stream);
    }

    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());

    // Whatever this process blocks or ignores, SIGPIPE and SIGXFSZ are to terminate a program.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    for (const int signal : {SIGPIPE, SIGXFSZ})
        sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    const auto spawn = lookup == Lookup::inPath ? posix_spawnp : posix_spawn;
    const int error = spawn(&child, argv[0], &actions, &attributes, argv.data(), environment);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

}  // namespace tkv
