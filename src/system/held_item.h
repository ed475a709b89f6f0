#pragma once

#include <optional>
#include <string>
#include <system_error>

#include "system/descriptor.h"

namespace tkv {

/// An item in a folder that is held open: what is done to it is done in that folder, even when the
/// path by which it was found leads elsewhere meanwhile.
class HeldItem {
  public:
    /// None where itemLocation knows none, or the folder was just exchanged.
    static std::optional<HeldItem> at(const std::string& path);

    /// Where it was when it was found, as itemLocation returns it.
    const std::string& location() const { return location_; }
    /// Whether its folder still is there.
    bool isInPlace() const;
    /// Links not followed.
    bool isFolder() const;

    /// Removes a file or a link, never a folder.
    std::error_code removeFile() const;
    /// Removes a folder, too, with all it holds.
    std::error_code removeAll() const;

  private:
    HeldItem(Descriptor folder, std::string location);

    Descriptor folder_;
    std::string location_;
    std::string name_;
};

}  // namespace tkv
