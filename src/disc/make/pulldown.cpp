#include "disc/make/pulldown.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "disc/plan/conversion.h"
#include "disc/run/fault.h"
#include "system/descriptor.h"

namespace tkv::disc {

namespace {

constexpr std::size_t kPackBytes = 2048, kPacksAtOnce = 1024;

// Ticks of a clock of 90 kHz from one picture to the next, and a field's.
constexpr double kPictureTicks = 90'000 * 1001.0 / 24'000, kFieldTicks = 90'000 * 1001.0 / 60'000;

constexpr std::uint32_t kPackCode = 0x1BA, kSystemCode = 0x1BB, kVideoCode = 0x1E0;
constexpr unsigned kAllVideo = 0xB9;

// What a player holds of the picture, with what is on its way: a flag for KiB, and so many.
constexpr unsigned kHeld = 1U << 13U | (kPlayerBuffer / 8 / 1024 + 6);

// What follows 00 00 01 in a stream of MPEG-2 video.
enum class Header : std::uint8_t { picture = 0, sequence = 0xB3, extension = 0xB5, group = 0xB8 };

// How many of its bytes, behind the start code, are looked at.
std::size_t lengthOf(Header header) {
    switch (header) {
        case Header::picture:
            return 2;
        case Header::group:
            return 4;
        case Header::extension:
            return 5;
        case Header::sequence:
            return 8;
    }
    return 0;
}

// A film's bytes in memory, a part at a time. What is changed in them is written.
class FilmBytes {
  public:
    explicit FilmBytes(const std::string& path)
        : path_(path), file_(open(path.c_str(), O_RDWR | O_CLOEXEC)) {
        if (file_.number() < 0) failOn(path_, "changed");
        part_.reserve(kPackBytes * kPacksAtOnce);
    }

    // The next part; empty at the end.
    std::span<std::uint8_t> next() {
        finish();
        start_ += static_cast<off_t>(part_.size());
        part_.resize(kPackBytes * kPacksAtOnce);
        ssize_t count = 0;
        part_.resize(transferAll(part_.size(), [&](std::size_t done) {
            count = pread(file_.number(), part_.data() + done, part_.size() - done,
                          start_ + static_cast<off_t>(done));
            return count;
        }));
        if (count < 0) failOn(path_, "read");
        return part_;
    }

    off_t start() const { return start_; }

    // `place`: of a byte of this part, or of an earlier one.
    void change(off_t place, std::uint8_t byte) {
        if (place >= start_) {
            part_[static_cast<std::size_t>(place - start_)] = byte;
            isChanged_ = true;
        } else if (pwrite(file_.number(), &byte, 1, place) != 1) {
            failOn(path_, "changed");
        }
    }

    // Writes the part.
    void finish() {
        if (!std::exchange(isChanged_, false)) return;
        const std::size_t written = transferAll(part_.size(), [&](std::size_t done) {
            return pwrite(file_.number(), part_.data() + done, part_.size() - done,
                          start_ + static_cast<off_t>(done));
        });
        if (written != part_.size()) failOn(path_, "changed");
    }

  private:
    const std::string& path_;
    Descriptor file_;
    std::vector<std::uint8_t> part_;
    off_t start_ = 0;
    bool isChanged_ = false;
};

// Finds the headers of the pictures and groups, which may begin in one packet and end in another,
// and changes them.
class VideoHeaders {
  public:
    explicit VideoHeaders(FilmBytes& film) : film_(film) {}

    // `place`: of the byte in the film.
    void take(off_t place, std::uint8_t byte) {
        if (missing_ > 0) {
            places_.push_back(place);
            bytes_.push_back(byte);
            if (--missing_ == 0) change();
        }
        last_ = last_ << 8U | byte;
        if (last_ >> 8U != 1) return;
        header_ = static_cast<Header>(byte);
        missing_ = lengthOf(header_);
        places_.clear();
        bytes_.clear();
    }

  private:
    void put(std::size_t number, unsigned mask, unsigned bits) {
        film_.change(places_[number],
                     static_cast<std::uint8_t>((bytes_[number] & ~mask) | (bits & mask)));
    }

    void change() {
        switch (header_) {
            case Header::sequence:
                changeSequence();
                return;
            case Header::group:
                beginGroup();
                return;
            case Header::picture:
                // Its place among those of its group, as they are shown.
                shown_ = groupStart_ + (bytes_[0] << 2 | bytes_[1] >> 6);
                ++pictures_;
                return;
            case Header::extension:
                // A sequence that says to be progressive would repeat whole frames.
                if (bytes_[0] >> 4U == 1) put(1, 0x08, 0);
                if (bytes_[0] >> 4U == 8) changePicture();
                return;
        }
    }

    void changeSequence() {
        put(3, 0x0F, 4);  // 30000/1001 frames a second
        // The encoder was given less than every player has.
        constexpr unsigned kBuffer = kPlayerBuffer / 16'384;
        put(6, 0x1F, kBuffer >> 5U);
        put(7, 0xF8, kBuffer << 3U);
    }

