#include "disc/run/text_file.h"

#include <cerrno>
#include <filesystem>
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
    const int why = errno;
    std::error_code error;
    std::filesystem::remove(path, error);
    errno = why;
    failOn(path, "written");
}

}  // namespace tkv::disc
