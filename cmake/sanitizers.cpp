// Linked into every program that is built with sanitizers: what they are to know of this project.
// Visible, since the sanitizers' library looks the functions up.

#define TKV_SEEN_OUTSIDE extern "C" __attribute__((visibility("default")))

TKV_SEEN_OUTSIDE const char* __lsan_default_options();
TKV_SEEN_OUTSIDE const char* __lsan_default_suppressions();

const char* __lsan_default_options() {
    return "print_suppressions=0";
}

// Font configuration keeps what it has found until the process ends.
const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}
