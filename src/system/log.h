#pragma once

#include <fmt/format.h>

#include <functional>
#include <string_view>
#include <utility>

#include "system/verbose.h"

namespace tkv {

/// What takes the lines of this process: texts for the standard error stream as they stand, and
/// entries of the log, without a prefix, that end with a line feed.
using LogSink = std::function<void(std::string_view text)>;

/// From now on all lines go to the sink alone; with an empty one, as at the start, to where the
/// functions below say. Not to be called while another thread writes.
void setLogSink(LogSink sink);

/// Writes `text` as it stands to the standard error stream.
void writeStandardError(std::string_view text);

/// Writes one entry to the platform log: to the standard error stream behind the prefix
/// "2026-11-21 10:15:30.123 tkvDvdMenuImg[4711:1] " (local time, process, thread), and then to
/// syslog, which is never waited for.
/// A line feed is added unless the text ends with one; bytes that are not UTF-8 are replaced.
void writeLog(std::string_view text);

/// Formats and writes one log entry.
template <typename... Args>
void logLine(fmt::format_string<Args...> format, Args&&... args) {
    writeLog(fmt::format(format, std::forward<Args>(args)...));
}

/// The same while the verbose flag is set; otherwise nothing is formatted or written. Arguments are
/// evaluated in any case: what takes time to find out stays behind an isVerbose() of the caller's.
template <typename... Args>
void verboseLine(fmt::format_string<Args...> format, Args&&... args) {
    if (isVerbose() != 0) writeLog(fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace tkv
