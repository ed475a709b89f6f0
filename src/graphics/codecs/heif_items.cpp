#include "graphics/codecs/heif_items.h"

#include <algorithm>
#include <array>
#include <map>

#include "graphics/codecs/coded_stream.h"
#include "graphics/codecs/iso_boxes.h"

namespace tkv {

namespace {

/// What no ordinary file has more of: items referred to, and bytes in the box that describes the
/// items, profile included.
constexpr std::size_t kMostReferences = 8192, kMostMetaBytes = 8U << 20U;
constexpr std::uint64_t kMostExtents = 32;
/// As many tiles of 512 x 512 pixels as the largest picture has.
constexpr std::size_t kMostTiles = 256;
/// A picture, its alpha plane, a tile of that, the alpha plane of the tile.
constexpr int kDeepest = 3;
/// The pixels that all passes of decoders go over, which takes some seconds; and the bytes that the
/// decoded items have more than the file, where tiles share them.
constexpr std::int64_t kMostPasses = 320'000'000;
constexpr std::size_t kMostShared = 16U << 20U;
/// Larger than anything that is read; sums of them do not overflow.
constexpr std::int64_t kTooMany = std::int64_t{1} << 40U;

struct Extent {
    bool isInside = false;  ///< in the "idat" box
    std::uint64_t begin, length;
};

struct Item {
    BoxType type;
    std::vector<Extent> extents{};
    std::vector<IsoBox> properties{};
    std::vector<std::uint32_t> tiles{}, auxiliaries{};
};

class Items {
  public:
    /// Whether the file describes its items in the one way that all readers understand alike.
    bool read(ByteView file);
    std::optional<std::int64_t> primaryPixels() { return pixelsOf(primary_, 0); }
    std::int64_t itemBytes() const;
    HeifColors colors() const;

  private:
    bool readItems(ByteView box);
    bool readPlaces(ByteView box);
    bool readReferences(ByteView box);
    bool readProperties(ByteView box);
    bool readAssociations(ByteView box, const std::vector<IsoBox>& properties);

    std::optional<std::int64_t> pixelsOf(std::uint32_t id, int depth);
    std::optional<std::int64_t> pixelsOfGrid(const Item& item, int depth);
    std::optional<Bytes> dataOf(const Item& item);

