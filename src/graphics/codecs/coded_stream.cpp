#include "graphics/codecs/coded_stream.h"

#include <algorithm>

namespace tkv {

namespace {

/// Decoders queue them, small ones too.
constexpr std::size_t kMostUnits = 4096;

/// Reads bits, the highest of each byte first; zeros behind the end.
class Bits {
  public:
    explicit Bits(ByteView bytes) : bytes_(bytes) {}

    /// At most 32.
    std::uint32_t read(int count) {
        std::uint32_t number = 0;
        for (; count > 0; --count, ++at_) {
            const bool isIn = at_ / 8 < bytes_.size();
            const unsigned byte = isIn ? bytes_[at_ / 8] : 0U;
            number = number << 1U | (byte >> (7 - at_ % 8) & 1U);
        }
        return number;
    }
    bool flag() { return read(1) != 0; }
    void skip(std::size_t count) { at_ += count; }

    /// How many zeros precede the next one, which is read too; at most 32.
    int zeros() {
        int count = 0;
        while (count < 32 && !flag())
            ++count;
        return count;
    }
    /// An unsigned Exp-Golomb code (9.2 in H.265), saturated.
    std::uint32_t golomb() {
        const int length = zeros();
        return length > 31 ? ~0U : (1U << static_cast<unsigned>(length)) - 1 + read(length);
    }

