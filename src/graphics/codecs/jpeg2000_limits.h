#pragma once

#include <openjpeg.h>

#include "graphics/codecs/codecs.h"

// What OpenJPEG takes beside the samples, and whether it can be trusted with damaged files.

namespace tkv {

/// The bytes that it holds for the tiles and components that the codestream states, which are there
/// as soon as its header is read.
std::int64_t tileBytes(ByteView file);

/// What it holds for the code blocks of a tile and the precincts that they lie in, of all its
/// resolutions: of blocks of 64 x 64 next to nothing, of smaller ones many times the pixels.
/// `full`: the picture. `info`: with its default tile's coding.
std::int64_t structureBytes(const opj_codestream_info_v2_t& info, PixelSize full);

/// Files that end too soon, or hold wrong bytes, could be shown in part; but before 2.5.3 the
/// library then read behind its data.
bool canBeLenient();

}  // namespace tkv
