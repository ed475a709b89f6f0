#include "disc/subtitle/picture.h"

#include <ass/ass.h>

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace tkv::disc {

namespace {

using Weights = std::map<std::uint32_t, double>;  // of colours, by the pixels that they cover

// Colours of libass are RRGGBBTT, where T is what shines through.
std::uint32_t colorOf(const ASS_Image& image) {
    return image.color >> 8U;
}

double opacityOf(const ASS_Image& image) {
    return (255 - (image.color & 0xFFU)) / 255.0;
}

using Pixel = SubtitlePixel;

Pixel opaque(std::uint32_t color) {
    const auto channel = [color](unsigned shift) {
        return static_cast<float>(color >> shift & 0xFFU) / 255;
    };
    return {channel(16), channel(8), channel(0), 1};
}

float squared(float value) {
    return value * value;
}

// How different two pixels look over black, and over white.
float difference(const Pixel& a, const Pixel& b) {
    const float shine = b.alpha - a.alpha;
    const auto both = [shine](float x, float y) { return squared(x - y) + squared(x - y + shine); };
    return both(a.red, b.red) + both(a.green, b.green) + both(a.blue, b.blue);
}

struct Box {
    int left = std::numeric_limits<int>::max(), top = left, right = 0, bottom = 0;
    int width() const { return right - left; }
};

// What of libass' layers is drawn. Shadows beside an outline would end in specks, since a pixel is
// there or not.
std::vector<const ASS_Image*> layersOf(const ASS_Image* images) {
    std::vector<const ASS_Image*> layers;
    bool hasOutline = false;
    for (const ASS_Image* image = images; image != nullptr; image = image->next) {
        if (image->w <= 0 || image->h <= 0 || (image->color & 0xFFU) == 0xFF) continue;
        layers.push_back(image);
        hasOutline = hasOutline || image->type == ASS_Image::IMAGE_TYPE_OUTLINE;
    }
    std::erase_if(layers, [&](const ASS_Image* image) {
        return hasOutline && image->type == ASS_Image::IMAGE_TYPE_SHADOW;
    });
    return layers;
}

Box boxOf(const std::vector<const ASS_Image*>& layers) {
    Box box;
    for (const ASS_Image* image : layers) {
        box.left = std::min(box.left, image->dst_x & ~1);
        box.top = std::min(box.top, image->dst_y & ~1);
        box.right = std::max(box.right, (image->dst_x + image->w + 1) & ~1);
        box.bottom = std::max(box.bottom, (image->dst_y + image->h + 1) & ~1);
    }
    return box;
}

// Blends a layer over the others. Returns how many pixels it covers.
double blend(const ASS_Image& image, const Box& box, std::vector<Pixel>& canvas) {
    const Pixel color = opaque(colorOf(image));
    const double opacity = opacityOf(image);
    double covered = 0;
    for (int row = 0; row < image.h; ++row) {
        const unsigned char* const from =
            image.bitmap + static_cast<std::ptrdiff_t>(row) * image.stride;
        Pixel* const to = &canvas[static_cast<std::size_t>(image.dst_y + row - box.top) *
                                      static_cast<std::size_t>(box.width()) +
                                  static_cast<std::size_t>(image.dst_x - box.left)];
        for (int column = 0; column < image.w; ++column) {
            if (from[column] == 0) continue;
            const auto alpha = static_cast<float>(opacity * from[column] / 255);
            covered += alpha;
            Pixel& pixel = to[column];
            pixel.red += (color.red - pixel.red) * alpha;
            pixel.green += (color.green - pixel.green) * alpha;
            pixel.blue += (color.blue - pixel.blue) * alpha;
            pixel.alpha += (1 - pixel.alpha) * alpha;
        }
    }
    return covered;
}

std::size_t placeIn(const SubtitlePicture& picture, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
           static_cast<std::size_t>(x);
}

std::uint32_t heaviest(const Weights& weights) {
    return std::ranges::max_element(weights, {}, &Weights::value_type::second)->first;
}

// Values 1 to 3: the outline, what is between, and the letters.
std::array<std::uint32_t, kSubpictureColors> colorsOf(Weights letters, const Weights& outlines) {
    constexpr double kLeastPart = 0.05;
    const std::uint32_t outline = outlines.empty() ? 0 : heaviest(outlines);
    if (letters.empty()) return {0, outline, outline, outline};
    double all = 0;
    for (const auto& [color, weight] : letters)
        all += weight;
    const std::uint32_t letter = heaviest(letters);
    letters.erase(letter);
    const bool hasSecond = !letters.empty() && letters[heaviest(letters)] > kLeastPart * all;
    return {0, outline, hasSecond ? heaviest(letters) : colorBetween(outline, letter), letter};
}

// Without the rows and columns at its edges that show nothing; places stay even.
SubtitlePicture trimmed(const SubtitlePicture& picture) {
    int left = picture.width, top = picture.height, right = 0, bottom = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.pixels[placeIn(picture, x, y)] == 0) continue;
            left = std::min(left, x & ~1);
            top = std::min(top, y & ~1);
            right = std::max(right, (x + 2) & ~1);
            bottom = std::max(bottom, (y + 2) & ~1);
        }
    }
    SubtitlePicture part;
    if (right == 0) return part;
    part = {picture.x + left, picture.y + top, right - left, bottom - top, {}, picture.colors};
    part.pixels.reserve(placeIn(part, 0, part.height));
    for (int y = top; y < bottom; ++y) {
        const auto row =
            picture.pixels.begin() + static_cast<std::ptrdiff_t>(placeIn(picture, left, y));
        part.pixels.insert(part.pixels.end(), row, row + part.width);
    }
    return part;
}

}  // namespace

std::uint32_t colorBetween(std::uint32_t a, std::uint32_t b) {
    std::uint32_t color = 0;
    for (const unsigned shift : {16U, 8U, 0U})
        color |= ((a >> shift & 0xFFU) + (b >> shift & 0xFFU)) / 2 << shift;
    return color;
}

SubtitlePicture quantised(SubtitlePicture picture, const std::vector<SubtitlePixel>& pixels) {
    std::array<Pixel, kSubpictureColors> values{};
    for (std::size_t i = 1; i < values.size(); ++i)
        values[i] = opaque(picture.colors[i]);
    picture.pixels.clear();
    picture.pixels.reserve(pixels.size());
    for (const Pixel& pixel : pixels) {
        if (pixel.alpha == 0) {
            picture.pixels.push_back(0);
            continue;
        }
        const auto* const nearest = std::ranges::min_element(
            values, {}, [&](const Pixel& value) { return difference(pixel, value); });
        picture.pixels.push_back(static_cast<std::uint8_t>(nearest - values.begin()));
    }
    return trimmed(picture);
}

SubtitlePicture pictureOf(const ass_image* images) {
    const std::vector<const ASS_Image*> layers = layersOf(images);
    SubtitlePicture picture;
    if (layers.empty()) return picture;
    const Box box = boxOf(layers);
    picture.x = box.left;
    picture.y = box.top;
    picture.width = box.width();
    picture.height = box.bottom - box.top;
    std::vector<Pixel> canvas(static_cast<std::size_t>(picture.width) *
                              static_cast<std::size_t>(picture.height));
    Weights letters, outlines;
    for (const ASS_Image* image : layers) {
        const double covered = blend(*image, box, canvas);
        const bool isLetter = image->type == ASS_Image::IMAGE_TYPE_CHARACTER;
        (isLetter ? letters : outlines)[colorOf(*image)] += covered;
    }
    picture.colors = colorsOf(letters, outlines);
    return quantised(std::move(picture), canvas);
}

}  // namespace tkv::disc
