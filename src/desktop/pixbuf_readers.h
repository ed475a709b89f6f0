#pragma once

#include <string_view>

#include "graphics/codecs/codecs.h"

namespace tkv::desktop {

/// One of GdkPixbuf's formats that are read, and what is known of its reader.
struct PixbufReader {
    std::string_view name;  ///< as GdkPixbuf calls the format
    /// What the reader holds at most beside the file, in bytes, as far as the file states it. Null
    /// for readers that tell the picture's size before they ask for memory.
    std::int64_t (*bytesFor)(ByteView file) = nullptr;
    /// Where the file ends too soon, the rows before that are there; of others there is nothing.
    bool comesRowByRow = false;
};

/// Which reader a file is for that begins with `head`; null when it is of no known format, or of
/// one that is not read. Not read are JPEG, which has a codec of its own, and formats whose readers
/// nothing bounds: vector pictures, and files that hold files of other formats.
const PixbufReader* pixbufReaderFor(ByteView head);

}  // namespace tkv::desktop
