// Linked into every program that is built with sanitizers: the options and suppressions of this
// project. Exported, since the sanitizers' runtime looks the functions up.

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
