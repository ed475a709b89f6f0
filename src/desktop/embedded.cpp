#include "desktop/embedded.h"

#include <algorithm>
#include <array>

namespace tkv::desktop {

namespace {

enum class ByteOrder { littleEndian, bigEndian };

/// An unsigned integer of that many bytes; 0 where it reaches past the end of the file.
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

/// An image file directory (TIFF 6.0), the first one unless told otherwise.
class TiffDirectory {
  public:
    explicit TiffDirectory(ByteView file, std::size_t offsetAt = 4)
        : file_(file),
          order_(hasAt(file, 0, "MM") ? ByteOrder::bigEndian : ByteOrder::littleEndian),
          begin_(numberAt(file, offsetAt, 4, order_)),
          entries_(begin_ == 0 ? 0 : numberAt(file, begin_, 2, order_)) {}

    /// Without entries where there is none, which its offset 0 says.
    TiffDirectory next() const { return TiffDirectory(file_, begin_ + 2 + entries_ * kEntry); }

    /// The first value of a tag, SHORT or LONG; `missing` where there is none. Of any other type,
    /// which the library would convert, it counts as larger than all that is read.
    std::size_t value(std::size_t tag, std::size_t missing) const {
        constexpr std::size_t kShort = 3, kLong = 4, kTooLarge = std::size_t{1} << 30U;
        const std::size_t at = entry(tag);
        if (at == 0) return missing;
        const std::size_t type = numberAt(file_, at + 2, 2, order_);
        if (type != kShort && type != kLong) return kTooLarge;
        const std::size_t bytes = type == kShort ? 2 : 4;
        return numberAt(file_, place(at, bytes), bytes, order_);
    }

    /// The values of a tag whose type is one byte each; empty where they are not all there.
    ByteView bytes(std::size_t tag) const {
        constexpr std::array<std::size_t, 2> kOneByte{1, 7};  // BYTE, UNDEFINED
        const std::size_t at = entry(tag);
        if (at == 0 || std::ranges::count(kOneByte, numberAt(file_, at + 2, 2, order_)) == 0)
            return {};
        const std::size_t begin = place(at, 1), count = numberAt(file_, at + 4, 4, order_);
        if (begin > file_.size() || count > file_.size() - begin) return {};
        return file_.subspan(begin, count);
    }

  private:
    static constexpr std::size_t kEntry = 12;

    /// Where a tag's entry begins; 0 without one.
    std::size_t entry(std::size_t tag) const {
        for (std::size_t i = 0; i < entries_; ++i) {
            const std::size_t at = begin_ + 2 + i * kEntry;
            if (at >= file_.size()) break;
            if (numberAt(file_, at, 2, order_) == tag) return at;
        }
        return 0;
    }

    /// Where the values of the entry at `at` begin, each of that many bytes. Those of more than
    /// four bytes are stored at an offset.
    std::size_t place(std::size_t at, std::size_t bytes) const {
        const bool isElsewhere = numberAt(file_, at + 4, 4, order_) > 4 / bytes;
        return isElsewhere ? numberAt(file_, at + 8, 4, order_) : at + 8;
    }

