#include "system/log.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "system/syslog_socket.h"
#include "system/unicode.h"

namespace tkv {

namespace {

constexpr const char* kProgram = "tkvDvdMenuImg";

LogSink& logSink() {
    static LogSink sink;
    return sink;
}

std::FILE*& errorStream() {
    static std::FILE* stream = stderr;
    return stream;
}

std::string logPrefix() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    const std::time_t seconds = system_clock::to_time_t(now);
    localtime_r(&seconds, &local);
    return fmt::format("{:%Y-%m-%d %H:%M:%S}.{:03} {}[{}:1] ", local, millis, kProgram, getpid());
}

}  // namespace

void setLogSink(LogSink sink) {
    logSink() = std::move(sink);
}

void reserveStandardError() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const int kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    std::FILE* const stream = nowhere < 0 || kept < 0 ? nullptr : fdopen(kept, "w");
    if (stream != nullptr && dup2(nowhere, STDERR_FILENO) == STDERR_FILENO) {
        static_cast<void>(std::setvbuf(stream, nullptr, _IONBF, 0));
        errorStream() = stream;
    }
    if (nowhere >= 0) close(nowhere);
}

void writeStandardError(std::string_view text) {
    if (logSink()) return logSink()(text);
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), errorStream()));
}

void writeLog(std::string_view text) {
    const std::string entry = validUtf8(text);
    const std::string_view end = entry.ends_with('\n') ? "" : "\n";
    if (logSink()) return logSink()(fmt::format("{}{}", entry, end));
    // One write per entry, so that entries of several processes on one terminal are not
    // interleaved.
    writeStandardError(fmt::format("{}{}{}", logPrefix(), entry, end));
    static const SyslogSocket syslog;
    syslog.send(kProgram, entry);
}

}  // namespace tkv