    void beginGroup() {
        groupStart_ = pictures_;
        const auto frames = static_cast<unsigned>(fieldsBefore(groupStart_) / 2);
        const unsigned seconds = frames / 30;
        const unsigned time = (seconds / 3600 % 24) << 19U | (seconds / 60 % 60) << 13U |
                              1U << 12U | (seconds % 60) << 6U | frames % 30;
        put(0, 0xFF, time >> 17U);
        put(1, 0xFF, time >> 9U);
        put(2, 0xFF, time >> 1U);
        put(3, 0x80, time << 7U);
    }

    void changePicture() {
        const bool isTopFirst = fieldsBefore(shown_) % 2 == 0, isRepeated = shown_ % 2 == 0;
        put(3, 0x82, (isTopFirst ? 0x80U : 0U) | (isRepeated ? 0x02U : 0U));
    }

    FilmBytes& film_;
    std::uint32_t last_ = 0xFFFFFFFF;  // four bytes
    Header header_ = Header::picture;
    std::size_t missing_ = 0;
    std::vector<off_t> places_;
    std::vector<std::uint8_t> bytes_;
    int pictures_ = 0, groupStart_ = 0;
    int shown_ = 0;
};

std::uint32_t wordAt(std::span<const std::uint8_t> bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | bytes[3];
}

// Changes what a film's packs tell of its picture.
class Packs {
  public:
    explicit Packs(FilmBytes& film) : film_(film), headers_(film) {}

    // `place`: of the pack in the film. False when it is none.
    bool change(off_t place, std::span<const std::uint8_t> pack) {
        if (pack.size() != kPackBytes || wordAt(pack) != kPackCode) return false;
        std::size_t at = 14 + (pack[13] & 7U);
        while (at + 9 <= pack.size()) {
            const std::size_t length = 6 + (std::size_t{pack[at + 4]} << 8U | pack[at + 5]);
            if (length > pack.size() - at) return false;
            const off_t packet = place + static_cast<off_t>(at);
            const std::uint32_t code = wordAt(pack.subspan(at));
            if (code == kSystemCode) changeSystem(packet, pack.subspan(at, length));
            if (code == kVideoCode) changePacket(packet, pack.subspan(at, length));
            at += length;
        }
        return true;
    }

  private:
    // Each stream has three bytes.
    void changeSystem(off_t place, std::span<const std::uint8_t> packet) {
        for (std::size_t at = 12; at + 3 <= packet.size(); at += 3) {
            if (packet[at] == kAllVideo) changeHeld(place + static_cast<off_t>(at) + 1, 0xC000);
        }
    }

    void changePacket(off_t place, std::span<const std::uint8_t> packet) {
        // A packet tells when the first picture that begins in it is shown and, where that is not
        // the same, decoded.
        std::size_t at = 9;
        for (const unsigned flag : {0x80U, 0x40U}) {
            if ((packet[7] & flag) == 0) continue;
            changeTime(place + static_cast<off_t>(at), packet.subspan(at));
            at += 5;
        }
        const bool tellsHeld = (packet[7] & 0x3FU) == 1 && packet[at] == 0x10;
        if (tellsHeld) changeHeld(place + static_cast<off_t>(at) + 1, 0x4000);
        for (at = 9U + packet[8]; at < packet.size(); ++at)
            headers_.take(place + static_cast<off_t>(at), packet[at]);
    }

    void changeHeld(off_t place, unsigned mark) {
        film_.change(place, static_cast<std::uint8_t>((mark | kHeld) >> 8U));
        film_.change(place + 1, static_cast<std::uint8_t>(kHeld));
    }

    // 33 bits in five bytes, with marks between their parts.
    void changeTime(off_t place, std::span<const std::uint8_t> bytes) {
        const std::int64_t old =
            std::int64_t{bytes[0] & 0x0EU} << 29U | std::int64_t{bytes[1]} << 22U |
            std::int64_t{bytes[2] & 0xFEU} << 14U | std::int64_t{bytes[3]} << 7U | bytes[4] >> 1U;
        if (first_ < 0) first_ = old;
        // Pictures are decoded one after another as they are shown, each while the one before is
        // shown; so all times are among those at which pictures are shown.
        const auto ticks = static_cast<double>(old - first_);
        const auto picture = static_cast<int>(std::lround(ticks / kPictureTicks));
        const auto time =
            static_cast<std::uint64_t>(first_ + std::llround(fieldsBefore(picture) * kFieldTicks));
        const std::uint64_t made[] = {(bytes[0] & 0xF1U) | (time >> 29U & 0x0EU), time >> 22U,
                                      time >> 14U | 1U, time >> 7U, time << 1U | 1U};
        for (const std::uint64_t byte : made)
            film_.change(place++, static_cast<std::uint8_t>(byte));
    }

    FilmBytes& film_;
    VideoHeaders headers_;
    std::int64_t first_ = -1;  // when the film begins, once that is known
};

}  // namespace

void pullDown(const std::string& path, const ProgramStop& stop) {
    FilmBytes film(path);
    Packs packs(film);
    for (auto part = film.next(); !part.empty(); part = film.next()) {
        if (stop.isStopped()) throw Interrupted();
        off_t place = film.start();
        for (; !part.empty(); part = part.subspan(std::min(part.size(), kPackBytes))) {
            if (!packs.change(place, part.first(std::min(part.size(), kPackBytes))))
                throw DiscError(fmt::format("{} is no program stream of a disc.", path), path);
            place += static_cast<off_t>(kPackBytes);
        }
    }
}

}  // namespace tkv::disc
