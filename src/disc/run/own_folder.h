#pragma once

#include <string>

#include "system/descriptor.h"

namespace tkv::disc {

/// The file that tells a folder of this program from all others.
inline constexpr const char* kMarker = ".tkvDvdDisc";

/// A folder that holds nothing but what this program has made.
class OwnFolder {
  public:
    /// Makes the folder and marks it, or takes one that is empty or marked already. Throws
    /// DiscError for any other, in which nothing is touched. `path`: absolute.
    explicit OwnFolder(std::string path);

    const std::string& path() const { return path_; }

    /// An open descriptor of the folder, wherever it has been moved meanwhile.
    int descriptor() const { return folder_.number(); }

    /// Whether this very folder is still at its path. Somebody may have put another one there.
    bool isInPlace() const;

    /// Throws DiscError when it is not.
    void requireInPlace() const;

  private:
    std::string path_;
    Descriptor folder_;
};

}  // namespace tkv::disc