    ByteView file_, inside_;
    std::map<std::uint32_t, Item> items_;
    std::uint32_t primary_ = 0;
    std::size_t visits_ = 0, dataBytes_ = 0;
    std::int64_t passes_ = 0;
};

bool Items::read(ByteView file) {
    file_ = file;
    std::size_t end = 0;
    const std::vector<IsoBox> boxes = boxesIn(file, end);
    const auto isMeta = [](const IsoBox& box) { return box.type == "meta"; };
    if (boxes.size() > kMostBoxes || std::ranges::count_if(boxes, isMeta) != 1) return false;
    const ByteView meta = std::ranges::find_if(boxes, isMeta)->content;
    if (meta.size() < 4 || meta.size() > kMostMetaBytes) return false;
    constexpr std::array<BoxType, 6> kRead{"pitm", "iinf", "iloc", "iref", "iprp", "idat"};
    std::map<BoxType, ByteView> parts;
    for (const IsoBox& box : boxesIn(meta.subspan(4))) {
        // Readers take the first of a type, or the last.
        if (std::ranges::count(kRead, box.type) > 0 && !parts.emplace(box.type, box.content).second)
            return false;
    }
    inside_ = parts["idat"];
    BoxReader primary(parts["pitm"]);
    primary_ = static_cast<std::uint32_t>(primary.number(primary.number(4) >> 24U == 0 ? 2 : 4));
    return readItems(parts["iinf"]) && readPlaces(parts["iloc"]) && readReferences(parts["iref"]) &&
           readProperties(parts["iprp"]);
}

bool Items::readItems(ByteView box) {
    BoxReader reader(box);
    reader.number(reader.number(4) >> 24U == 0 ? 2 : 4);
    for (const IsoBox& entry : boxesIn(reader.rest())) {
        BoxReader info(entry.content);
        const std::uint64_t version = info.number(4) >> 24U;
        if (entry.type != "infe" || version < 2) return false;
        const auto id = static_cast<std::uint32_t>(info.number(version == 2 ? 2 : 4));
        info.number(2);
        Item item{.type = info.type()};
        info.text();
        if (item.type == "mime") {
            // The library unpacks what is compressed without an end where it is damaged.
            info.text();
            if (info.text() > 0) return false;
        }
        if (!info.isSound() || !items_.emplace(id, item).second) return false;
    }
    return !items_.empty();
}

bool Items::readPlaces(ByteView box) {
    BoxReader reader(box);
    const std::uint64_t version = reader.number(4) >> 24U;
    const std::uint64_t sizes = reader.number(2), count = reader.number(version < 2 ? 2 : 4);
    const auto size = [&](unsigned shift) {
        return static_cast<std::size_t>(sizes >> shift & 15U);
    };
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        if (size(shift) > 8) return false;
    }
    for (std::uint64_t i = 0; i < count && reader.isSound(); ++i) {
        const auto id = static_cast<std::uint32_t>(reader.number(version < 2 ? 2 : 4));
        const std::uint64_t method = version == 0 ? 0 : reader.number(2) & 15U;
        reader.number(2);
        const std::uint64_t base = reader.number(size(4)), extents = reader.number(2);
        const auto item = items_.find(id);
        if (method > 1 || extents > kMostExtents) return false;
        if (item != items_.end() && !item->second.extents.empty()) return false;
        for (std::uint64_t j = 0; j < extents && reader.isSound(); ++j) {
            if (version > 0) reader.number(size(0));
            const std::uint64_t begin = base + reader.number(size(12));
            const std::uint64_t length = reader.number(size(8));
            if (item != items_.end()) item->second.extents.push_back({method == 1, begin, length});
        }
    }
    return reader.isSound();
}

bool Items::readReferences(ByteView box) {
    if (box.empty()) return true;
    BoxReader reader(box);
    const std::size_t bytes = reader.number(4) >> 24U == 0 ? 2 : 4;
    std::size_t all = 0;
    for (const IsoBox& entry : boxesIn(reader.rest())) {
        BoxReader references(entry.content);
        const auto from = static_cast<std::uint32_t>(references.number(bytes));
        const std::uint64_t count = references.number(2);
        all += count;
        if (all > kMostReferences) return false;
        const auto item = items_.find(from);
        if (entry.type == "dimg" && item != items_.end() && !item->second.tiles.empty())
            return false;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto to = static_cast<std::uint32_t>(references.number(bytes));
            if (entry.type == "dimg" && item != items_.end()) item->second.tiles.push_back(to);
            const auto master = items_.find(to);
            if (entry.type == "auxl" && master != items_.end())
                master->second.auxiliaries.push_back(from);
        }
        if (!references.isSound()) return false;
    }
    return true;
}

bool Items::readProperties(ByteView box) {
    const std::vector<IsoBox> boxes = boxesIn(box);
    if (boxes.empty() || boxes[0].type != "ipco") return false;
    const std::vector<IsoBox> properties = boxesIn(boxes[0].content);
    return std::all_of(boxes.begin() + 1, boxes.end(), [&](const IsoBox& associations) {
        return associations.type == "ipma" && readAssociations(associations.content, properties);
    });
}

bool Items::readAssociations(ByteView box, const std::vector<IsoBox>& properties) {
    BoxReader reader(box);
    const std::uint64_t version = reader.number(4);
    const std::size_t idBytes = version >> 24U == 0 ? 2 : 4, bytes = (version & 1U) == 0 ? 1 : 2;
    const std::uint64_t indices = bytes == 1 ? 0x7F : 0x7FFF;
    const std::uint64_t count = reader.number(4);
    for (std::uint64_t i = 0; i < count && reader.isSound(); ++i) {
        const auto item = items_.find(static_cast<std::uint32_t>(reader.number(idBytes)));
        if (item != items_.end() && !item->second.properties.empty()) return false;
        const std::uint64_t associated = reader.number(1);
        for (std::uint64_t j = 0; j < associated; ++j) {
            const auto index = static_cast<std::size_t>(reader.number(bytes) & indices);
            if (index > properties.size()) return false;
            if (item != items_.end() && index > 0)
                item->second.properties.push_back(properties[index - 1]);
        }
    }
    return reader.isSound();
}

