#pragma once

#include <csignal>
#include <string>

namespace tkv {

/// Blocks SIGTERM, SIGINT and SIGHUP during its lifetime; they stay pending and are delivered
/// afterwards.
class SignalsHeld {
  public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(SignalsHeld&&) = delete;

  private:
    sigset_t before_{};
};

/// During its lifetime, the regular file at a path, symbolic links followed, counts as unfinished.
/// To be constructed while the signals that were blocked to open the file are still blocked, so
/// that none is delivered in between. There is one at a time: a second one replaces the first.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const std::string& path);
    ~UnfinishedFile();
    UnfinishedFile(UnfinishedFile&&) = delete;
};

/// Removes the file that counts as unfinished, if one does; for the signal handlers that terminate
/// a program. Async-signal-safe.
void removeUnfinishedFile();

}  // namespace tkv
