#pragma once

#include <openjpeg.h>

#include <memory>

#include "graphics/codecs/codecs.h"
#include "graphics/releaser.h"

// The library's streams over bytes in memory.

namespace tkv {

using Jpeg2000Stream = std::unique_ptr<opj_stream_t, Releaser<opj_stream_destroy>>;

struct Jpeg2000Source {
    ByteView file;
    std::size_t position = 0;
};

struct Jpeg2000Target {
    Bytes file;
    std::size_t position = 0;

    /// Advances by `count` bytes, which become part of the file, and returns a pointer to the
    /// first; null when memory is short.
    std::uint8_t* advance(std::size_t count);
};

/// Each is null when memory is short. The source or target must outlive the stream.
Jpeg2000Stream readingStream(Jpeg2000Source& source);
Jpeg2000Stream writingStream(Jpeg2000Target& target);

}  // namespace tkv
