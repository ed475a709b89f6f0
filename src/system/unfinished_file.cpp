#include "system/unfinished_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>

namespace tkv {

namespace {

// Read by a signal handler: the path is set before the flag.
std::array<char, PATH_MAX> unfinishedPath{};
volatile std::sig_atomic_t isUnfinished = 0;

}  // namespace

SignalsHeld::SignalsHeld() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

SignalsHeld::~SignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

UnfinishedFile::UnfinishedFile(const std::string& path) {
    isUnfinished = 0;
    struct stat status {};
    if (realpath(path.c_str(), unfinishedPath.data()) != nullptr &&
        stat(unfinishedPath.data(), &status) == 0 && S_ISREG(status.st_mode)) {
        isUnfinished = 1;
    }
}

UnfinishedFile::~UnfinishedFile() {
    isUnfinished = 0;
}

void removeUnfinishedFile() {
    if (isUnfinished != 0) unlink(unfinishedPath.data());
}

}  // namespace tkv
