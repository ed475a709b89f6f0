#pragma once

#include <string>

namespace tkv::disc {

/// While it lives, the lines of the composer, and of all else that writes to the log of this
/// process, go to a file instead.
class ComposerLog {
  public:
    /// `path`: of the file, which is emptied first.
    explicit ComposerLog(const std::string& path);
    ~ComposerLog();
    ComposerLog(ComposerLog&&) = delete;
};

}  // namespace tkv::disc
