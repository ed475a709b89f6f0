#pragma once

#include <string_view>
#include <vector>

#include "graphics/codecs/codecs.h"

namespace tkv::desktop {

/// One of GdkPixbuf's formats that are read, and what is known of its reader.
struct PixbufReader {
    std::string_view name;  ///< as GdkPixbuf calls the format
    /// The bytes that the reader allocates at most besides the file, as far as the file states
    /// them. Null for readers that report the picture's size before they allocate.
    std::int64_t (*bytesFor)(ByteView file) = nullptr;
    /// Whether the file has what its reader needs in order to be bounded; null where that is so
    /// with any.
    bool (*isBounded)(ByteView file) = nullptr;
    /// What of the file the reader gets, in this order; null where that is all of it.
    std::vector<ByteView> (*parts)(ByteView file) = nullptr;
    /// The ICC profile of the file's colours where its reader may not report it; empty without one,
    /// null where the reader does.
    Bytes (*profile)(ByteView file) = nullptr;
    /// Loads progressively: a truncated file has the rows before its end, with other readers
    /// nothing.
    bool comesRowByRow = false;
};

/// The reader for a file that begins with `head`; null for unknown formats, and for those that are
/// not read: JPEG, which has its own codec, and formats whose readers are unbounded, which are
/// vector pictures and containers of other formats.
const PixbufReader* pixbufReaderFor(ByteView head);

}  // namespace tkv::desktop
