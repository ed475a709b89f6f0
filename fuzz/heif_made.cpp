#include "made.h"

// HEIF and AVIF files of up to eight items, which refer to any of them, themselves included. The
// recipe begins with the configuration of coded pictures and their data, which need not have the
// size that an item states.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::string_view kTypes[] = {"hvc1", "av01", "grid", "iden", "iovl", "Exif", "mime"};
constexpr std::string_view kReferences[] = {"dimg", "auxl", "thmb", "cdsc"};
constexpr std::string_view kProperties[] = {"irot", "imir", "clap", "pixi", "colr",
                                            "auxC", "ispe", "hvcC", "av1C"};

Bytes box(std::string_view type, const Bytes& content) {
    Bytes bytes;
    put(bytes, 8 + content.size(), 4);
    put(bytes, type);
    put(bytes, content);
    return bytes;
}

Bytes literal(Input& recipe) {
    Bytes bytes(recipe.byte());
    for (std::uint8_t& byte : bytes)
        byte = recipe.byte();
    return bytes;
}

}  // namespace

Bytes tkv::fuzz::fileFrom(ByteView input) {
    Input recipe(input.data(), input.size());
    const Bytes configuration = literal(recipe), coded = literal(recipe);
    const std::size_t count = 1 + recipe.below(8), primary = 1 + recipe.below(9);
    const bool isAvif = recipe.flag();
    Bytes infos(4), places{1, 0, 0, 0, 0x44, 0}, lists(4), properties, inside;
    Bytes associations{0, 0, 0, 1}, first(4);
    put(first, primary, 2);
    put(infos, count, 2);
    put(places, count, 2);
    put(associations, count, 4);
    std::size_t propertyCount = 0;
    for (std::size_t id = 1; id <= count; ++id) {
        const std::string_view type = oneOf(recipe, kTypes);
        const std::size_t flags = recipe.byte();
        const std::uint64_t width = power(recipe, 15), height = power(recipe, 15);
        const std::uint64_t rows = power(recipe, 8), columns = power(recipe, 8);
        std::size_t own = propertyCount;
        const auto addProperty = [&](std::string_view name, const Bytes& content) {
            put(properties, box(name, content));
            ++propertyCount;
        };
        // To one item, as often as told, and then to another once.
        const auto addReferences = [&](std::string_view name, std::uint64_t times) {
            const std::size_t to = 1 + recipe.below(9), last = 1 + recipe.below(9);
            Bytes list;
            put(list, id << 16U | (times & 0xFFFFU), 4);
            for (std::uint64_t i = 0; i < (times & 0xFFFFU); ++i)
                put(list, i + 1 < times ? to : last, 2);
            put(lists, box(name, list));
        };
        Bytes stated(4), data;
        put(stated, width << 32U | height, 8);
        addProperty("ispe", stated);
        if (type == "hvc1" || type == "av01") {
            addProperty(type == "hvc1" ? "hvcC" : "av1C", configuration);
            for (std::uint64_t i = 0; i < std::min<std::uint64_t>(rows * columns, 8192); ++i)
                put(data, coded);
        } else if (type == "grid" || type == "iovl") {
            // A canvas: the tiles' numbers, or the colour of the background, and the size.
            put(data, ((rows - 1) & 0xFFU) << 8U | ((columns - 1) & 0xFFU), 4);
            if (type == "iovl") put(data, 0, 6);
            put(data, width << 16U | height, 4);
            if (type == "iovl") fill(data, 8 * rows * columns);
            addReferences("dimg", rows * columns);
            addProperty("pixi", Bytes{0, 0, 0, 0, 3, 8, 8, 8});
        } else {
            data = payload(recipe);
        }
        for (std::size_t left = recipe.below(4); left > 0; --left) {
            const std::string_view name = oneOf(recipe, kProperties);
            Bytes content(4);
            if (name == "auxC") put(content, "urn:mpeg:hevc:2015:auxid:1\0"sv);
            put(content, name == "pixi" ? Bytes{3, 8, 8, 8} : payload(recipe));
            for (std::uint64_t i = power(recipe, 6); i > 0; --i)
                addProperty(name, content);
        }
        for (std::size_t left = recipe.below(3); left > 0; --left) {
            const std::string_view name = oneOf(recipe, kReferences);
            addReferences(name, power(recipe, 14));
        }
        Bytes info{2, 0, 0, 0};
        put(info, id << 16U, 4);
        put(info, type);
        put(info, type == "mime" ? "\0a/b\0deflate\0"sv : "\0"sv);
        put(infos, box("infe", info));
        const std::uint64_t extents = std::uint64_t{1} << (flags % 8);
        const bool isInside = flags < 128;
        put(places, id << 48U | (isInside ? 1ULL << 32U : 0) | extents, 8);
        for (std::uint64_t i = 0; i < extents; ++i)
            put(places, (inside.size() + (isInside ? 0 : 8)) << 32U | data.size(), 8);
        put(inside, data);
        put(associations, id << 8U | (propertyCount - own), 3);
        while (own < propertyCount)
            put(associations, ++own, 2);
    }
    put(properties = box("ipco", properties), box("ipma", associations));
    Bytes file, brands, meta(4), handler(8);
    put(brands, isAvif ? "avif\0\0\0\0mif1"sv : "heic\0\0\0\0mif1"sv);
    put(handler, "pict\0\0\0\0\0\0\0\0\0\0\0\0\0"sv);
    for (const Bytes& part :
         {box("hdlr", handler), box("pitm", first), box("iloc", places), box("iinf", infos),
          box("iref", lists), box("iprp", properties), box("idat", inside)})
        put(meta, part);
    put(file, box("ftyp", brands));
    put(file, box("meta", meta));
    return file;
}
