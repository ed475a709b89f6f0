// SPDX-License-Identifier: GPL-2.0-or-later
#include "check/title_set.h"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "check/stream.h"

namespace tkv::check {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kSectorBytes = 2048;

// Where the tables say, in sectors from the set's begin, where the set and they themselves end, and
// where the menus and the film begin.
constexpr std::size_t kSetEnd = 0x0C;
constexpr std::size_t kTablesEnd = 0x1C;
constexpr std::size_t kMenus = 0xC0;
constexpr std::size_t kFilm = 0xC4;

// A disc of many films has tables of a megabyte; what is longer is none.
constexpr std::uintmax_t kMostTables = 64 << 20;

std::string readTables(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || fs::file_size(path) > kMostTables)
        throw std::runtime_error(path.filename().string() + " cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

std::uintmax_t sectorsAt(std::string_view tables, std::size_t at) {
    std::uintmax_t number = 0;
    for (const char byte : tables.substr(at, 4))
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

// `sectors`: of all files together, which need not be there when it is 0.
std::string checkFiles(const std::vector<std::string>& files, std::uintmax_t sectors,
                       bool isTimed) {
    std::vector<std::string> found;
    std::uintmax_t bytes = 0;
    for (const std::string& file : files) {
        if (!fs::exists(file)) break;
        bytes += fs::file_size(file);
        found.push_back(file);
    }
    if (bytes != sectors * kSectorBytes) {
        throw std::runtime_error(
            fmt::format("{} has {} bytes instead of {}",
                        fs::path(found.empty() ? files.front() : found.back()).filename().string(),
                        bytes, sectors * kSectorBytes));
    }
    return checkStream(found, isTimed);
}

}  // namespace

std::string checkTitleSet(const std::string& folder, int number, bool isTimed) {
    const auto path = [&](std::string_view part, std::string_view extension) {
        const std::string name =
            number == 0 ? "VIDEO_TS" : fmt::format("VTS_{:02}_{}", number, part);
        return fmt::format("{}/{}.{}", folder, name, extension);
    };
    const std::string tables = readTables(path("0", "IFO"));
    const std::string backup = path("0", "BUP");
    if (readTables(backup) != tables) {
        throw std::runtime_error(fmt::format("{} does not equal {}",
                                             fs::path(backup).filename().string(),
                                             fs::path(path("0", "IFO")).filename().string()));
    }
    if (tables.size() < kSectorBytes) throw std::runtime_error("its tables are too short");
    // The backup is the set's last part.
    const std::uintmax_t end = sectorsAt(tables, kSetEnd) - sectorsAt(tables, kTablesEnd);
    const std::uintmax_t menus = sectorsAt(tables, kMenus);
    const std::uintmax_t film = sectorsAt(tables, kFilm);
    // Without a stream, the manager's tables name some sectors that are not there.
    std::string stutter;
    if (menus > 0 && (number > 0 || fs::exists(path("0", "VOB"))))
        stutter = checkFiles({path("0", "VOB")}, (number > 0 ? film : end) - menus, true);
    if (number == 0 || !stutter.empty()) return stutter;
    std::vector<std::string> parts;
    for (const char part : {'1', '2', '3', '4', '5', '6', '7', '8', '9'})
        parts.push_back(path({&part, 1}, "VOB"));
    return checkFiles(parts, end - film, isTimed);
}

}  // namespace tkv::check
