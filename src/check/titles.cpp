// SPDX-License-Identifier: GPL-2.0-or-later
#include "check/titles.h"

#include <dvdread/ifo_read.h>
#include <dvdread/nav_read.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace tkv::check {

namespace {

using Json = nlohmann::json;

template <auto kRelease>
struct Release {
    template <typename Handle>
    void operator()(Handle* handle) const {
        kRelease(handle);
    }
};
using Disc = std::unique_ptr<dvd_reader_t, Release<DVDClose>>;
using Tables = std::unique_ptr<ifo_handle_t, Release<ifoClose>>;
using Vobs = std::unique_ptr<dvd_file_t, Release<DVDCloseFile>>;

constexpr int kMostSets = 99;

// A navigation pack: where its packets begin, and where the times are.
constexpr std::size_t kFirstPacket = 14, kSecondPacket = 0x400, kTimes = 0x2D;
constexpr double kTicks = 90'000;

bool isNavigation(const std::uint8_t* pack) {
    constexpr std::array<std::uint8_t, 4> kBegin{0, 0, 1, 0xBA}, kSystem{0, 0, 1, 0xBB},
        kPrivate{0, 0, 1, 0xBF};
    return std::equal(kBegin.begin(), kBegin.end(), pack) &&
           std::equal(kSystem.begin(), kSystem.end(), pack + kFirstPacket) &&
           std::equal(kPrivate.begin(), kPrivate.end(), pack + kSecondPacket);
}

int fromBcd(int value) {
    return value / 16 * 10 + value % 16;
}

// Tables count thirty frames as a second, though they last a little longer.
double secondsOf(const dvd_time_t& time) {
    constexpr int kPal = 1;
    const bool isPal = time.frame_u >> 6U == kPal;
    const int rate = isPal ? 25 : 30;
    const int whole = fromBcd(time.hour) * 3600 + fromBcd(time.minute) * 60 + fromBcd(time.second);
    const double seconds = whole + 1.0 * fromBcd(time.frame_u & 0x3F) / rate;
    return isPal ? seconds : seconds * 1.001;
}

std::string languageOf(bool isTold, std::uint16_t code) {
    const std::string letters{static_cast<char>(code >> 8U), static_cast<char>(code & 0xFFU)};
    const bool isWord = std::ranges::all_of(
        letters, [](char letter) { return std::islower(static_cast<unsigned char>(letter)) != 0; });
    return isTold && isWord ? letters : "";
}

const char* kindOf(int code) {
    constexpr int kCaptions = 5, kForced = 9, kDirector = 13;
    if (code >= kDirector) return "commentary";
    if (code == kForced) return "forced";
    return code >= kCaptions && code < kForced ? "hearing" : "normal";
}

// The first of a format's streams; 0 of one that is not known.
int firstStream(int format) {
    constexpr std::array<int, 8> kFirst{0x80, 0, 0x1C0, 0x1C0, 0xA0, 0, 0x88, 0};
    return kFirst.at(static_cast<std::size_t>(format));
}

// The titles of one set.
class SetReader {
  public:
    SetReader(dvd_reader_t* disc, int set)
        : set_(set),
          tables_(ifoOpen(disc, set)),
          vobs_(tables_ ? DVDOpenFile(disc, set, DVD_READ_TITLE_VOBS) : nullptr) {}

    int titles() const {
        const bool isThere = tables_ && tables_->vts_ptt_srpt && tables_->vts_pgcit;
        return isThere ? tables_->vts_ptt_srpt->nr_of_srpts : 0;
    }

    // `number`: among those of the set, from 1.
    std::optional<Json> title(int number) const {
        if (number < 1 || number > titles()) return std::nullopt;
        const ttu_t& parts = tables_->vts_ptt_srpt->title[number - 1];
        Json title{{"titleSet", set_}, {"isInterleaved", false}};
        title["cells"] = Json::array();
        title["chapters"] = Json::array();
        double seconds = 0;
        std::set<int> chains;
        const pgc_t* first = nullptr;
        for (const ptt_info_t& part : std::span(parts.ptt, parts.nr_of_ptts)) {
            const pgc_t* const chain = chainOf(part.pgcn);
            if (chain == nullptr) return std::nullopt;
            if (first == nullptr) first = chain;
            if (!chains.insert(part.pgcn).second) continue;
            if (!addCells(*chain, part.pgcn, parts, seconds, title)) return std::nullopt;
        }
        if (first == nullptr || title["cells"].empty()) return std::nullopt;
        title["sound"] = soundOf(*first);
        title["subtitles"] = subtitlesOf(*first);
        for (const std::uint32_t color : first->palette)
            title["palette"].push_back(color);
        return std::optional<Json>(std::in_place, std::move(title));
    }

  private:
    int set_;
    Tables tables_;
    Vobs vobs_;

    const pgc_t* chainOf(int number) const {
        const pgcit_t& chains = *tables_->vts_pgcit;
        if (number < 1 || number > chains.nr_of_pgci_srp) return nullptr;
        const pgc_t* const chain = chains.pgci_srp[number - 1].pgc;
        const bool isWhole = chain != nullptr && chain->nr_of_cells > 0 &&
                             chain->cell_playback != nullptr && chain->program_map != nullptr;
        return isWhole ? chain : nullptr;
    }

