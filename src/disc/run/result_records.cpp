#include "disc/run/result_records.h"

#include <fmt/format.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

#include "disc/run/fault.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

std::uint32_t checksumOf(std::string_view bytes, std::uint32_t before) {
    return static_cast<std::uint32_t>(
        crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

std::uint32_t checksumOfFile(const std::string& path, std::uint32_t checksum) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> buffer(64 << 10);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) ||
           file.gcount() > 0) {
        const auto got = static_cast<std::size_t>(file.gcount());
        checksum = checksumOf({buffer.data(), got}, checksum);
    }
    if (!file.eof()) failOn(path, "read");
    return checksum;
}

void addFile(ResultRecord& record, const std::string& path, bool withChecksum) {
    ++record.files;
    if (!fs::is_regular_file(fs::symlink_status(path))) return;
    record.bytes += fs::file_size(path);
    if (withChecksum) record.checksum = checksumOfFile(path, record.checksum);
}

}  // namespace

ResultRecord recordOf(const std::string& path, bool withChecksum) {
    ResultRecord record;
    if (!fs::is_directory(path)) {
        addFile(record, path, withChecksum);
        return record;
    }
    for (const std::string& name : folderNames(path).value_or(std::vector<std::string>{})) {
        if (withChecksum) record.checksum = checksumOf(name, record.checksum);
        addFile(record, joinPath(path, name), withChecksum);
    }
    return record;
}

ResultRecords::ResultRecords(std::string path) : path_(std::move(path)) {
    std::ifstream file(path_);
    for (std::string line; std::getline(file, line) && !file.eof();) {
        std::istringstream words(line);
        std::string name;
        ResultRecord record;
        if (words >> name >> record.files >> record.bytes >> record.checksum)
            records_.insert_or_assign(name, record);
    }
}

std::optional<ResultRecord> ResultRecords::of(const std::string& name) const {
    const auto found = records_.find(name);
    return found == records_.end() ? std::nullopt : std::optional(found->second);
}

void ResultRecords::add(const std::string& name, const ResultRecord& record) {
    const std::string line =
        fmt::format("{} {} {} {}\n", name, record.files, record.bytes, record.checksum);
    if (!createFile(path_) || !appendToFile(path_, line) || !flushToDisk(path_))
        failOn(path_, "written");
    records_.insert_or_assign(name, record);
}

}  // namespace tkv::disc
