#include "graphics/shadow.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "graphics/pixels.h"

namespace tkv {

namespace {

/// A shadow's blur radius is twice the standard deviation, as in the canvas and style-sheet
/// standards of the web, and the Gaussian is truncated where it falls below a hundredth.
constexpr double kRadiusPerDeviation = 2.0;
constexpr double kDeviationsKept = 3.0;

int kernelReach(double blurRadius, double offset) {
    const double blur = blurRadius / kRadiusPerDeviation * kDeviationsKept;
    return static_cast<int>(std::ceil(blur + std::abs(offset)));
}

/// A normalised Gaussian around `offset`: element i weighs what lies i - reach pixels before.
std::vector<float> kernel(double blurRadius, double offset) {
    const int reach = kernelReach(blurRadius, offset);
    const double deviation = std::max(blurRadius / kRadiusPerDeviation, 0.25);
    std::vector<float> weights;
    double sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        const double distance = (i - offset) / deviation;
        weights.push_back(static_cast<float>(std::exp(-0.5 * distance * distance)));
        sum += static_cast<double>(weights.back());
    }
    for (float& weight : weights)
        weight /= static_cast<float>(sum);
    return weights;
}

/// Convolves `lines` lines of `length` values; the values of a line are `step` apart, lines
/// `stride`.
void convolve(const std::vector<float>& in, std::vector<float>& out,
              const std::vector<float>& weights, int length, int step, int lines, int stride) {
    const int reach = static_cast<int>(weights.size() / 2);
    for (int line = 0; line < lines; ++line) {
        const float* from = in.data() + std::ptrdiff_t{line} * stride;
        float* to = out.data() + std::ptrdiff_t{line} * stride;
        for (int i = 0; i < length; ++i, to += step) {
            float sum = 0;
            const int first = std::max(-reach, i - length + 1);
            const int last = std::min(reach, i);
            for (int k = first; k <= last; ++k) {
                sum += weights.data()[k + reach] * from[std::ptrdiff_t{i - k} * step];
            }
            *to = sum;
        }
    }
}

/// The bitmap's alpha in 0..1, blurred and offset.
std::vector<float> blurredShape(const Bitmap& bitmap, const Shadow& shadow) {
    const int width = bitmap.width();
    const int height = bitmap.height();
    std::vector<float> shape(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::vector<float> moved(shape.size());
    auto value = shape.begin();
    for (int y = 0; y < height; ++y) {
        const std::uint32_t* row = bitmap.row(y);
        value = std::transform(row, row + width, value, [](std::uint32_t pixel) {
            return static_cast<float>(alphaOf(pixel)) / 255.0F;
        });
    }
    convolve(shape, moved, kernel(shadow.blurRadius, shadow.offsetX), width, 1, height, width);
    // Rows run downwards, the shadow's offset upwards.
    convolve(moved, shape, kernel(shadow.blurRadius, -shadow.offsetY), height, width, width, 1);
    return shape;
}

/// `color` at `coverage`, composited below the premultiplied `pixel` (destination-over).
std::uint32_t under(std::uint32_t pixel, const Color& color, float coverage) {
    const float visible =
        coverage * color.alpha * (1.0F - static_cast<float>(alphaOf(pixel)) / 255.0F);
    const auto channel = [&](unsigned value, float part) {
        const float sum = static_cast<float>(value) + 255.0F * visible * part;
        return static_cast<unsigned>(std::lround(std::min(sum, 255.0F)));
    };
    return pixelOf(channel(alphaOf(pixel), 1.0F), channel(redOf(pixel), color.red),
                   channel(greenOf(pixel), color.green), channel(blueOf(pixel), color.blue));
}

}  // namespace

int shadowReach(const Shadow& shadow) {
    return std::max(kernelReach(shadow.blurRadius, shadow.offsetX),
                    kernelReach(shadow.blurRadius, shadow.offsetY));
}

void addShadow(Bitmap& bitmap, const Shadow& shadow) {
    const std::vector<float> shape = blurredShape(bitmap, shadow);
    auto coverage = shape.begin();
    for (int y = 0; y < bitmap.height(); ++y) {
        std::uint32_t* row = bitmap.row(y);
        for (int x = 0; x < bitmap.width(); ++x) {
            row[x] = under(row[x], shadow.color, *coverage++);
        }
    }
}

}  // namespace tkv
