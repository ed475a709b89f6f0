#include "desktop/pixbuf_readers.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <memory>

#include "desktop/embedded.h"
#include "graphics/codecs/heif_items.h"
#include "graphics/releaser.h"

namespace tkv::desktop {

namespace {

std::int64_t bytesForTiff(ByteView file) {
    const TiffSizes sizes = tiffSizes(file);
    return 4 * pixelsOf(sizes.picture) + sizes.pieceBytes;
}

// YUV and alpha planes, of 16 bits in the worst case, and two RGBA pictures made of them.
std::int64_t bytesForWebp(ByteView file) {
    return 16 * pixelsOf(webpSize(file));
}

std::int64_t bytesForStill(ByteView file) {
    return bytesForHeif(file).value_or(kMostBytes);
}

Bytes profileOfTiff(ByteView file) {
    const ByteView profile = tiffProfile(file);
    return {profile.begin(), profile.end()};
}

Bytes profileOfWebp(ByteView file) {
    const ByteView profile = webpChunk(file, "ICCP");
    return {profile.begin(), profile.end()};
}

Bytes profileOfStill(ByteView file) {
    const HeifColors colors = colorsOfHeif(file);
    if (colors.icc.empty()) return profileOfCodes(colors.codes);
    return {colors.icc.begin(), colors.icc.end()};
}

constexpr std::array<PixbufReader, 9> kReaders{{
    {.name = "png", .parts = drawingParts, .comesRowByRow = true},
    {.name = "gif", .comesRowByRow = true},
    {.name = "bmp", .comesRowByRow = true},
    {.name = "tiff",
     .bytesFor = bytesForTiff,
     .isBounded = hasPictureCompression,
     .profile = profileOfTiff},
    {.name = "webp", .bytesFor = bytesForWebp, .profile = profileOfWebp},
    {.name = "avif", .bytesFor = bytesForStill, .parts = stillParts, .profile = profileOfStill},
    {.name = "heif/avif",
     .bytesFor = bytesForStill,
     .parts = stillParts,
     .profile = profileOfStill},
    {.name = "tga", .comesRowByRow = true},
    {.name = "pnm", .comesRowByRow = true},
}};

// A pattern's mask has a condition for each byte (GdkPixbufModulePattern). One that begins with '*'
// is not anchored at the start.
bool matches(ByteView bytes, std::string_view prefix, std::string_view mask) {
    if (bytes.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        const bool isSame = bytes[i] == static_cast<std::uint8_t>(prefix[i]);
        const char wanted = i < mask.size() ? mask[i] : ' ';
        if ((wanted == ' ' && !isSame) || (wanted == '!' && isSame) ||
            (wanted == 'z' && bytes[i] != 0) || (wanted == 'n' && bytes[i] == 0)) {
            return false;
        }
    }
    return true;
}

bool isIn(ByteView head, const GdkPixbufModulePattern& pattern) {
    const std::string_view mask = pattern.mask != nullptr ? pattern.mask : "";
    const std::string_view prefix = pattern.prefix;
    if (!mask.starts_with('*')) return matches(head, prefix, mask);
    for (std::size_t at = 0; at + prefix.size() <= head.size() + 1; ++at) {
        if (matches(head.subspan(at), prefix.substr(1), mask.substr(1))) return true;
    }
    return false;
}

// Whether the file's first box names one of AVIF's brands. The reader's own pattern also requires a
// certain box length, which few programs write.
bool isAvif(ByteView head) {
    constexpr std::size_t kType = 4, kLength = 8;
    if (head.size() < kType + kLength) return false;
    const ByteView brand = head.subspan(kType, kLength);
    return std::ranges::any_of(std::array{"ftypavif", "ftypavis"}, [&](std::string_view avif) {
        return std::ranges::equal(brand, avif);
    });
}

int relevance(ByteView head, const GdkPixbufFormat& format) {
    int most = std::string_view(format.name) == "avif" && isAvif(head) ? 1 : 0;
    for (const GdkPixbufModulePattern* pattern = format.signature;
         pattern != nullptr && pattern->prefix != nullptr; ++pattern) {
        if (pattern->relevance > most && isIn(head, *pattern)) most = pattern->relevance;
    }
    return most;
}

}  // namespace

const PixbufReader* pixbufReaderFor(ByteView head) {
    const std::unique_ptr<GSList, Releaser<g_slist_free>> formats(gdk_pixbuf_get_formats());
    std::string_view best;
    int most = 0;
    for (const GSList* item = formats.get(); item != nullptr; item = item->next) {
        const auto& format = *static_cast<const GdkPixbufFormat*>(item->data);
        const int found = relevance(head, format);
        if (found <= most) continue;
        most = found;
        best = format.name;
    }
    const auto* const row = std::ranges::find(kReaders, best, &PixbufReader::name);
    return row == kReaders.end() ? nullptr : row;
}

}  // namespace tkv::desktop
