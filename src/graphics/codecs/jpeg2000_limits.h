#pragma once

#include <openjpeg.h>

#include "graphics/codecs/codecs.h"

// The memory that OpenJPEG takes besides the samples, and whether it is safe with damaged files.

namespace tkv {

/// The bytes that it allocates for the stated tiles and components as soon as it reads the header.
std::int64_t tileBytes(ByteView file);

/// The bytes for the code blocks and precincts of a tile, over all its resolutions: negligible for
/// blocks of 64 x 64, for smaller ones many times the pixels. `full`: the picture. `info`: with its
/// default tile's coding.
std::int64_t structureBytes(const opj_codestream_info_v2_t& info, PixelSize full);

/// Truncated or corrupt files could be shown in part; but before 2.5.3 the library then reads past
/// the end of its data.
bool canBeLenient();

}  // namespace tkv
