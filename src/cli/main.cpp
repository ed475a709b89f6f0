#include <csignal>
#include <exception>
#include <string_view>

#include "cli/front_end.h"
#include "composer/dvd_menu_picture.h"
#include "system/log.h"
#include "system/processes.h"
#include "system/unfinished_file.h"

namespace {

/// Ends the run as the signal would have, but leaves no half-written file behind.
void endBySignal(int signal) {
    tkv::removeUnfinishedFile();
    raise(signal);  // Its default is back, and takes effect once this returns.
}

void handleSignals() {
    // A host that no longer reads the lines still wants the page.
    std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue;
        action = {};
        action.sa_handler = endBySignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

int main(int argc, char** argv) {
    tkv::openStandardStreams();
    handleSignals();
    try {
        // A caller may pass not even the program's name.
        return tkv::runFrontEnd({argv + (argc > 0 ? 1 : 0), argv + argc}, tkv::dvdMenuPicture);
    } catch (const std::exception& error) {
        // Each piece as it stands: when memory has run out there is none to join them in.
        for (const std::string_view piece : {"tkvDvdMenuImg: ", error.what(), ", exit\n"}) {
            tkv::writeStandardError(piece);
        }
        return 1;
    }
}
