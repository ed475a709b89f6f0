#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "composer/page.h"
#include "graphics/bitmap.h"
#include "graphics/drawing.h"

namespace tkv {

/// Makes a picture or a text ready to be blended on a canvas: decodes and scales the one, lays out
/// and rasterises the other. None when nothing of it is visible; for a picture that the request
/// names, a line says why. Throws std::bad_alloc.
std::optional<PlacedBitmap> prepareLayer(const Layer& layer, PixelSize canvas);
using LayerMaker = std::function<std::optional<PlacedBitmap>(const Layer&, PixelSize canvas)>;

/// Draws pages. A picture is decoded and scaled, a text laid out and rasterised once; later pages
/// blend the cached pixels, and start from a snapshot of the lowest layers that they share with the
/// page before. Prepared layers are cached until their pixels fill the budget, and never evicted:
/// the memory of a run does not grow with its length, and loops longer than the budget still hit
/// the cache for their first layers.
class PageRenderer {
  public:
    static constexpr std::size_t kDefaultBudget = 24U << 20U;

    /// `budget`: bytes of pixels to cache. `prepare`: called for layers that are not cached.
    explicit PageRenderer(std::size_t budget = kDefaultBudget, LayerMaker prepare = prepareLayer)
        : budgetLeft_(budget), prepare_(std::move(prepare)) {}

    /// The page drawn on a new bitmap of its canvas' size; none when there is no memory for it, or
    /// parts of it cannot be drawn because the drawing library fails or the desktop module is
    /// missing.
    std::optional<Bitmap> render(const Page& page);

  private:
    /// Null for a layer of which nothing shows.
    using Prepared = std::shared_ptr<const PlacedBitmap>;
    struct Key {
        PixelSize canvas;
        Layer layer;
        auto operator<=>(const Key&) const = default;
    };

    Prepared prepared(const Layer& layer, PixelSize canvas);
    bool draw(const Layer& layer, Bitmap& canvas);

    std::size_t budgetLeft_;
    LayerMaker prepare_;
    std::map<Key, Prepared> cache_;
    Page before_;                   // of the previous call
    std::optional<Bitmap> ground_;  // its first groundLayers_ layers
    std::size_t groundLayers_ = 0;
};

}  // namespace tkv
