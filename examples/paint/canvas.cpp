#include "canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>

double clamp01(double x) {
    return std::clamp(x, 0.0, 1.0);
}

double smooth(double from, double to, double x) {
    const double t = clamp01((x - from) / (to - from));
    return t * t * (3.0 - 2.0 * t);
}

Rgb ramp(std::initializer_list<Stop> stops, double t) {
    const Stop* before = stops.begin();
    for (const Stop& stop : stops) {
        if (t < stop.first) {
            const double span = stop.first - before->first;
            return span > 0.0 ? mix(before->second, stop.second, (t - before->first) / span)
                              : stop.second;
        }
        before = &stop;
    }
    return before->second;
}

double Random::next() {
    state_ += 0x9e3779b97f4a7c15u;
    std::uint64_t bits = state_;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9u;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebu;
    return static_cast<double>((bits ^ (bits >> 31)) >> 11) * 0x1.0p-53;
}

namespace {

struct Direction {
    double x;
    double y;
};

std::array<Direction, 64> makeDirections() {
    std::array<Direction, 64> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) / 64.0;
        all[i] = {std::cos(angle), std::sin(angle)};
    }
    return all;
}

double slope(std::uint32_t seed, int ix, int iy, double dx, double dy) {
    static const std::array<Direction, 64> directions = makeDirections();
    std::uint32_t hash = seed * 0x9e3779b1u ^ static_cast<std::uint32_t>(ix) * 0x85ebca77u ^
                         static_cast<std::uint32_t>(iy) * 0xc2b2ae3du;
    hash = (hash ^ (hash >> 15)) * 0x2c1b3c6du;
    hash = (hash ^ (hash >> 12)) * 0x297a2d39u;
    const Direction& d = directions[(hash >> 20) & 63u];
    return d.x * dx + d.y * dy;
}

double ease(double t) {
    return t * t * t * (t * (t * 6.0 - 15.0) + 10.0);
}

}  // namespace

double Noise::at(double x, double y) const {
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const int ix = static_cast<int>(fx);
    const int iy = static_cast<int>(fy);
    const double dx = x - fx;
    const double dy = y - fy;
    const double top =
        std::lerp(slope(seed_, ix, iy, dx, dy), slope(seed_, ix + 1, iy, dx - 1.0, dy), ease(dx));
    const double bottom = std::lerp(slope(seed_, ix, iy + 1, dx, dy - 1.0),
                                    slope(seed_, ix + 1, iy + 1, dx - 1.0, dy - 1.0), ease(dx));
    return 1.5 * std::lerp(top, bottom, ease(dy));
}

double Noise::layers(double x, double y, int count) const {
    double sum = 0.0;
    double weight = 0.55;
    for (int i = 0; i < count; ++i) {
        sum += weight * at(x, y);
        weight *= 0.5;
        // Turning each octave hides the lattice all of them share.
        const double turned = 1.6 * x - 1.2 * y + 5.3;
        y = 1.2 * x + 1.6 * y + 9.1;
        x = turned;
    }
    return sum;
}

double Noise::ridged(double x, double y, int count) const {
    double sum = 0.0;
    double weight = 0.5;
    double carry = 1.0;
    for (int i = 0; i < count; ++i) {
        const double crest = 1.0 - std::min(1.0, std::abs(at(x, y)));
        carry *= crest * crest;
        sum += weight * carry;
        carry = std::min(1.0, carry * 1.6);
        weight *= 0.43;  // less than half: crags, but no needles
        const double turned = 1.6 * x - 1.2 * y + 3.7;
        y = 1.2 * x + 1.6 * y + 1.9;
        x = turned;
    }
    return sum;
}

double Noise::looped(double x, double y, double t, double drift, int count) const {
    const double coming = layers(x - drift * t, y, count);
    const double going = layers(x - drift * (t - 1.0), y, count);
    // The mean of two unrelated noises is flatter than either: give the contrast back.
    return std::lerp(coming, going, t) / std::hypot(t, 1.0 - t);
}

Mask::Mask(int left, int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height)),
      pen_(cairo_create(surface_.get())) {
    cairo_translate(pen_.get(), -left, 0.0);
}

const unsigned char* Mask::row(int y) {
    cairo_surface_flush(surface_.get());
    return cairo_image_surface_get_data(surface_.get()) +
           static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface_.get());
}

Picture::Picture(int width, int height, int left)
    : width_(width),
      height_(height),
      left_(left),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

Rgb Picture::sample(double x, double y) const {
    x = std::clamp(x, 1.0 * left(), right() - 1.001);
    y = std::clamp(y, 0.0, height_ - 1.001);
    const int ix = static_cast<int>(std::floor(x));
    const int iy = static_cast<int>(y);
    const Rgb top = mix(at(ix, iy), at(ix + 1, iy), x - ix);
    const Rgb bottom = mix(at(ix, iy + 1), at(ix + 1, iy + 1), x - ix);
    return mix(top, bottom, y - iy);
}

void Picture::glow(double x, double y, double radius, Rgb light) {
    const auto clip = [](double v, int from, int to) {
        return static_cast<int>(std::clamp(v, 1.0 * from, 1.0 * to));
    };
    const int bottom = clip(y + radius + 1.0, 0, height_);
    const int end = clip(x + radius + 1.0, left(), right());
    for (int row = clip(y - radius, 0, height_); row < bottom; ++row) {
        for (int column = clip(x - radius, left(), right()); column < end; ++column) {
            const double far = std::hypot(column - x, row - y) / radius;
            if (far >= 1.0) continue;
            const double fade = (1.0 - far) * (1.0 - far);
            at(column, row) = screen(at(column, row), light * (fade * fade * (1.0 + 3.0 * far)));
        }
    }
}

void Picture::vignette(double amount) {
    shade([&](int x, int y, Rgb old) {
        const double dx = 2.0 * (x - left_) / width_ - 1.0;
        const double dy = 2.0 * y / height_ - 1.0;
        return old * (1.0 - amount * smooth(0.5, 2.0, dx * dx + dy * dy));
    });
}

void Picture::grain(double amount, std::uint64_t seed) {
    Random random(seed);
    shade([&](int, int, Rgb old) {
        const double speck = (random.next() + random.next() + random.next() - 1.5) * amount;
        return Rgb{old.r + speck, old.g + speck, old.b + speck};
    });
}

void Picture::save(const std::string& path) const {
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width_, height_));
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    Random random(7);
    // Dithering: a random rounding threshold gives noise instead of banding.
    const auto level = [&random](double value) {
        return static_cast<std::uint32_t>(clamp01(value) * 254.999 + random.next());
    };
    for (int y = 0; y < height_; ++y) {
        auto* row =
            reinterpret_cast<std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < width_; ++x) {
            const Rgb& pixel = at(left_ + x, y);
            const std::uint32_t red = level(pixel.r) << 16;
            const std::uint32_t green = level(pixel.g) << 8;
            row[x] = red | green | level(pixel.b);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    if (cairo_surface_write_to_png(surface.get(), path.c_str()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error("cannot write " + path);
}