    ByteView file_;
    ByteOrder order_;
    std::size_t begin_;
    std::size_t entries_;
};

ColorKind storedInTiff(ByteView file) {
    constexpr std::size_t kPhotometric = 262;
    constexpr std::size_t kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kSeparated = 5;
    const std::size_t value = TiffDirectory(file).value(kPhotometric, kRgb);
    if (value == kWhiteIsZero || value == kBlackIsZero) return ColorKind::grey;
    return value == kSeparated ? ColorKind::inks : ColorKind::rgb;
}

/// Calls `visit` with the FourCC, offset and length of each chunk of a WebP file until it returns
/// false.
template <typename Visit>
void forEachWebpChunk(ByteView file, const Visit& visit) {
    constexpr std::size_t kHead = 8;
    if (!hasAt(file, 0, "RIFF") || !hasAt(file, 8, "WEBP")) return;
    for (std::size_t at = 12; at + kHead <= file.size();) {
        const std::string_view type(reinterpret_cast<const char*>(&file[at]), 4);
        const std::size_t length =
            std::min(numberAt(file, at + 4, 4, ByteOrder::littleEndian), file.size() - at - kHead);
        if (!visit(type, at + kHead, length)) return;
        at += kHead + length + length % 2;
    }
}

/// A width or height as a file states it, saturated above every limit of the decoders.
int sideOf(std::size_t number) {
    return static_cast<int>(std::min<std::size_t>(number, 1U << 30U));
}

}  // namespace

ColorKind storedColors(ByteView file) {
    if (hasAt(file, 1, "PNG")) return storedInPng(file);
    if (hasAt(file, 0, "II*") || hasAt(file, 0, {"MM\0*", 4})) return storedInTiff(file);
    return ColorKind::rgb;
}

ByteView webpChunk(ByteView file, std::string_view name) {
    ByteView content;
    forEachWebpChunk(file, [&](std::string_view type, std::size_t begin, std::size_t length) {
        if (type == name) content = file.subspan(begin, length);
        return type != name;
    });
    return content;
}

Bytes firstOfWebp(ByteView file) {
    constexpr std::size_t kHead = 8;
    std::size_t end = 0;
    int pictures = 0;
    forEachWebpChunk(file, [&](std::string_view type, std::size_t begin, std::size_t length) {
        if (type == "ANMF" && ++pictures == 1)
            end = std::min(begin + length + length % 2, file.size());
        return pictures < 2;
    });
    if (pictures < 2) return {};
    Bytes first(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(end));
    for (std::size_t i = 0; i < 4; ++i)
        first[4 + i] = static_cast<std::uint8_t>((end - kHead) >> (8 * i));
    return first;
}

std::vector<ByteView> drawingParts(ByteView file) {
    constexpr std::size_t kSignature = 8, kHead = 8, kSum = 4;
    constexpr std::string_view kData = "IDAT", kEnd = "IEND";
    std::vector<std::string_view> awaited{"IHDR", "PLTE", "tRNS", "gAMA", "cHRM",
                                          "sRGB", "iCCP", "eXIf", kData,  kEnd};
    std::vector<ByteView> parts{file.first(std::min(file.size(), kSignature))};
    std::string_view before;
    for (ByteView rest = file.subspan(parts[0].size()); rest.size() >= kHead;) {
        const std::size_t length = numberAt(rest, 0, 4, ByteOrder::bigEndian);
        const ByteView chunk = rest.first(std::min(rest.size(), kHead + length + kSum));
        const std::string_view type(reinterpret_cast<const char*>(&rest[4]), 4);
        if (type == kData && before == kData)
            parts.back() = {parts.back().data(), parts.back().size() + chunk.size()};
        else if (std::erase(awaited, type) > 0)
            parts.push_back(chunk);
        if (type == kEnd) break;
        before = type;
        rest = rest.subspan(chunk.size());
    }
    return parts;
}

TiffSizes tiffSizes(ByteView file) {
    constexpr std::size_t kWidth = 256, kHeight = 257, kBits = 258, kSamples = 277;
    constexpr std::size_t kStripRows = 278, kTileWidth = 322, kTileHeight = 323;
    const TiffDirectory directory(file);
    const std::size_t width = directory.value(kWidth, 0), height = directory.value(kHeight, 0);
    const std::size_t across = directory.value(kTileWidth, width);
    const std::size_t down =
        directory.value(kTileHeight, std::min(directory.value(kStripRows, height), height));
    const std::size_t bits = directory.value(kBits, 1) * directory.value(kSamples, 1);
    constexpr double kMost = 1e15;
    const double piece =
        static_cast<double>(across) * static_cast<double>(down) * static_cast<double>(bits) / 8;
    return {{sideOf(width), sideOf(height)}, static_cast<std::int64_t>(std::min(piece, kMost))};
}

ByteView tiffProfile(ByteView file) {
    constexpr std::size_t kProfile = 34675;
    return TiffDirectory(file).bytes(kProfile);
}

bool hasPictureCompression(ByteView file) {
    constexpr std::size_t kCompression = 259, kNone = 1, kOldJpeg = 6;
    constexpr std::array<std::size_t, 9> kPictures{kNone, 2, 3, 4, 5, 7, 8, 32773, 32946};
    const TiffDirectory first(file);
    const std::size_t second = first.next().value(kCompression, kNone);
    const auto isOne = [&](std::size_t value) { return std::ranges::count(kPictures, value) > 0; };
    // The second directory is read, but not its picture, which is an old JPEG where it is the
    // thumbnail of a camera.
    return isOne(first.value(kCompression, kNone)) && (isOne(second) || second == kOldJpeg);
}

PixelSize webpSize(ByteView file) {
    const auto number = [&](std::size_t at, std::size_t bytes) {
        return numberAt(file, at, bytes, ByteOrder::littleEndian);
    };
    constexpr std::size_t kFirst = 12, kContent = 20, kSide = 0x3FFF;
    if (hasAt(file, kFirst, "VP8X")) {
        return {sideOf(number(kContent + 4, 3) + 1), sideOf(number(kContent + 7, 3) + 1)};
    }
    if (hasAt(file, kFirst, "VP8L")) {
        const std::size_t bits = number(kContent + 1, 4);
        return {sideOf((bits & kSide) + 1), sideOf((bits >> 14U & kSide) + 1)};
    }
    if (!hasAt(file, kFirst, "VP8 ")) return {};
    return {sideOf(number(kContent + 6, 2) & kSide), sideOf(number(kContent + 8, 2) & kSide)};
}

}  // namespace tkv::desktop
