#include "player.h"

#include <cstring>
#include <stdexcept>

namespace tkv::test {

namespace {

Subpicture decoded(const std::vector<std::uint8_t>& coded) {
    const auto word = [&](std::size_t at) { return coded.at(at) * 256UL + coded.at(at + 1); };
    // Where the words of each command stand: 4 contrasts, 5 the area, 6 the first row's and the
    // second row's pixels.
    std::array<std::size_t, 7> words{};
    for (std::size_t at = word(2) + 4; coded.at(at) != 0xFF;) {
        const std::uint8_t command = coded[at];
        words.at(command) = at + 1;
        at += std::array{1U, 1U, 1U, 3U, 3U, 7U, 5U}.at(command);
    }
    const std::size_t left = word(words[5]) >> 4U, right = word(words[5] + 1) & 0xFFFU;
    const std::size_t top = word(words[5] + 3) >> 4U, bottom = word(words[5] + 4) & 0xFFFU;
    Subpicture picture{Strings(576, std::string(720, ' ')), word(words[4])};
    // Runs of 1, 2, 3 or 4 half bytes: the value in the last two bits, before it the length, where
    // 0 means until the row's end. A row begins with a byte.
    std::array<std::size_t, 2> next{2 * word(words[6]), 2 * word(words[6] + 2)};
    for (std::size_t y = top; y <= bottom; ++y) {
        std::size_t& at = next.at((y - top) % 2);
        const auto half = [&] {
            const unsigned byte = coded.at(at / 2);
            return at++ % 2 == 0 ? byte >> 4U : byte & 15U;
        };
        for (std::size_t x = left; x <= right;) {
            unsigned run = half();
            for (unsigned least = 4; run < least && least <= 64; least *= 4)
                run = run << 4U | half();
            const std::size_t length = run < 4 ? right + 1 - x : run >> 2U;
            picture.rows.at(y).replace(x, length, length, static_cast<char>('0' + run % 4));
            x += length;
        }
        at += at % 2;
    }
    return picture;
}

}  // namespace

// Each subpicture pack holds a part of one, after the number of its stream.
void Player::keep(std::int32_t event, const Block& block) {
    if (event == DVDNAV_SPU_CLUT_CHANGE)
        std::memcpy(palette_.data(), block.data(), sizeof palette_);
    if (event != DVDNAV_BLOCK_OK) return;
    const std::uint8_t* const packet = block.data() + 14;
    const int end = 6 + packet[4] * 256 + packet[5];
    const int start = 9 + packet[8];
    const int stream = packet[start] - 0x20;
    if (packet[3] != 0xBD || stream < 0 || stream > 1) return;
    auto& kept = subpictures_.at(static_cast<std::size_t>(stream));
    kept.insert(kept.end(), packet + start + 1, packet + end);
}

Subpicture Player::subpicture(int stream) {
    const auto& coded = subpictures_.at(static_cast<std::size_t>(stream));
    for (auto& kept : subpictures_)
        kept.clear();
    for (int packs = 0; packs < 1000; ++packs) {
        if (coded.size() > 2 && coded.size() >= coded[0] * 256UL + coded[1]) return decoded(coded);
        play();
    }
    throw std::runtime_error(place() + " has no subpicture");
}

Rgba Player::highlightColor(std::uint32_t highlight, int value) const {
    const int shift = 4 * value;
    const std::uint32_t entry = palette_.at(highlight >> (16 + shift) & 15U);
    const auto byte = [&](int at) { return static_cast<int>(entry >> at & 255U); };
    return {byte(16), byte(8), byte(0), static_cast<int>(highlight >> shift & 15U)};
}

std::pair<int, int> Player::tracks() {
    constexpr int kHidden = 0x80;
    const std::int8_t subtitles = dvdnav_get_active_spu_stream(nav());
    return {dvdnav_get_active_audio_stream(nav()), (subtitles & kHidden) != 0 ? -1 : subtitles};
}

std::string Player::arrowsFrom(int number) {
    pci_t* const pci = dvdnav_get_current_nav_pci(nav());
    const int before = button();
    std::string numbers;
    for (const auto key : {dvdnav_upper_button_select, dvdnav_lower_button_select,
                           dvdnav_left_button_select, dvdnav_right_button_select}) {
        dvdnav_button_select(nav(), pci, number);
        key(nav(), pci);
        numbers += fmt::format("{}{}", numbers.empty() ? "" : " ", button());
    }
    dvdnav_button_select(nav(), pci, before);
    return numbers;
}

Strings rectanglesOf(const hli_t& highlights, int group) {
    const btni_t* const buttons = highlights.btnit + group * 36 / highlights.hl_gi.btngr_ns;
    Strings rectangles;
    for (int i = 0; i < highlights.hl_gi.btn_ns; ++i) {
        const btni_t& button = buttons[i];
        rectangles.push_back(fmt::format(R"(x0="{}" y0="{}" x1="{}" y1="{}")", +button.x_start,
                                         +button.y_start, +button.x_end, +button.y_end));
    }
    return rectangles;
}

}  // namespace tkv::test