  private:
    ByteView bytes_;
    std::size_t at_ = 0;
};

int sideOf(std::uint32_t number) {
    return static_cast<int>(std::min(number, 1U << 30U));
}

void enlarge(PixelSize& largest, PixelSize size) {
    largest = {std::max(largest.width, size.width), std::max(largest.height, size.height)};
}

// ---- HEVC

/// Of a sequence parameter set, a NAL unit (7.3.2.2).
PixelSize sizeOfSequence(ByteView unit) {
    // The sides come early. A byte 3 after two zeros only keeps a start code from appearing.
    constexpr std::size_t kEnough = 256;
    Bytes bytes;
    unsigned zeros = 0;
    for (const std::uint8_t byte : unit.first(std::min(unit.size(), kEnough))) {
        const bool isInserted = zeros >= 2 && byte == 3;
        zeros = byte == 0 ? zeros + 1 : 0;
        if (!isInserted) bytes.push_back(byte);
    }
    Bits bits(bytes);
    bits.skip(16 + 4);
    const std::uint32_t subLayers = bits.read(3);
    bits.skip(1 + 96);  // The general profile, tier and level.
    std::size_t more = 0;
    for (std::uint32_t i = 0; i < subLayers; ++i) {
        if (bits.flag()) more += 88;
        if (bits.flag()) more += 8;
    }
    bits.skip(more + (subLayers > 0 ? 2 * (8 - subLayers) : 0));
    bits.golomb();                        // Its number.
    if (bits.golomb() == 3) bits.flag();  // The chroma format, and whether planes are separate.
    const int width = sideOf(bits.golomb());
    return {width, sideOf(bits.golomb())};
}

void readUnit(ByteView unit, CodedStream& stream) {
    constexpr unsigned kFirstOther = 32, kSequence = 33;
    if (unit.size() < 3) return;
    const unsigned type = unit[0] >> 1U & 0x3FU, layer = (unit[0] & 1U) << 5U | unit[1] >> 3U;
    if (layer > 0) return;  // Decoders of a single layer discard it.
    if (type == kSequence) enlarge(stream.largest, sizeOfSequence(unit));
    if (type < kFirstOther) ++stream.passes;
}

/// Reads `count` units after lengths of `lengthBytes`, or all, and takes them off `rest`.
bool readUnits(ByteView& rest, std::size_t lengthBytes, std::size_t count, CodedStream& stream) {
    std::size_t left = std::min(count, kMostUnits);
    for (; left > 0 && !rest.empty(); --left) {
        if (rest.size() < lengthBytes) return false;
        const std::size_t length = Bits(rest).read(static_cast<int>(8 * lengthBytes));
        rest = rest.subspan(lengthBytes);
        if (length > rest.size()) return false;
        readUnit(rest.first(length), stream);
        rest = rest.subspan(length);
    }
    return count < kMostUnits || left > 0;
}

// ---- AV1 (chapters of its published bitstream format)

/// What a sequence header says of the frame headers after it (5.5).
struct Sequence {
    PixelSize size;
    PixelSize most;  ///< that a frame can state instead
    bool isReduced = false;
    int presentationTime = 0;  ///< The bits of one in a frame header, and so on.
    int frameNumber = 0;
    bool choosesTools = false, hasTools = false, choosesVectors = false;
};

void skipTiming(Bits& bits, Sequence& sequence, int& delay) {
    bits.skip(64);
    const bool isEven = bits.flag();
    if (isEven) bits.skip(static_cast<std::size_t>(bits.zeros()));
    if (!bits.flag()) return;
    delay = static_cast<int>(bits.read(5)) + 1;
    bits.skip(32 + 5);
    const int time = static_cast<int>(bits.read(5)) + 1;
    if (!isEven) sequence.presentationTime = time;
}

void skipOperatingPoints(Bits& bits, int delay) {
    const bool hasDisplayDelay = bits.flag();
    const std::uint32_t points = bits.read(5) + 1;
    for (std::uint32_t i = 0; i < points; ++i) {
        bits.skip(12);
        if (bits.read(5) > 7) bits.skip(1);
        if (delay > 0 && bits.flag()) bits.skip(2 * static_cast<std::size_t>(delay) + 1);
        if (hasDisplayDelay && bits.flag()) bits.skip(4);
    }
}

Sequence readSequence(ByteView header) {
    Bits bits(header);
    Sequence sequence;
    bits.skip(3 + 1);
    sequence.isReduced = bits.flag();
    if (sequence.isReduced) {
        bits.skip(5);
    } else {
        int delay = 0;  // The bits of a decoder's delay; 0 without a model of decoders.
        if (bits.flag()) skipTiming(bits, sequence, delay);
        skipOperatingPoints(bits, delay);
    }
    const int across = static_cast<int>(bits.read(4)) + 1,
              down = static_cast<int>(bits.read(4)) + 1;
    sequence.most = {1 << across, 1 << down};
    sequence.size.width = static_cast<int>(bits.read(across)) + 1;
    sequence.size.height = static_cast<int>(bits.read(down)) + 1;
    if (sequence.isReduced) return sequence;
    if (bits.flag()) {
        const int difference = static_cast<int>(bits.read(4)) + 2;
        sequence.frameNumber = difference + static_cast<int>(bits.read(3)) + 1;
    }
    bits.skip(3 + 4);  // Tools that change no header.
    if (bits.flag()) bits.skip(2);
    sequence.choosesTools = bits.flag();
    sequence.hasTools = sequence.choosesTools || bits.flag();
    sequence.choosesVectors = sequence.hasTools && bits.flag();
    return sequence;
}

/// Whether a frame's header states a size of its own (5.9.2).
bool hasOwnSize(ByteView header, const Sequence& sequence) {
    constexpr std::uint32_t kKey = 0, kSwitch = 3;
    Bits bits(header);
    if (sequence.isReduced || bits.flag()) return false;  // An earlier frame is shown again.
    const std::uint32_t type = bits.read(2);
    const bool isShown = bits.flag();
    bits.skip(isShown ? static_cast<std::size_t>(sequence.presentationTime) : 1);
    if (type != kSwitch && !(type == kKey && isShown)) bits.skip(1);
    bits.skip(1);
    const bool hasTools = sequence.choosesTools ? bits.flag() : sequence.hasTools;
    if (hasTools && sequence.choosesVectors) bits.skip(1);
    bits.skip(static_cast<std::size_t>(sequence.frameNumber));
    return type == kSwitch || bits.flag();
}

bool readObus(ByteView rest, Sequence& sequence, CodedStream& stream) {
    constexpr unsigned kSequence = 1, kHeader = 3, kFrame = 6;
    for (std::size_t units = 0; !rest.empty(); ++units) {
        if (units == kMostUnits) return false;
        const unsigned head = rest[0], type = head >> 3U & 0xFU;
        const bool isExtended = (head & 4U) != 0, hasSize = (head & 2U) != 0;
        std::size_t at = isExtended ? 2 : 1, length = 0;
        for (unsigned i = 0; hasSize && i < 8; ++i, ++at) {
            if (at >= rest.size()) return false;
            length |= static_cast<std::size_t>(rest[at] & 0x7FU) << 7U * i;
            if ((rest[at] & 0x80U) == 0) {
                ++at;
                break;
            }
        }
        if (at > rest.size() || (hasSize && length > rest.size() - at)) return false;
        const ByteView content = rest.subspan(at, hasSize ? length : rest.size() - at);
        rest = rest.subspan(at + content.size());
        if (type == kSequence) {
            sequence = readSequence(content);
            enlarge(stream.largest, sequence.size);
        }
        if (type != kHeader && type != kFrame) continue;
        ++stream.passes;
        if (hasOwnSize(content, sequence)) enlarge(stream.largest, sequence.most);
    }
    return true;
}

}  // namespace

CodedStream hevcStream(ByteView configuration, ByteView data) {
    constexpr std::size_t kLengths = 21, kArrays = 22;
    CodedStream stream;
    stream.isWhole = configuration.size() > kArrays && (configuration[kLengths] & 3U) == 3;
    if (!stream.isWhole) return stream;
    ByteView rest = configuration.subspan(kArrays + 1);
    for (unsigned i = 0; i < configuration[kArrays] && stream.isWhole; ++i) {
        stream.isWhole = rest.size() >= 3;
        if (!stream.isWhole) break;
        const std::size_t units = Bits(rest.subspan(1)).read(16);
        rest = rest.subspan(3);
        stream.isWhole = readUnits(rest, 2, units, stream);
    }
    stream.isWhole = stream.isWhole && readUnits(data, 4, data.size(), stream);
    return stream;
}

CodedStream av1Stream(ByteView configuration, ByteView data) {
    constexpr std::size_t kHead = 4;
    CodedStream stream;
    Sequence sequence;
    stream.isWhole = configuration.size() >= kHead &&
                     readObus(configuration.subspan(kHead), sequence, stream) &&
                     readObus(data, sequence, stream);
    return stream;
}

}  // namespace tkv
