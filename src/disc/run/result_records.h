#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tkv::disc {

/// What a result consisted of when it was made: a file, or a folder of files. Links count as empty:
/// what they lead to is somebody else's.
struct ResultRecord {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;     ///< of all of them
    std::uint32_t checksum = 0;  ///< CRC-32 of the names in a folder and of all bytes; 0: not read
    bool operator==(const ResultRecord&) const = default;
};

/// Of what is at `path`, whose bytes are read only for the checksum. Throws DiscError for what
/// cannot be read.
ResultRecord recordOf(const std::string& path, bool withChecksum);

/// Records in a text file, a line each: name, files, bytes and checksum. The last one of a name
/// counts, and a line that was not written whole is none.
class ResultRecords {
  public:
    /// `path`: of the file, which need not be there.
    explicit ResultRecords(std::string path);

    std::optional<ResultRecord> of(const std::string& name) const;

    /// Appends a record, and returns when it is on the disk. Throws DiscError when it cannot be
    /// written.
    void add(const std::string& name, const ResultRecord& record);

  private:
    std::string path_;
    std::map<std::string, ResultRecord> records_;
};

}  // namespace tkv::disc
