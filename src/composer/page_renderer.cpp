#include "composer/page_renderer.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>
#include <variant>

#include "composer/page_texts.h"
#include "composer/reasons.h"
#include "graphics/formats.h"
#include "system/module.h"
#include "system/unicode.h"

namespace tkv {

namespace {

/// The pixel-aligned bounding box of a rectangle on its canvas, origin at the top left.
struct PixelArea {
    int left = 0;
    int top = 0;
    PixelSize size;
};

PixelArea visibleArea(const Rect& rect, PixelSize canvas) {
    const auto from = [](double edge) { return std::max(0, static_cast<int>(std::floor(edge))); };
    const auto to = [](double edge, int end) {
        return std::min(end, static_cast<int>(std::ceil(edge)));
    };
    const int left = from(rect.x);
    const int top = from(canvas.height - rect.y - rect.height);
    return {left,
            top,
            {to(rect.x + rect.width, canvas.width) - left,
             to(canvas.height - rect.y, canvas.height) - top}};
}

/// The part `source` of a picture (in its drawing units), scaled to `destination` on the canvas:
/// what is visible of it.
std::optional<PlacedBitmap> placed(const Bitmap& picture, const Rect& source,
                                   const Rect& destination, PixelSize canvas) {
    const PixelArea area = visibleArea(destination, canvas);
    if (area.size.width < 1 || area.size.height < 1) return std::nullopt;
    const double bottom = canvas.height - area.top - area.size.height;
    const Rect to{destination.x - area.left, destination.y - bottom, destination.width,
                  destination.height};
    if (std::optional<Bitmap> filled = filledBy(area.size, picture, source, to))
        return PlacedBitmap{*std::move(filled), area.left, area.top};
    std::optional<Bitmap> scaled = Bitmap::create(area.size);
    if (!scaled) throw std::bad_alloc();
    const bool isWhole = drawPicture(*scaled, picture, source, to, Compositing::sourceOver, 1.0);
    return PlacedBitmap{*std::move(scaled), area.left, area.top, isWhole};
}

/// Decodes the picture at about the size in which it is shown and scales its visible part.
std::optional<PlacedBitmap> preparePicture(const PictureLayer& layer, PixelSize canvas) {
    const PixelSize visible = visibleArea(layer.destination, canvas).size;
    if (visible.width < 1 || visible.height < 1) return std::nullopt;
    std::optional<PixelSize> size;
    std::optional<Bitmap> picture = decodePicture(layer.file, [&](PixelSize full) {
        size = full;
        // A loop has thousands of frames, and decoding them is most of a run.
        if (layer.isNamed) return sufficientFor(layer.scaledTo);
        return PixelSize{static_cast<int>(std::ceil(layer.scaledTo.width)),
                         static_cast<int>(std::ceil(layer.scaledTo.height))};
    });
    if (!picture) {
        if (layer.isNamed) tellWhyNoPicture(layer.file, size);
        return std::nullopt;
    }
    picture->setNominalSize(layer.scaledTo);
    return placed(*picture, layer.source, layer.destination, canvas);
}

/// A text, scaled where it is laid out on another canvas.
std::optional<PlacedBitmap> prepareText(const TextLayer& layer, PixelSize canvas) {
    if (layer.text.empty()) return std::nullopt;
    const PixelSize own = layer.laidOutOn == PixelSize{} ? canvas : layer.laidOutOn;
    std::optional<PlacedBitmap> made =
        rasterizeText(inCase(layer.text, layer.letterCase), layer.attributes, layer.place, own);
    if (!made || own == canvas) return made;
    const PixelSize size = made->pixels.size();
    const double x = static_cast<double>(canvas.width) / own.width;
    const double y = static_cast<double>(canvas.height) / own.height;
    std::optional<PlacedBitmap> shown =
        placed(made->pixels, {},
               {made->left * x, (own.height - made->top - size.height) * y, size.width * x,
                size.height * y},
               canvas);
    if (shown) shown->isWhole &= made->isWhole;
    return shown;
}

double opacityOf(const Layer& layer) {
    const auto* picture = std::get_if<PictureLayer>(&layer);
    return picture != nullptr ? double{picture->opacity} : 1.0;
}

/// The length of the common prefix of the pages' layers, the lowest first.
std::size_t sharedLayers(const Page& a, const Page& b) {
    if (a.canvas != b.canvas) return 0;
    const auto end = std::ranges::mismatch(a.layers, b.layers).in1;
    return static_cast<std::size_t>(end - a.layers.begin());
}

std::size_t bytesOf(const PlacedBitmap& placed) {
    return placed.pixels.rowBytes() * static_cast<std::size_t>(placed.pixels.height());
}

}  // namespace

std::optional<PlacedBitmap> prepareLayer(const Layer& layer, PixelSize canvas) {
    if (const auto* picture = std::get_if<PictureLayer>(&layer)) {
        return preparePicture(*picture, canvas);
    }
    return prepareText(std::get<TextLayer>(layer), canvas);
}

PageRenderer::Prepared PageRenderer::prepared(const Layer& layer, PixelSize canvas) {
    Key key{canvas, layer};
    if (const auto known = cache_.find(key); known != cache_.end()) return known->second;
    std::optional<PlacedBitmap> made = prepare_(layer, canvas);
    Prepared result = made ? std::make_shared<PlacedBitmap>(*std::move(made)) : nullptr;
    if (result && !result->isWhole) return result;  // Not cached: a later attempt may succeed.
    const std::size_t cost = result ? bytesOf(*result) : 0;
    if (cost <= budgetLeft_) {
        budgetLeft_ -= cost;
        cache_.emplace(std::move(key), result);
    }
    return result;
}

bool PageRenderer::draw(const Layer& layer, Bitmap& canvas) {
    if (const auto* fill = std::get_if<FillLayer>(&layer))
        return fillRect(canvas, fill->area, fill->color);
    const Prepared placed = prepared(layer, canvas.size());
    return !placed || (placed->isWhole && blend(canvas, *placed, opacityOf(layer)));
}

std::optional<Bitmap> PageRenderer::render(const Page& page) {
    const std::size_t shared = sharedLayers(before_, page);
    const bool isOnGround = ground_ && groundLayers_ == shared;
    if (!isOnGround) ground_.reset();
    std::optional<Bitmap> canvas = isOnGround ? ground_->copy() : Bitmap::create(page.canvas);
    if (!canvas) return std::nullopt;
    for (std::size_t i = isOnGround ? shared : 0; i < page.layers.size(); ++i) {
        if (!draw(page.layers[i], *canvas)) return std::nullopt;
        if (i + 1 == shared) {
            ground_ = canvas->copy();
            groundLayers_ = shared;
        }
    }
    if (wasModuleMissed()) return std::nullopt;
    before_ = page;
    return canvas;
}

}  // namespace tkv
