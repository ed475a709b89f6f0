#include "disc/run/text_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

#include "disc/run/fault.h"

namespace tkv::disc {

std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void writeText(const std::string& path, std::string_view text) {
    errno = 0;
    std::ofstream file(path);
    file << text << std::flush;
    if (file) return;
    throw DiscError(
        fmt::format("{} cannot be written: {}.", path, std::generic_category().message(errno)),
        path);
}

}  // namespace tkv::disc
