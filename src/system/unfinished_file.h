#pragma once

#include <csignal>
#include <string>

namespace tkv {

/// Holds back SIGTERM, SIGINT and SIGHUP while it lives. They come afterwards.
class SignalsHeld {
  public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(SignalsHeld&&) = delete;

  private:
    sigset_t before_{};
};

/// While it lives, the regular file at a path, be it behind links, counts as unfinished. To be made
/// while the signals are still held that were held for the file's opening, so that none comes in
/// between. There is one at a time: a second one takes the first one's place.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const std::string& path);
    ~UnfinishedFile();
    UnfinishedFile(UnfinishedFile&&) = delete;
};

/// Removes the file that counts as unfinished, if one does; for the signal handlers of a program
/// that is to end. Async-signal-safe.
void removeUnfinishedFile();

}  // namespace tkv
