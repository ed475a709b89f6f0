#include "desktop/embedded.h"

#include <algorithm>

namespace tkv::desktop {

namespace {

enum class ByteOrder { littleEndian, bigEndian };

/// An unsigned number of so many bytes; 0 where the file has ended.
std::size_t numberAt(ByteView file, std::size_t at, std::size_t bytes, ByteOrder order) {
    if (at > file.size() || bytes > file.size() - at) return 0;
    std::size_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        number = number << 8U | file[order == ByteOrder::bigEndian ? at + i : at + bytes - 1 - i];
    return number;
}

bool hasAt(ByteView file, std::size_t at, std::string_view text) {
    return file.size() >= at + text.size() &&
           std::ranges::equal(file.subspan(at, text.size()), text);
}

ColorKind storedInPng(ByteView file) {
    constexpr std::size_t kColorType = 25;
    constexpr unsigned kColored = 2;
    const bool isGrey = file.size() > kColorType && (file[kColorType] & kColored) == 0;
    return isGrey ? ColorKind::grey : ColorKind::rgb;
}

/// Of the first picture (TIFF 6.0, "PhotometricInterpretation").
ColorKind storedInTiff(ByteView file, ByteOrder order) {
    constexpr std::size_t kEntry = 12, kPhotometric = 262;
    constexpr std::size_t kWhiteIsZero = 0, kBlackIsZero = 1, kSeparated = 5;
    const std::size_t directory = numberAt(file, 4, 4, order);
    const std::size_t entries = numberAt(file, directory, 2, order);
    for (std::size_t at = directory + 2; at < directory + 2 + entries * kEntry; at += kEntry) {
        if (numberAt(file, at, 2, order) != kPhotometric) continue;
        const std::size_t value = numberAt(file, at + 8, 2, order);
        if (value == kWhiteIsZero || value == kBlackIsZero) return ColorKind::grey;
        return value == kSeparated ? ColorKind::inks : ColorKind::rgb;
    }
    return ColorKind::rgb;
}

}  // namespace

ColorKind storedColors(ByteView file) {
    if (hasAt(file, 1, "PNG")) return storedInPng(file);
    if (hasAt(file, 0, "II*")) return storedInTiff(file, ByteOrder::littleEndian);
    if (hasAt(file, 0, {"MM\0*", 4})) return storedInTiff(file, ByteOrder::bigEndian);
    return ColorKind::rgb;
}

ByteView webpChunk(ByteView file, std::string_view name) {
    constexpr std::size_t kHead = 8;
    if (!hasAt(file, 0, "RIFF") || !hasAt(file, 8, "WEBP")) return {};
    for (std::size_t at = 12; at + kHead <= file.size();) {
        const std::size_t length =
            std::min(numberAt(file, at + 4, 4, ByteOrder::littleEndian), file.size() - at - kHead);
        if (hasAt(file, at, name)) return file.subspan(at + kHead, length);
        at += kHead + length + length % 2;
    }
    return {};
}

}  // namespace tkv::desktop
