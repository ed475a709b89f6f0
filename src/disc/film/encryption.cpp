#include "disc/film/encryption.h"

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

namespace tkv::disc {

namespace {

// Places of a file that are looked at, and bytes of each. The beginning alone does not tell: a
// bought disc's film begins with packets in the clear.
constexpr int kPlaces = 16;
constexpr std::size_t kBytes = 64 << 10;

// Not every packet of a bought disc is scrambled; of a recording that could be received some are.
constexpr double kScrambledPart = 0.25;

// Packets of picture and sound.
struct Packets {
    int all = 0;
    int scrambled = 0;

    void add(bool isMarked) {
        ++all;
        if (isMarked) ++scrambled;
    }
};

// A pack of a DVD's program stream holds one packet. In MPEG-1 streams, which know no scrambling,
// it begins earlier.
constexpr std::size_t kPackBytes = 2048;
constexpr std::string_view kPackStart("\0\0\1\xBA", 4);
constexpr std::string_view kPacketStart("\0\0\1", 3);

void countInPacks(std::string_view bytes, Packets& packets) {
    for (; bytes.size() >= kPackBytes; bytes.remove_prefix(kPackBytes)) {
        const auto stream = static_cast<unsigned char>(bytes[17]);
        const bool isMedia = bytes.substr(14).starts_with(kPacketStart) &&
                             (stream == 0xBD || (stream >= 0xC0 && stream <= 0xEF));
        if (bytes.starts_with(kPackStart) && isMedia) packets.add((bytes[20] & 0x30) != 0);
    }
}

constexpr char kSync = 0x47;

// Of a transport stream's packet: 188, or 192 with a time before each; 0 of any other file. `head`:
// where the file begins.
std::size_t packetBytesOf(std::string_view head) {
    constexpr std::size_t kEnough = 8;
    for (const std::size_t bytes : {188UL, 192UL}) {
        if (head.size() < (kEnough + 1) * bytes) continue;
        for (std::size_t first = 0; first < bytes; ++first) {
            std::size_t count = 0;
            while (count < kEnough && head[first + count * bytes] == kSync)
                ++count;
            if (count == kEnough) return bytes;
        }
    }
    return 0;
}

void countInTransport(std::string_view bytes, std::size_t packetBytes, Packets& packets) {
    while (bytes.size() > packetBytes) {
        if (bytes[0] != kSync || bytes[packetBytes] != kSync) {
            bytes.remove_prefix(1);
            continue;
        }
        packets.add((bytes[3] & 0xC0) != 0);
        bytes.remove_prefix(packetBytes);
    }
}

std::string bytesAt(std::ifstream& file, std::uintmax_t place) {
    std::string bytes(kBytes, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(place / kPackBytes * kPackBytes));
    file.read(bytes.data(), kBytes);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace

bool isScrambled(const FilmSource& source) {
    Packets packets;
    const auto size = static_cast<std::uintmax_t>(source.bytes) / source.files.size();
    for (const std::string& path : source.files) {
        std::ifstream file(path);
        const std::string head = bytesAt(file, 0);
        const std::size_t packetBytes = packetBytesOf(head);
        const bool isProgram = head.starts_with(kPackStart);
        if (!isProgram && packetBytes == 0) return false;
        for (unsigned i = 0; i < kPlaces; ++i) {
            const std::string bytes = bytesAt(file, size / kPlaces * i);
            if (isProgram) {
                countInPacks(bytes, packets);
            } else {
                countInTransport(bytes, packetBytes, packets);
            }
        }
    }
    return packets.all > 0 && packets.scrambled >= kScrambledPart * packets.all;
}

}  // namespace tkv::disc
