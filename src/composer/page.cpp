#include "composer/page.h"

#include "system/paths.h"

namespace tkv {

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
