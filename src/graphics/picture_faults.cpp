#include "graphics/picture_faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "graphics/codecs/codecs.h"
#include "system/files.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

/// A format that is read only where some package is installed, or not at all: its files have the
/// signature `mark` at the offset `at`.
struct RareFormat {
    std::size_t at;
    std::string_view mark;
    std::string_view name;
    std::string_view package;  ///< As Debian calls it; empty when there is none.
};

/// HEIF and AVIF by their brands (ISO/IEC 23008-12 and the AV1 Image File Format).
constexpr std::array kRareFormats{
    RareFormat{4, "ftypheic", "HEIC", "heif-gdk-pixbuf"},
    RareFormat{4, "ftypheix", "HEIC", "heif-gdk-pixbuf"},
    RareFormat{4, "ftypmif1", "HEIF", "heif-gdk-pixbuf"},
    RareFormat{4, "ftypmsf1", "HEIF", "heif-gdk-pixbuf"},
    RareFormat{4, "ftypavif", "AVIF", "libavif-gdk-pixbuf"},
    RareFormat{4, "ftypavis", "AVIF", "libavif-gdk-pixbuf"},
    RareFormat{8, "WEBPVP8", "WebP", "webp-pixbuf-loader"},
    RareFormat{0, "<svg", "SVG", {}},
    RareFormat{0, "<?xml", "SVG", {}},
    RareFormat{0, "%PDF", "PDF", {}},
};

bool isOf(const RareFormat& format, std::string_view head) {
    return head.size() > format.at && head.substr(format.at).starts_with(format.mark);
}

/// Of a file that begins with `head`, when no reader knows it.
std::string whyUnknown(std::string_view head) {
    const auto* const format = std::ranges::find_if(
        kRareFormats, [&](const RareFormat& rare) { return isOf(rare, head); });
    if (format == kRareFormats.end()) return "it is no picture of a format that is read";
    if (format->package.empty()) return fmt::format("{} files are not read", format->name);
    return fmt::format("{} pictures need the package {}", format->name, format->package);
}

/// Of a file that some reader took for its own.
std::string whyNotDecoded(std::optional<PixelSize> size) {
    constexpr std::int64_t kMany = 80'000'000;  // Some formats' readers take more, none fewer.
    if (size && std::max(size->width, size->height) > kLargestSide) {
        return fmt::format("{} x {} pixels are more than {} on a side", size->width, size->height,
                           kLargestSide);
    }
    if (size && pixelsOf(*size) > kMany) {
        return fmt::format("{} x {} pixels are too many to be decoded, or the file is damaged",
                           size->width, size->height);
    }
    return "it is damaged, or too large to be decoded";
}

}  // namespace

std::string whyNoPicture(const std::string& path, std::optional<PixelSize> size) {
    std::error_code error;
    if (fs::is_directory(path, error)) return "it is a folder";
    if (!canBeRead(path)) return "it cannot be read";
    if (!fs::is_regular_file(path, error)) return "it is no regular file";
    if (fs::is_empty(path, error)) return "it is empty";
    std::string head;
    bool isKnown = false;
    const auto look = [&](ByteView bytes) {
        head.assign(bytes.begin(), bytes.end());
        isKnown = isJpeg(bytes) || isJpeg2000(bytes) || isReadByPixbuf(bytes);
        return false;  // That is enough.
    };
    static_cast<void>(readFile(path, kLargestFile, look));
    return isKnown || head.empty() ? whyNotDecoded(size) : whyUnknown(head);
}

}  // namespace tkv
