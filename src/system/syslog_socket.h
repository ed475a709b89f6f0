#pragma once

#include <string>
#include <string_view>

#include "system/descriptor.h"

namespace tkv {

/// A connection to the system's log. It never waits: where nobody listens, or the listener has
/// fallen behind, entries are dropped.
class SyslogSocket {
  public:
    /// `path`: of the listener's socket; empty stands for the system's own.
    explicit SyslogSocket(const std::string& path = {});

    /// Hands on one entry of the user facility, a notice, as valid UTF-8.
    void send(std::string_view program, std::string_view text) const;

  private:
    Descriptor connection_;
};

}  // namespace tkv
