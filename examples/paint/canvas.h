// The painter's tools: colours, noise, a floating point picture and antialiased masks.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct Rgb {
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
};

constexpr Rgb operator+(Rgb a, Rgb b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
constexpr Rgb operator*(Rgb a, double k) {
    return {a.r * k, a.g * k, a.b * k};
}
constexpr Rgb operator*(Rgb a, Rgb b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}
constexpr Rgb mix(Rgb a, Rgb b, double t) {
    return a * (1.0 - t) + b * t;
}

// Light added to light: never leaves 0..1, so glows may overlap without clipping.
constexpr Rgb screen(Rgb a, Rgb b) {
    return {a.r + b.r - a.r * b.r, a.g + b.g - a.g * b.g, a.b + b.b - a.b * b.b};
}

constexpr Rgb hex(std::uint32_t rgb) {
    return {((rgb >> 16) & 255u) / 255.0, ((rgb >> 8) & 255u) / 255.0, (rgb & 255u) / 255.0};
}

double clamp01(double x);
double smooth(double from, double to, double x);  // 0 before `from`, 1 after `to`

using Stop = std::pair<double, Rgb>;
Rgb ramp(std::initializer_list<Stop> stops, double t);

// The standard distributions differ between libraries; the pictures must not.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    double next();  // 0 <= value < 1
    double in(double low, double high) { return low + (high - low) * next(); }

  private:
    std::uint64_t state_;
};

// Gradient noise. Every function returns roughly -1..1 (ridged: 0..1).
class Noise {
  public:
    explicit Noise(std::uint32_t seed) : seed_(seed) {}
    double at(double x, double y) const;
    double layers(double x, double y, int count) const;
    double ridged(double x, double y, int count) const;
    // Drifts along x by `drift` while t goes from 0 to 1, and is periodic in t.
    double looped(double x, double y, double t, double drift, int count) const;

  private:
    std::uint32_t seed_;
};

struct SurfaceFree {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceFree>;

// A coverage mask drawn with cairo's antialiasing, to be filled with any colour later.
class Mask {
  public:
    Mask(int left, int width, int height);
    cairo_t* pen() const { return pen_.get(); }
    const unsigned char* row(int y);

  private:
    struct PenFree {
        void operator()(cairo_t* pen) const { cairo_destroy(pen); }
    };
    Surface surface_;
    std::unique_ptr<cairo_t, PenFree> pen_;
};

// Colours stay floating point until they are saved: eight bits would show banding in wide
// gradients.
// Rows are counted from 0, columns from `left`.
class Picture {
  public:
    Picture(int width, int height, int left = 0);
    int left() const { return left_; }
    int right() const { return left_ + width_; }  // the column after the last
    double middle() const { return left_ + width_ / 2.0; }
    int height() const { return height_; }
    Rgb& at(int x, int y) { return pixels_[index(x, y)]; }
    const Rgb& at(int x, int y) const { return pixels_[index(x, y)]; }
    Rgb sample(double x, double y) const;  // bilinear, edges repeated

    // colour(x, y, old) for every pixel.
    template <class Colour>
    void shade(Colour colour) {
        for (int y = 0; y < height_; ++y)
            for (int x = left(); x < right(); ++x)
                at(x, y) = colour(x, y, at(x, y));
    }

    // draw(pen) makes the shape, colour(x, y) fills it.
    template <class Colour, class Draw>
    void fill(Colour colour, Draw draw) {
        Mask mask(left_, width_, height_);
        draw(mask.pen());
        for (int y = 0; y < height_; ++y) {
            const unsigned char* cover = mask.row(y);
            for (int x = left(); x < right(); ++x, ++cover)
                if (*cover != 0) at(x, y) = mix(at(x, y), colour(x, y), *cover / 255.0);
        }
    }

    template <class Draw>
    void fill(Rgb colour, Draw draw) {
        fill([colour](int, int) { return colour; }, draw);
    }

    void glow(double x, double y, double radius, Rgb light);
    void vignette(double amount);
    void grain(double amount, std::uint64_t seed);
    void save(const std::string& path) const;

  private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x - left_);
    }
    int width_;
    int height_;
    int left_;
    std::vector<Rgb> pixels_;
};
