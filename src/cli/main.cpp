#include <csignal>
#include <exception>
#include <string_view>

#include "cli/front_end.h"
#include "composer/dvd_menu_picture.h"
#include "system/log.h"

int main(int argc, char** argv) {
    // A host that no longer reads the lines still wants the page.
    std::signal(SIGPIPE, SIG_IGN);
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