/// Null unless it has exactly one.
const IsoBox* propertyOf(const Item& item, BoxType type) {
    const auto box = std::ranges::find(item.properties, type, &IsoBox::type);
    return std::ranges::count(item.properties, type, &IsoBox::type) == 1 ? &*box : nullptr;
}

/// The number of pixels, saturated.
std::int64_t area(std::uint64_t width, std::uint64_t height) {
    constexpr std::uint64_t kSide = 1U << 20U;
    return static_cast<std::int64_t>(std::min(width, kSide) * std::min(height, kSide));
}

std::optional<Bytes> Items::dataOf(const Item& item) {
    Bytes data;
    for (const Extent& extent : item.extents) {
        const ByteView from = extent.isInside ? inside_ : file_;
        if (extent.begin > from.size() || extent.length > from.size() - extent.begin)
            return std::nullopt;
        dataBytes_ += static_cast<std::size_t>(extent.length);
        if (dataBytes_ > file_.size() + kMostShared) return std::nullopt;
        const ByteView part = from.subspan(static_cast<std::size_t>(extent.begin),
                                           static_cast<std::size_t>(extent.length));
        data.insert(data.end(), part.begin(), part.end());
    }
    return data;
}

std::optional<std::int64_t> Items::pixelsOf(std::uint32_t id, int depth) {
    const auto found = items_.find(id);
    if (found == items_.end() || depth > kDeepest || ++visits_ > kMostReferences)
        return std::nullopt;
    const Item& item = found->second;
    // The library turns the picture as often as it is told to.
    for (const BoxType turn : {"irot", "imir", "clap"}) {
        if (std::ranges::count(item.properties, turn, &IsoBox::type) > 1) return std::nullopt;
    }
    const IsoBox* const extents = propertyOf(item, "ispe");
    if (extents == nullptr) return std::nullopt;
    BoxReader stated(extents->content);
    stated.number(4);
    const std::uint64_t width = stated.number(4);
    std::int64_t most = area(width, stated.number(4));

    const bool isHevc = item.type == "hvc1";
    if (isHevc || item.type == "av01") {
        const IsoBox* const configuration = propertyOf(item, isHevc ? "hvcC" : "av1C");
        const std::optional<Bytes> data = dataOf(item);
        if (configuration == nullptr || !data) return std::nullopt;
        const CodedStream stream = (isHevc ? hevcStream : av1Stream)(configuration->content, *data);
        const auto [across, down] = stream.largest;
        if (!stream.isWhole || across < 1 || down < 1) return std::nullopt;
        most = std::max(most,
                        area(static_cast<std::uint64_t>(across), static_cast<std::uint64_t>(down)));
        passes_ += stream.passes * most;
        if (passes_ > kMostPasses) return std::nullopt;
    } else if (item.type == "grid") {
        const std::optional<std::int64_t> tiles = pixelsOfGrid(item, depth);
        if (!tiles) return std::nullopt;
        most = std::max(most, *tiles);
    } else {
        return std::nullopt;
    }
    for (const std::uint32_t auxiliary : item.auxiliaries) {
        const std::optional<std::int64_t> pixels = pixelsOf(auxiliary, depth + 1);
        if (!pixels) return std::nullopt;
        most = std::max(most, *pixels);
    }
    return most;
}

/// Of all tiles together, or of the canvas where that is more.
std::optional<std::int64_t> Items::pixelsOfGrid(const Item& item, int depth) {
    const std::optional<Bytes> data = dataOf(item);
    if (!data) return std::nullopt;
    BoxReader reader(*data);
    const std::size_t bytes = (reader.number(2) & 1U) == 0 ? 2 : 4;
    const std::uint64_t rows = reader.number(1) + 1, columns = reader.number(1) + 1;
    const std::uint64_t width = reader.number(bytes), height = reader.number(bytes);
    if (!reader.isSound() || item.tiles.size() != rows * columns || item.tiles.size() > kMostTiles)
        return std::nullopt;
    std::int64_t all = 0;
    for (const std::uint32_t tile : item.tiles) {
        const auto found = items_.find(tile);
        if (found == items_.end() || found->second.type == "grid") return std::nullopt;
        const std::optional<std::int64_t> pixels = pixelsOf(tile, depth + 1);
        if (!pixels) return std::nullopt;
        all += *pixels;
    }
    return std::max(all, area(width, height));
}

