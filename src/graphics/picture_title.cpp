#include "graphics/picture_title.h"

#include <fmt/format.h>
#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>

#include "graphics/releaser.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv {

namespace {

// Bytes of a packet of XMP, and of EXIF data, that are looked at.
constexpr std::size_t kMostXmp = 256 << 10;
constexpr std::size_t kMostExif = 64 << 10;
// Characters that anybody reads on a picture.
constexpr std::size_t kMostCharacters = 160;

std::string_view between(std::string_view text, std::string_view begin, std::string_view end) {
    const std::size_t from = text.find(begin);
    if (from == std::string_view::npos) return {};
    text.remove_prefix(from + begin.size());
    const std::size_t until = text.find(end);
    return until == std::string_view::npos ? std::string_view() : text.substr(0, until);
}

// The text of XML, in which five characters have names.
std::string plain(std::string_view xml) {
    struct Entity {
        std::string_view name;
        char character;
    };
    constexpr std::array kEntities{Entity{"&amp;", '&'}, Entity{"&lt;", '<'}, Entity{"&gt;", '>'},
                                   Entity{"&quot;", '"'}, Entity{"&apos;", '\''}};
    std::string text;
    while (!xml.empty()) {
        const auto* const entity = std::ranges::find_if(
            kEntities, [&](const Entity& each) { return xml.starts_with(each.name); });
        const bool isNamed = entity != kEntities.end();
        text += isNamed ? entity->character : xml.front();
        xml.remove_prefix(isNamed ? entity->name.size() : 1);
    }
    return text;
}

// A property of XMP: the first of its alternatives in several languages.
std::string propertyOfXmp(std::string_view file, std::string_view name) {
    const std::size_t begin = file.find("<x:xmpmeta");
    if (begin == std::string_view::npos) return {};
    const std::string_view packet = file.substr(begin, kMostXmp);
    const std::string_view property =
        between(packet, fmt::format("<{}>", name), fmt::format("</{}>", name));
    const std::string_view item = between(property, "<rdf:li", "</rdf:li>");
    const std::size_t text = item.find('>');
    return text == std::string_view::npos ? "" : plain(item.substr(text + 1));
}

std::string titleOfXmp(std::string_view file) {
    return propertyOfXmp(file, "dc:title");
}

std::string descriptionOfXmp(std::string_view file) {
    return propertyOfXmp(file, "dc:description");
}

// The object's name in a record of IPTC: marked by 28, the record's number and the field's, and its
// length.
std::string titleOfIptc(std::string_view file) {
    const std::size_t begin = file.find("Photoshop 3.0");
    if (begin == std::string_view::npos) return {};
    std::string_view rest = file.substr(begin, kMostExif);
    constexpr std::string_view kResource{"8BIM\x04\x04", 6};
    const std::size_t resource = rest.find(kResource);
    if (resource == std::string_view::npos) return {};
    rest.remove_prefix(resource + kResource.size());
    std::size_t at = rest.find('\x1C');
    while (at != std::string_view::npos && rest.size() - at > 5 && rest[at] == '\x1C') {
        const auto byte = [&](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(rest[at + i]));
        };
        const std::size_t length = byte(3) << 8U | byte(4);
        if (length > rest.size() - at - 5) break;
        if (byte(1) == 2 && byte(2) == 5) return std::string(rest.substr(at + 5, length));
        at += 5 + length;
        if (at >= rest.size()) break;
    }
    return {};
}

// The bytes of a field of EXIF, without what fills it up.
std::string fieldOf(const ExifData& data, ExifTag tag) {
    const ExifEntry* const entry = exif_content_get_entry(data.ifd[EXIF_IFD_0], tag);
    if (entry == nullptr || entry->data == nullptr) return {};
    return {reinterpret_cast<const char*>(entry->data), entry->size};
}

// Of UTF-16 with its low bytes first; characters beyond two bytes are left out.
std::string utf8Of(const std::string& wide) {
    std::string text;
    for (std::size_t i = 0; i + 1 < wide.size(); i += 2) {
        const auto byte = [&](std::size_t at) {
            return static_cast<unsigned>(static_cast<unsigned char>(wide[at]));
        };
        const unsigned code = byte(i) | byte(i + 1) << 8U;
        if (code == 0) break;
        const auto add = [&](unsigned bits) { text += static_cast<char>(bits); };
        if (code < 0x80) {
            add(code);
        } else if (code < 0x800) {
            add(0xC0U | code >> 6U);
            add(0x80U | (code & 0x3FU));
        } else if (code < 0xD800 || code >= 0xE000) {
            add(0xE0U | code >> 12U);
            add(0x80U | (code >> 6U & 0x3FU));
            add(0x80U | (code & 0x3FU));
        }
    }
    return text;
}

