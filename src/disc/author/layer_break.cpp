#include "disc/author/layer_break.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "disc/author/authoring.h"
#include "disc/run/environment.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace {

// Of an error correction block, in sectors.
constexpr std::int64_t kBlock = 16;

constexpr std::int64_t wholeBlocks(std::int64_t sectors) {
    return (sectors + kBlock - 1) / kBlock * kBlock;
}

// A table of the disc, "VTS_01_0", and its backup. Numbers are stored with their high byte first.
class Table {
  public:
    Table(const std::string& disc, const std::string& name)
        : path_(fmt::format("{}/VIDEO_TS/{}", disc, name)), bytes_(readText(path_ + ".IFO")) {}

    std::size_t byte(std::size_t at) const {
        if (at >= bytes_.size()) throw DiscError(path_ + ".IFO is too short.", path_ + ".IFO");
        return static_cast<unsigned char>(bytes_[at]);
    }
    std::size_t half(std::size_t at) const { return byte(at) << 8U | byte(at + 1); }
    std::size_t word(std::size_t at) const { return half(at) << 16U | half(at + 2); }

    void clear(std::size_t at, unsigned bits) {
        bytes_[at] = static_cast<char>(byte(at) & ~std::size_t{bits});
    }

    /// Adds empty sectors at its end.
    void lengthen(std::size_t sectors) { bytes_.resize(bytes_.size() + sectors * 2048); }

    void add(std::size_t at, std::size_t sectors) {
        const std::size_t sum = word(at) + sectors;
        for (const unsigned i : {0U, 1U, 2U, 3U})
            bytes_[at + i] = static_cast<char>(sum >> (24 - 8 * i) & 255U);
    }

    void save() const {
        writeText(path_ + ".IFO", bytes_);
        writeText(path_ + ".BUP", bytes_);
    }

  private:
    std::string path_;
    std::string bytes_;
};

// Where things stand in the tables, in bytes, as libdvdread's headers name them.
constexpr std::size_t kLastSector = 0x0C;       // vts_last_sector
constexpr std::size_t kLastTableSector = 0x1C;  // vtsi_last_sector
constexpr std::size_t kMenuVobs = 0xC0;         // vtsm_vobs, in sectors
constexpr std::size_t kTitleTable = 0xC4;       // tt_srpt, in sectors
constexpr std::size_t kTitleVobs = 0xC4;        // vtstt_vobs, in sectors
constexpr std::size_t kProgramChains = 0xCC;    // vts_pgcit, in sectors
constexpr std::size_t kTitleBytes = 12;         // of an entry of the title table
constexpr std::size_t kCellBytes = 24;          // of an entry of the cells' table
constexpr unsigned kSeamless = 0x08;            // in a cell's first byte

std::size_t titleEntry(const Table& disc, std::size_t title) {
    return disc.word(kTitleTable) * 2048 + 8 + title * kTitleBytes;
}

Table titleSetOf(const Table& disc, std::size_t title, const std::string& folder) {
    return {folder, fmt::format("VTS_{:02}_0", disc.byte(titleEntry(disc, title) + 6))};
}

// The beginning of a chapter.
struct Place {
    std::size_t title = 0;    // from 0
    std::size_t cell = 0;     // where its entry stands in the table of the title set
    std::int64_t sector = 0;  // of the image
};

// `image`: the sector at which the disc's first table stands.
std::vector<Place> chaptersOf(const std::string& folder, std::int64_t image) {
    const Table disc(folder, "VIDEO_TS");
    std::vector<Place> places;
    const std::size_t titles = disc.half(disc.word(kTitleTable) * 2048);
    for (std::size_t title = 0; title < titles; ++title) {
        const Table set = titleSetOf(disc, title, folder);
        const std::size_t chains = set.word(kProgramChains) * 2048;
        const std::size_t chain = chains + set.word(chains + 12);
        const std::size_t programs = set.byte(chain + 2);
        const std::size_t firstCells = chain + set.half(chain + 0xE6);
        const std::size_t cells = chain + set.half(chain + 0xE8);
        const std::size_t vobs = disc.word(titleEntry(disc, title) + 8) + set.word(kTitleVobs);
        for (std::size_t i = 0; i < programs; ++i) {
            const std::size_t cell = cells + (set.byte(firstCells + i) - 1) * kCellBytes;
            places.push_back(
                {title, cell, image + static_cast<std::int64_t>(vobs + set.word(cell + 8))});
        }
    }
    return places;
}

