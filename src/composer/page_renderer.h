#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>

#include "composer/page.h"
#include "platform/bitmap.h"
#include "platform/drawing.h"

namespace tkv {

/// Draws pages. A picture is decoded and scaled, a text laid out and rasterised once; later pages
/// blend what was made. Prepared layers are kept until their pixels fill the budget; what comes
/// later is made for its page alone, so that the memory of a run does not grow with its length, and
/// loops longer than the budget still find their first layers again.
class PageRenderer {
  public:
    static constexpr std::size_t kDefaultBudget = 24U << 20U;

    /// `budget`: bytes of pixels kept for later pages.
    explicit PageRenderer(std::size_t budget = kDefaultBudget) : room_(budget) {}

    /// The page drawn on a new bitmap of its canvas' size; none when there is no memory for it.
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

    std::size_t room_;
    std::map<Key, Prepared> kept_;
};

}  // namespace tkv
