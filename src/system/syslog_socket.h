#pragma once

#include <string>
#include <string_view>

#include "system/descriptor.h"

namespace tkv {

/// A connection to the system's log. It never blocks: without a listener, or while the listener's
/// queue is full, entries are dropped.
class SyslogSocket {
  public:
    /// `path`: of the listener's socket; empty stands for the system's own.
    explicit SyslogSocket(const std::string& path = {});

    /// Sends one entry of the facility user, severity notice, as valid UTF-8.
    void send(std::string_view program, std::string_view text) const;

  private:
    Descriptor connection_;
};

}  // namespace tkv
