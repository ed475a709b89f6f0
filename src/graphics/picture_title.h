#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tkv {

/// The title that somebody has given the picture in a file, as valid UTF-8: that of its XMP, of its
/// IPTC or of its EXIF data (Windows' title, or the description), or the description in its XMP;
/// empty without one. What cameras and programs write there of themselves counts as none.
std::string titleOfPicture(std::span<const std::uint8_t> file);

/// Whether a title is one that cameras write of themselves, or says nothing.
bool isCameraTitle(const std::string& title);

}  // namespace tkv
