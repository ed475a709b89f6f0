#pragma once

#include <fmt/format.h>

#include <functional>
#include <string_view>
#include <utility>

#include "system/verbose.h"

namespace tkv {

/// Receives the lines of this process: texts for the standard error stream unchanged, and log
/// entries, without a prefix, that end with a line feed.
using LogSink = std::function<void(std::string_view text)>;

/// From now on all lines go to the sink alone; with an empty one, the default, to where the
/// functions below say. Not thread-safe: no other thread may write meanwhile.
void setLogSink(LogSink sink);

/// From now on only the functions of this header write to the standard error stream: what libraries
/// print there, or what they start, goes nowhere. Where that cannot be had, all stays as it was. To
/// be called once, before other threads run.
void reserveStandardError();

/// Writes `text` unchanged to the standard error stream.
void writeStandardError(std::string_view text);

/// Writes one entry to the platform log: to the standard error stream after the prefix
/// "2026-11-21 10:15:30.123 tkvDvdMenuImg[4711:1] " (local time, process, thread), and then to
/// syslog, which never blocks.
/// A line feed is added unless the text ends with one; bytes that are not UTF-8 are replaced.
void writeLog(std::string_view text);

/// Formats and writes one log entry.
template <typename... Args>
void logLine(fmt::format_string<Args...> format, Args&&... args) {
    writeLog(fmt::format(format, std::forward<Args>(args)...));
}

/// The same while the verbose flag is set; otherwise nothing is formatted or written. Arguments are
/// evaluated in any case: expensive ones belong behind the caller's own isVerbose().
template <typename... Args>
void verboseLine(fmt::format_string<Args...> format, Args&&... args) {
    if (isVerbose() != 0) writeLog(fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace tkv
