#include "system/pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace tkv {

std::optional<Pipe> makePipe(int bytes) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    if (bytes > 0) fcntl(ends[1], F_SETPIPE_SZ, bytes);
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

bool writeWhole(const Descriptor& writeEnd, std::span<const std::byte> bytes) {
    const std::size_t written = transferAll(bytes.size(), [&](std::size_t done) {
        return write(writeEnd.number(), bytes.data() + done, bytes.size() - done);
    });
    return written == bytes.size();
}

}  // namespace tkv
