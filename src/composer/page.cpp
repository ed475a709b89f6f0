#include "composer/page.h"

#include "system/paths.h"

namespace tkv {

Page scaledTo(Page page, PixelSize canvas) {
    if (page.canvas == canvas) return page;
    const double x = static_cast<double>(canvas.width) / page.canvas.width;
    const double y = static_cast<double>(canvas.height) / page.canvas.height;
    const auto scale = [x, y](Rect& rect) {
        rect = {rect.x * x, rect.y * y, rect.width * x, rect.height * y};
    };
    for (Layer& layer : page.layers) {
        if (auto* fill = std::get_if<FillLayer>(&layer)) scale(fill->area);
        if (auto* text = std::get_if<TextLayer>(&layer)) text->laidOutOn = page.canvas;
        if (auto* picture = std::get_if<PictureLayer>(&layer)) {
            picture->scaledTo = {picture->scaledTo.width * x, picture->scaledTo.height * y};
            scale(picture->source);
            scale(picture->destination);
        }
    }
    page.canvas = canvas;
    return page;
}

PictureLayer named(PictureLayer layer) {
    layer.isNamed = true;
    return layer;
}

PictureLayer wholePicture(const std::string& path, const Rect& destination, float opacity) {
    const std::string file = expandTilde(path);
    const Size size{destination.width, destination.height};
    return {file,        fileStamp(file).value_or(FileStamp{}),
            size,        {0, 0, size.width, size.height},
            destination, opacity};
}

}  // namespace tkv
