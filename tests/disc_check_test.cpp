#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "check/stream.h"
#include "support.h"

namespace tkv::test {

namespace {

std::string number(std::uint64_t value, int bytes) {
    std::string text;
    while (bytes > 0)
        text += static_cast<char>(value >> static_cast<unsigned>(8 * --bytes) & 255U);
    return text;
}

/// 33 bits in groups of 3, 15 and 15, a 1 behind each.
std::uint64_t grouped(double seconds) {
    const auto ticks = static_cast<std::uint64_t>(std::lround(seconds * 90'000));
    return (ticks >> 30U & 7U) << 33U | (ticks >> 15U & 0x7FFFU) << 17U | (ticks & 0x7FFFU) << 1U |
           0x100010001U;
}

std::string packOf(double time, const std::string& packet) {
    // The clock's ticks follow on the stamp; then the rate.
    const std::string head = number(0x1BA, 4) + number(1ULL << 46U | grouped(time) << 10U | 1U, 6) +
                             number(25'200U << 2U | 3U, 3) + '\xF8';
    return head + packet + std::string(2048 - head.size() - packet.size(), '\xFF');
}

/// `stamps`: when it is shown, and if that differs, decoded.
std::string packetOf(const std::string& stream, const std::vector<double>& stamps,
                     const std::string& data) {
    std::string head{'\x80', static_cast<char>(64 * (stamps.size() + stamps.size() % 2)),
                     static_cast<char>(5 * stamps.size())};
    if (stamps.size() == 2) head[1] = '\xC0';
    for (const double stamp : stamps)
        head += number(0x2000000000U | grouped(stamp), 5);
    return stream + number(2028, 2) + head + data;
}

/// Two seconds of a film.
struct Made {
    double step = 1;     ///< between packs, as part of the shortest there may be
    double picture = 0;  ///< by which pictures have later stamps, in seconds
    double sound = 0;
    int packs = 10;           ///< of each picture
    std::size_t damaged = 0;  ///< a pack that is none
    std::size_t leftOut = 0;  ///< a pack
};

std::string streamOf(const Made& made) {
    std::vector<std::string> packs;
    for (int frame = 0; frame < 50; ++frame) {
        double time = 1 + frame * 0.04;
        const double due = time + 0.3;
        const auto add = [&](const std::string& packet) {
            packs.push_back(packOf(time, packet));
            time += 2048 * 8 / 10.08e6 * made.step;
        };
        if (frame % 10 == 0) {
            // Its tables, in the second of which are its place and the number of the VOB.
            std::string tables = number(0x1BB, 4) + number(18, 2);
            tables.resize(0x400 - 14, '\0');
            tables += number(0x1BF, 4) + std::string(7, '\0') + number(packs.size(), 4);
            tables.resize(0x400 - 14 + 31, '\0');
            add(tables + number(1, 2));
        }
        for (int i = 0; i < made.packs; ++i) {
            add(i > 0 ? packetOf(number(0x1E0, 4), {}, "")
                      : packetOf(number(0x1E0, 4), {due + 0.04 + made.picture, due + made.picture},
                                 number(0x100, 4)));
        }
        add(packetOf(number(0x1BD, 4), {due + 0.04 + made.sound}, "\x80"));
    }
    if (made.damaged > 0) packs[made.damaged][2] = '\0';
    if (made.leftOut > 0) packs.erase(packs.begin() + static_cast<std::ptrdiff_t>(made.leftOut));
    std::string stream;
    for (const std::string& pack : packs)
        stream += pack;
    return stream;
}

TEST(Stream, IsAsAPlayerCanTakeIt) {
    const struct {
        Made made;
        std::string fault, faultOfCopied;
    } cases[] = {
        {{}, "", ""},
        {{.step = 0.9}, "0.0 s after its begin, it comes faster than a player reads", ""},
        {{.picture = 0.1, .sound = 0.14}, "", ""},
        {{.sound = 0.2}, "the sound begins 200 ms after the picture", ""},
        {{.sound = -0.06}, "the sound begins 60 ms before the picture", ""},
        {{.picture = -0.29, .sound = -0.29, .packs = 20}, "", ""},
        {{.picture = -0.32, .sound = -0.32, .packs = 20}, "a picture comes 5", ""},
        {{.picture = -0.32, .sound = -0.37}, "the sound comes 4", ""},
        {{.picture = 1, .sound = 1}, "pictures come too early to be kept", ""},
        {{.picture = 1, .sound = 1, .packs = 2}, "", ""},
        {{.damaged = 7}, "sector 7 is damaged", "sector 7 is damaged"},
        {{.leftOut = 7}, "stands in another place", "stands in another place"},
    };
    const TempFolder folder;
    for (const auto& [made, fault, faultOfCopied] : cases) {
        SCOPED_TRACE(fault);
        const std::string path = folder.write("film.vob", streamOf(made));
        for (const bool isTimed : {true, false}) {
            std::string told;
            try {
                told = check::checkStream({path}, isTimed);
            } catch (const std::runtime_error& error) {
                told = error.what();
            }
            const std::string& expected = isTimed ? fault : faultOfCopied;
            EXPECT_EQ(told.empty(), expected.empty()) << told;
            EXPECT_NE(told.find(expected), std::string::npos) << told;
        }
    }
}

}  // namespace

}  // namespace tkv::test