std::int64_t Items::itemBytes() const {
    std::int64_t all = 0;
    for (const auto& [id, item] : items_) {
        for (const Extent& extent : item.extents) {
            all += static_cast<std::int64_t>(std::min<std::uint64_t>(extent.length, 1U << 30U));
        }
    }
    return all;
}

/// False where the item states none.
bool readColors(const Item& item, HeifColors& colors) {
    bool isFound = false;
    for (const IsoBox& box : item.properties) {
        if (box.type != "colr") continue;
        BoxReader reader(box.content);
        const BoxType kind = reader.type();
        if (kind == "nclx") {
            colors.codes.primaries = static_cast<int>(reader.number(2));
            colors.codes.transfer = static_cast<int>(reader.number(2));
        } else {  // "prof", or "rICC" where it is of a restricted kind.
            colors.icc = reader.rest();
        }
        isFound = true;
    }
    return isFound;
}

HeifColors Items::colors() const {
    HeifColors colors;
    const auto primary = items_.find(primary_);
    if (primary == items_.end() || readColors(primary->second, colors)) return colors;
    if (primary->second.tiles.empty()) return colors;
    const auto tile = items_.find(primary->second.tiles[0]);
    if (tile != items_.end()) readColors(tile->second, colors);
    return colors;
}

/// The content of the first box of that type.
ByteView contentOf(const std::vector<IsoBox>& boxes, BoxType type) {
    const auto box = std::ranges::find(boxes, type, &IsoBox::type);
    return box == boxes.end() ? ByteView{} : box->content;
}

/// The boxes of a "meta" box that hold ICC profiles.
std::vector<IsoBox> profilesIn(ByteView meta) {
    if (meta.size() < 4) return {};
    const ByteView properties = contentOf(boxesIn(meta.subspan(4)), "iprp");
    std::vector<IsoBox> boxes = boxesIn(contentOf(boxesIn(properties), "ipco"));
    std::erase_if(boxes, [](const IsoBox& box) {
        return box.type != "colr" || BoxReader(box.content).type() == "nclx";
    });
    return boxes;
}

}  // namespace

HeifColors colorsOfHeif(ByteView file) {
    Items items;
    return items.read(file) ? items.colors() : HeifColors{};
}

std::optional<std::int64_t> bytesForHeif(ByteView file) {
    // YUV and alpha planes, of 16 bits in the worst case, and two RGBA pictures made of them.
    constexpr std::int64_t kPixel = 16;
    Items items;
    if (!items.read(file)) return std::nullopt;
    const std::optional<std::int64_t> pixels = items.primaryPixels();
    if (!pixels) return std::nullopt;
    // The library copies the data of each item.
    return kPixel * std::min(*pixels, kTooMany) + std::min(items.itemBytes(), kTooMany);
}

std::vector<ByteView> stillParts(ByteView file) {
    static constexpr std::array<std::uint8_t, 4> kFree{'f', 'r', 'e', 'e'},
        kStill{'a', 'v', 'i', 'f'};
    constexpr std::array<BoxType, 4> kRead{"ftyp", "meta", "mdat", "free"};
    std::vector<ByteView> parts;
    std::size_t done = 0, end = 0;
    const auto replace = [&](const std::uint8_t* at, ByteView by) {
        const auto begin = static_cast<std::size_t>(at - file.data());
        parts.insert(parts.end(), {file.subspan(done, begin - done), by});
        done = begin + by.size();
    };
    const auto typeOf = [](const IsoBox& box) {
        return reinterpret_cast<const std::uint8_t*>(box.type.data());
    };
    for (const IsoBox& box : boxesIn(file, end)) {
        if (std::ranges::count(kRead, box.type) == 0) replace(typeOf(box), kFree);
        if (box.type == "meta") {
            for (const IsoBox& profile : profilesIn(box.content))
                replace(typeOf(profile), kFree);
        }
        if (box.type != "ftyp") continue;
        // The brand of sequences, also among those that the file is compatible with.
        for (BoxReader brands(box.content); brands.rest().size() >= 4;) {
            const ByteView brand = brands.rest().first(4);
            if (brands.type() == "avis") replace(brand.data(), kStill);
        }
    }
    parts.push_back(file.subspan(done, end - done));
    return parts;
}

}  // namespace tkv
