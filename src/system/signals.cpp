#include "system/signals.h"

#include <csignal>
#include <initializer_list>

namespace tkv {

void handleEndingSignals(void (*handler)(int signal), int flags) {
    for (const int signal : {SIGPIPE, SIGXFSZ})
        static_cast<void>(std::signal(signal, SIG_IGN));
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        handleSignal(signal, handler, flags);
}

void handleSignal(int signal, void (*handler)(int signal), int flags) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

}  // namespace tkv