    // Adds what a program chain plays, and the chapters that begin in it. Of an angle block its
    // first cell is played.
    bool addCells(const pgc_t& chain, int number, const ttu_t& parts, double& seconds,
                  Json& title) const {
        for (int i = 0; i < chain.nr_of_cells; ++i) {
            const cell_playback_t& cell = chain.cell_playback[i];
            for (const ptt_info_t& part : std::span(parts.ptt, parts.nr_of_ptts)) {
                if (part.pgcn != number || part.pgn < 1 || part.pgn > chain.nr_of_programs)
                    continue;
                if (chain.program_map[part.pgn - 1] == i + 1) title["chapters"].push_back(seconds);
            }
            const bool isOther =
                cell.block_mode == BLOCK_MODE_IN_BLOCK || cell.block_mode == BLOCK_MODE_LAST_CELL;
            if (isOther) continue;
            if (cell.last_sector < cell.first_sector) return false;
            if (cell.interleaved != 0) title["isInterleaved"] = true;
            const double length = lengthOf(cell);
            const auto times = timesAt(cell.first_sector);
            title["cells"].push_back({{"first", cell.first_sector},
                                      {"last", cell.last_sector},
                                      {"seconds", length},
                                      {"start", times ? times->vobu_s_ptm / kTicks : -1}});
            seconds += length;
        }
        return true;
    }

    // Tables tell a cell's length to the frame, and round; its packs tell when it is shown.
    double lengthOf(const cell_playback_t& cell) const {
        const double told = secondsOf(cell.playback_time);
        const auto first = timesAt(cell.first_sector), last = timesAt(cell.last_vobu_start_sector);
        if (!first || !last || last->vobu_e_ptm <= first->vobu_s_ptm) return told;
        const double length = (last->vobu_e_ptm - first->vobu_s_ptm) / kTicks;
        return std::abs(length - told) < 2 ? length : told;
    }

    std::optional<pci_gi_t> timesAt(std::uint32_t sector) const {
        std::array<std::uint8_t, DVD_VIDEO_LB_LEN> pack{};
        if (!vobs_ || DVDReadBlocks(vobs_.get(), static_cast<int>(sector), 1, pack.data()) != 1 ||
            !isNavigation(pack.data()))
            return std::nullopt;
        pci_t times{};
        navRead_PCI(&times, pack.data() + kTimes);
        return times.pci_gi;
    }

    Json soundOf(const pgc_t& chain) const {
        constexpr unsigned kIsThere = 0x8000;
        const vtsi_mat_t& set = *tables_->vtsi_mat;
        Json streams = Json::array();
        for (std::size_t i = 0; i < std::min<std::size_t>(set.nr_of_vts_audio_streams, 8); ++i) {
            const audio_attr_t& attributes = set.vts_audio_attr[i];
            const unsigned control = chain.audio_control[i];
            const int first = firstStream(attributes.audio_format);
            if ((control & kIsThere) == 0 || first == 0) continue;
            streams.push_back(
                {{"stream", first + static_cast<int>(control >> 8U & 7U)},
                 {"language", languageOf(attributes.lang_type == 1, attributes.lang_code)},
                 {"kind", attributes.code_extension >= 3 ? "commentary" : "normal"}});
        }
        return streams;
    }

    // Wide titles may have other streams for displays that show them between bars.
    Json subtitlesOf(const pgc_t& chain) const {
        constexpr unsigned kIsThere = 0x80000000, kWide = 3;
        const vtsi_mat_t& set = *tables_->vtsi_mat;
        const unsigned shift = set.vts_video_attr.display_aspect_ratio == kWide ? 16 : 24;
        Json streams = Json::array();
        for (std::size_t i = 0; i < std::min<std::size_t>(set.nr_of_vts_subp_streams, 32); ++i) {
            const subp_attr_t& attributes = set.vts_subp_attr[i];
            const unsigned control = chain.subp_control[i];
            if ((control & kIsThere) == 0) continue;
            streams.push_back({{"stream", 0x20 + static_cast<int>(control >> shift & 0x1FU)},
                               {"letterboxed", 0x20 + static_cast<int>(control >> 8U & 0x1FU)},
                               {"language", languageOf(attributes.type == 1, attributes.lang_code)},
                               {"kind", kindOf(attributes.code_extension)}});
        }
        return streams;
    }
};

}  // namespace

std::string titlesOf(const std::string& folder) {
    Json titles = Json::array();
    int number = 0;
    const auto add = [&](const SetReader& set, int numberThere) {
        ++number;
        std::optional<Json> title = set.title(numberThere);
        if (!title) return;
        (*title)["number"] = number;
        titles.push_back(std::move(*title));
    };
    const auto silence = [](void*, dvd_logger_level_t, const char*, std::va_list) {};
    const dvd_logger_cb quiet{silence};
    const Disc disc(DVDOpen2(nullptr, &quiet, folder.c_str()));
    const Tables manager(disc ? ifoOpen(disc.get(), 0) : nullptr);
    if (manager && manager->tt_srpt != nullptr) {
        const tt_srpt_t& all = *manager->tt_srpt;
        for (const title_info_t& title : std::span(all.title, all.nr_of_srpts))
            add(SetReader(disc.get(), title.title_set_nr), title.vts_ttn);
    }
    for (int i = 1; disc && !manager && i <= kMostSets; ++i) {
        const SetReader set(disc.get(), i);
        for (int title = 1; title <= set.titles(); ++title)
            add(set, title);
    }
    return Json{{"titles", titles}}.dump();
}

}  // namespace tkv::check