// How genisoimage lays out the disc: sectors of the image, and the one of the first table.
struct Layout {
    std::int64_t sectors = 0;
    std::int64_t firstTable = 0;
};

Layout layoutOf(const std::string& folder, const Workshop& workshop) {
    const Failure failure{"", "The disc's layers could not be planned", ""};
    Layout layout;
    Program size;
    size.command = {"genisoimage", "-quiet", "-dvd-video", "-udf", "-print-size", folder};
    size.onOutput = [&](std::string_view line) {
        std::from_chars(line.data(), line.data() + line.size(), layout.sectors);
    };
    workshop.tools().run(std::move(size), failure);

    // The folders stand at the image's beginning.
    const std::string head = folder + ".head";
    workshop.tools().run(
        {"sh", "-c", "genisoimage -quiet -dvd-video -udf \"$0\" | head -c 4194304 >\"$1\"", folder,
         head},
        failure);
    const std::string bytes = readText(workshop.path(head));
    // Of a file's record, 33 bytes before its name: the sector, its low byte first, from the third.
    const std::size_t name = bytes.find("VIDEO_TS.IFO;1");
    if (name == std::string::npos || name < 33 || layout.sectors == 0)
        throw DiscError(failure.task + ".");
    for (const unsigned i : {0U, 1U, 2U, 3U})
        layout.firstTable |= std::int64_t{static_cast<unsigned char>(bytes[name - 31 + i])}
                             << (8 * i);
    return layout;
}

// Moves the films of a place's title set by some sectors, and what is behind it with them.
void move(const std::string& folder, const Place& place, std::size_t sectors) {
    Table disc(folder, "VIDEO_TS");
    Table set = titleSetOf(disc, place.title, folder);
    set.lengthen(sectors);
    set.add(kLastTableSector, sectors);
    if (set.word(kMenuVobs) != 0) set.add(kMenuVobs, sectors);
    set.add(kTitleVobs, sectors);
    set.add(kLastSector, 2 * sectors);  // The backup is as long.
    // The player pauses there.
    set.clear(place.cell, kSeamless);
    set.save();
    const std::size_t titles = disc.half(disc.word(kTitleTable) * 2048);
    for (std::size_t title = place.title + 1; title < titles; ++title)
        disc.add(titleEntry(disc, title) + 8, 2 * sectors);
    disc.save();
}

}  // namespace

std::optional<std::int64_t> setLayerBreak(const std::string& folder, const Workshop& workshop,
                                          const Layers& layers) {
    const std::string disc = workshop.path(folder);
    // Far too small, or to be burned where there is the program for it.
    if (bytesIn(disc) / 2048 < layers.single / 2 || programPath("genisoimage").empty())
        return std::nullopt;
    const Layout layout = layoutOf(folder, workshop);
    if (layout.sectors <= layers.single) return std::nullopt;
    // The second layer is no longer than the first.
    const std::int64_t least = wholeBlocks((layout.sectors + 2 * kBlock) / 2);
    for (const Place& place : chaptersOf(disc, layout.firstTable)) {
        const std::int64_t sector = wholeBlocks(place.sector);
        if (sector < least || sector > layers.first) continue;
        move(disc, place, static_cast<std::size_t>(sector - place.sector));
        return sector;
    }
    return std::nullopt;
}

}  // namespace tkv::disc
