#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Files on disk. Paths are used unchanged: tilde already expanded, symbolic links followed.

namespace tkv {

/// Identifies one state of a file: it changes when the file is replaced or rewritten, except for a
/// rewrite of the same length within the file system's timestamp granularity.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t bytes = 0;
    std::int64_t modifiedNs = 0;
    bool operator==(const FileStamp&) const = default;
    auto operator<=>(const FileStamp&) const = default;
};

/// None when nothing is at `path`.
std::optional<FileStamp> fileStamp(const std::string& path);

/// Identifies an item on the disk, by whatever path it is reached.
struct FileId {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    auto operator<=>(const FileId&) const = default;
};

/// None when nothing is at `path`.
std::optional<FileId> fileId(const std::string& path);

/// Whether the path can be opened for reading, as a folder may be too; never blocks.
bool canBeRead(const std::string& path);

/// The whole of a regular file; none when it cannot be read, is no regular file or larger than
/// `most` bytes, or when the callback `isWanted`, given its first bytes (4096, or all of a smaller
/// one), returns false: then no more is read.
using HeadTest = std::function<bool(std::span<const std::uint8_t> head)>;
std::optional<std::vector<std::uint8_t>> readFile(
    const std::string& path, std::int64_t most = std::int64_t{1} << 30U,
    const HeadTest& isWanted = [](auto) { return true; });

/// Creates or truncates the file and writes `bytes`. False when some could not be written; a
/// regular file is then removed, so that no part is taken for the whole.
bool writeFile(const std::string& path, std::span<const std::uint8_t> bytes);

/// Removes the regular file at `path`, symbolic links followed, if there is one: for a partially
/// written file, which would be taken for a complete one.
void removePartOfFile(const std::string& path);

/// Makes an empty file, unless one is there already that may be read and written. False when the
/// path cannot be opened for both.
bool createFile(const std::string& path);

/// Appends `bytes` to the file. False when the path cannot be opened for reading and writing, is
/// not seekable (a FIFO), or some bytes could not be written.
bool appendToFile(const std::string& path, std::string_view bytes);

/// Returns when what was written to the file, or below the folder, is on the disk, and will be
/// there after a power cut. False when it could not be written.
bool flushToDisk(const std::string& path);

/// Writes `bytes` over the first ones of the file, whose rest stays; nothing when the path cannot
/// be opened for writing. Never blocks.
void overwriteStart(const std::string& path, std::string_view bytes);

/// Makes `to` a copy of the regular file `from`, created or truncated first. False when both names
/// lead to one file, which is then left as it is, and when the copy failed, as writeFile does.
bool copyFile(const std::string& from, const std::string& to);

/// The names in a folder, hidden ones included, "." and ".." not, in natural order: by bytes, but
/// runs of digits compared as numbers, so that 9 stands before 10. None when it cannot be listed.
std::optional<std::vector<std::string>> folderNames(const std::string& path);

/// Where an item is: the absolute path of its folder, without links, "." and "..", and its own
/// name, which may be that of a link. The item itself need not be there. None when the folder
/// cannot be found, and for a path that ends in ".", ".." or the root, whatever folder that is.
std::optional<std::string> itemLocation(const std::string& path);

/// Statistics of a file system: sizes in bytes, inode counts, its identifier.
struct FileSystemFigures {
    std::uint64_t freeNodes = 0;
    std::uint64_t freeBytes = 0;  ///< For users without privileges.
    std::uint64_t nodes = 0;
    std::uint64_t number = 0;
    std::uint64_t bytes = 0;
};

/// Of the file system that holds the item at `path`; none, and the reason in `error`, when nothing
/// is there or it cannot be reached.
std::optional<FileSystemFigures> fileSystemOf(const std::string& path, std::error_code& error);

}  // namespace tkv