// What older programs write is Latin-1.
std::string utf8OfBytes(const std::string& bytes) {
    std::string text = bytes.substr(0, bytes.find('\0'));
    if (isUtf8(text)) return text;
    std::string wide;
    for (const char byte : text) {
        wide += byte;
        wide += '\0';
    }
    return utf8Of(wide);
}

// EXIF data begin as a TIFF file does, a little behind their mark: "Exif" in JPEG and HEIF, "eXIf"
// in PNG, "EXIF" in WebP.
std::string_view exifIn(std::string_view file) {
    constexpr std::size_t kNear = 10;
    for (const std::string_view begin : {std::string_view("II*\0", 4), {"MM\0*", 4}}) {
        for (std::size_t at = file.find(begin); at != std::string_view::npos;
             at = file.find(begin, at + 1)) {
            const std::size_t mark = at - std::min(at, kNear);
            if (asciiLowered(file.substr(mark, at - mark)).find("exif") != std::string::npos)
                return file.substr(at, kMostExif);
        }
    }
    return {};
}

std::string titleOfExif(std::string_view file) {
    const std::string_view exif = exifIn(file);
    if (exif.empty()) return {};
    const std::string bytes = std::string("Exif\0\0", 6).append(exif);  // as in a JPEG
    const std::unique_ptr<ExifData, Releaser<exif_data_unref>> data(exif_data_new_from_data(
        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())));
    if (!data) return {};
    const std::string title = utf8Of(fieldOf(*data, EXIF_TAG_XP_TITLE));
    return title.empty() ? utf8OfBytes(fieldOf(*data, EXIF_TAG_IMAGE_DESCRIPTION)) : title;
}

// In one line, without blanks at its ends.
std::string tidied(const std::string& title) {
    std::string text;
    for (const char byte : validUtf8(title)) {
        const bool isBlank = static_cast<unsigned char>(byte) <= ' ' || byte == '\x7F';
        if (!isBlank) {
            text += byte;
        } else if (!text.empty() && text.back() != ' ') {
            text += ' ';
        }
    }
    if (text.ends_with(' ')) text.pop_back();
    return std::string(firstCharacters(text, kMostCharacters));
}

}  // namespace

bool isCameraTitle(const std::string& title) {
    // Cameras', telephones' and programs' own, as they have been seen in pictures.
    constexpr std::array<std::string_view, 22> kOwn{
        "default", "dav",   "hdr",  "hdrpl", "mde",  "cof", "sdr",   "edf",
        "bty",     "rhdr",  "ptr",  "burst", "sony", "jpg", "image", "untitled",
        "none",    "title", "vhdr", "tsmf",  "rpt",  "nor"};
    constexpr std::array<std::string_view, 12> kMarks{"digital camera",
                                                      "digital stillcamera",
                                                      "digital still camera",
                                                      "sony dsc",
                                                      "minolta dsc",
                                                      "exif_jpeg",
                                                      "exif jpeg",
                                                      "samsung camera",
                                                      "camera pictures",
                                                      "dcim\\",
                                                      "kenox",
                                                      "processed with"};
    const std::string lowered = asciiLowered(title);
    const auto isWord = [](unsigned char c) { return c >= 0x80 || std::isalnum(c) != 0; };
    const auto isIn = [&](std::string_view mark) {
        return lowered.find(mark) != std::string::npos;
    };
    return std::ranges::none_of(title, isWord) || std::ranges::count(kOwn, lowered) > 0 ||
           std::ranges::any_of(kMarks, isIn);
}

std::string titleOfPicture(std::span<const std::uint8_t> file) {
    const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
    for (const auto& titleIn : {titleOfXmp, titleOfIptc, titleOfExif, descriptionOfXmp}) {
        std::string title = tidied(titleIn(bytes));
        if (!isCameraTitle(title)) return title;
    }
    return {};
}

}  // namespace tkv
