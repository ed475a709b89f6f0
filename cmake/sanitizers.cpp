// Linked into every program that is built with sanitizers: the options and suppressions of this
// project. Exported, since the sanitizers' runtime looks the functions up.

#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <cstdint>

#define TKV_SEEN_OUTSIDE extern "C" __attribute__((visibility("default")))

TKV_SEEN_OUTSIDE const char* __lsan_default_options();
TKV_SEEN_OUTSIDE const char* __lsan_default_suppressions();

const char* __lsan_default_options() {
    return "print_suppressions=0";
}

// Fontconfig caches what it has found until the process exits.
const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

// Reports go to the standard error stream as it was at the start: the tool keeps it to itself.
[[gnu::constructor]] static void keepReportStream() {
    constexpr int kFarFromOthers = 200;
    const std::intptr_t stream = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, kFarFromOthers);
    if (stream >= 0) __sanitizer_set_report_fd(reinterpret_cast<void*>(stream));
}
