#pragma once

#include "graphics/codecs/codecs.h"
#include "graphics/sheet.h"
#include "graphics/text.h"

// The module's functions. Each is documented where the program declares its forwarding function,
// which has the same name in the enclosing namespace.

namespace tkv::desktop {

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas);
std::u32string lettersWithoutFont(const std::string& text);
std::string fallbackFaces();
bool isReadByPixbuf(ByteView head);
std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed);
std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> factor);
std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> factor);
std::optional<Bytes> sheetPdf(const Sheet& sheet);
bool moveToTrash(const std::string& path);

}  // namespace tkv::desktop
