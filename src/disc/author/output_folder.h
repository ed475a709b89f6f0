#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "system/descriptor.h"

namespace tkv::disc {

/// The folder in which a disc is made: the disc, its image, its pictures, and "work" with the
/// intermediate results. Nothing in a folder that somebody else has filled is ever touched.
class OutputFolder {
  public:
    /// Makes the folder, or takes one that is empty or was made for a disc earlier, for this run
    /// alone. Throws DiscError for any other. `path`: absolute.
    explicit OutputFolder(const std::string& path);

    const std::string& path() const { return path_; }

    /// Throws DiscError when the file system has fewer free bytes.
    void requireSpace(std::int64_t bytes) const;

    /// Of the intermediate results.
    std::string workPath() const { return path_ + "/work"; }

    /// Puts what was made at `from`, an absolute path on the same file system, in the place of the
    /// folder's earlier `name`.
    void put(const std::string& from, std::string_view name) const;

    /// Removes what an earlier run has left as `name`.
    void drop(std::string_view name) const;

  private:
    std::string path_;
    Descriptor lock_;
};

}  // namespace tkv::disc
