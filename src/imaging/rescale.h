#pragma once

// Fits pictures into boxes:
//
//     if (const auto size = tkv::imgSizes("photo.jpg")) {
//         const auto [width, height] = *size;
//         tkv::imgRescale("photo.jpg", "half.jpg", width / 2, height / 2, 72, tkv::kFit, 0.9F);
//     }
//     tkv::imgRescale("photo.jpg", "wide.png", 640, 360, 72, tkv::kFitWithBars, 1);

#include <array>
#include <optional>
#include <string>
#include <variant>

#include "graphics/bitmap.h"
#include "graphics/geometry.h"

namespace tkv {

/// A picture to rescale: the path of a file (leading tilde expanded), a picture in memory (not
/// owned), or neither.
using PictureSource = std::variant<std::monostate, std::string, const Bitmap*>;

/// The modes of imgRescale: how a picture is fitted into a box.
inline constexpr int kFillAndCrop = 2;  ///< Fills the box; what does not fit is cropped equally.
inline constexpr int kFitWithBars = 1;  ///< Fits into the box, letterboxed or pillarboxed.
inline constexpr int kStretch = 0;      ///< Fills the box, aspect ratio ignored.
inline constexpr int kFit = -1;    ///< As kFitWithBars, but the output is as large as the picture.
inline constexpr int kCover = -2;  ///< As kFillAndCrop, but nothing is cropped.

/// Fits a picture into a box of dstW x dstH pixels and writes it to `dstPathStr` through imgExport.
/// `resolution`: dots per inch of the output; 0 or below means 72.
/// `modeInt`: one of the modes above; any other number fails.
/// `quality`: as imgExport takes it.
/// Files named .tif, .tiff, .gif and .png keep transparency, all others stand on black.
/// True when a file exists at the destination afterwards; false, and nothing written, when there
/// is no source or it cannot be decoded. `isWritten`: as imgExport takes it.
bool imgRescale(const PictureSource& srcPathStrOrImg, const std::string& dstPathStr, int dstW,
                int dstH, double resolution, int modeInt, float quality, bool* isWritten = nullptr);

/// Width and height in pixels of the picture in a file; none when there is no file or it is not a
/// picture.
std::optional<std::array<int, 2>> imgSizes(const std::string& path);

/// Writes a picture of one colour, width x height pixels, in the file type that the path's
/// extension names, at the best quality. True when a file exists there afterwards.
bool imgColorFile(const Color& colour, const std::string& path, int width, int height);

}  // namespace tkv
