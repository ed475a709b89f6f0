#pragma once

#include <cstdint>
#include <string>

#include "disc/run/own_folder.h"
#include "system/descriptor.h"

namespace tkv::disc {

/// Throws DiscError when a run with this output folder replaces a file that it is made of: one of
/// the results in the folder, or below one, whatever links lead there. `output`, `path`: absolute;
/// the folder need not be there.
void requireOutside(const std::string& output, const std::string& path);

/// The folder in which a disc is made: the disc, its image, its pictures, and "work" with the
/// intermediate results. Nothing in a folder that somebody else has filled is ever touched.
class OutputFolder {
  public:
    /// Makes the folder, or takes one that is empty or was made for a disc earlier, for this run
    /// alone. Throws DiscError for any other, and for one in which something cannot be replaced.
    /// `path`: absolute.
    explicit OutputFolder(const std::string& path);

    const std::string& path() const { return folder_.path(); }

    /// Throws DiscError when the file system has fewer free bytes.
    void requireSpace(std::int64_t bytes) const;

    /// Of the intermediate results.
    std::string workPath() const { return path() + "/work"; }

    /// Throws DiscError when the folder has been moved meanwhile.
    void requireInPlace() const { folder_.requireInPlace(); }

    /// Puts what was made under the name `from` in "work" in the place of the folder's earlier
    /// `name`. Throws DiscError when the folder has been moved meanwhile.
    void put(const std::string& from, const std::string& name) const;

    /// Removes what an earlier run has left as `name`. Throws as put.
    void drop(const std::string& name) const;

  private:
    OwnFolder folder_;
    Descriptor lock_;
};

}  // namespace tkv::disc
