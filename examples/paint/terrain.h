// Land seen in perspective, painted from a height over the ground plane.
#pragma once

#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <vector>

struct View {
    double eye;
    double horizon;
    double focal;
    double near;
    double far;
    double stride = 1.003;  // each step away from the viewer, as a factor
    double detail = 3.0;    // how much shorter the steps are where the land is in sight
};

// One column of pixels, gathered from several finer ones so that ridges are not jagged.
class Column {
  public:
    static constexpr int fine = 3;

    explicit Column(int height)
        : rows_(height * fine), sum_(static_cast<std::size_t>(height)), hits_(sum_.size()) {}

    void start(double y) { top_ = std::min(rows_, static_cast<int>(y * fine)); }
    bool shows(double y) const { return std::ceil(y * fine) < top_; }
    bool full() const { return top_ <= 0; }

    // Everything from y down to what is painted already.
    void raise(double y, Rgb colour) {
        const int row = std::max(0, static_cast<int>(std::ceil(y * fine)));
        for (int r = row; r < top_; ++r) {
            const auto pixel = static_cast<std::size_t>(r / fine);
            sum_[pixel] = sum_[pixel] + colour;
            ++hits_[pixel];
        }
        top_ = std::min(top_, row);
    }

    void put(Picture& picture, int x) const {
        for (int y = 0; y < picture.height(); ++y) {
            const int hits = hits_[static_cast<std::size_t>(y)];
            if (hits == 0) continue;
            const Rgb mean = sum_[static_cast<std::size_t>(y)] * (1.0 / hits);
            picture.at(x, y) = mix(picture.at(x, y), mean, 1.0 * hits / (fine * fine));
        }
    }

  private:
    int rows_;
    int top_ = 0;
    std::vector<Rgb> sum_;
    std::vector<int> hits_;
};

// Walks one ray outwards; returns the row where the land begins.
template <class Height, class Shade>
double walk(Column& column, const View& view, double side, double bottom, Height height,
            Shade shade) {
    double shore = bottom;
    bool landed = false;
    column.start(bottom);
    double step = view.stride;
    for (double z = view.near; z < view.far && !column.full(); z *= step) {
        const double h = height(side * z, z);
        if (h <= 0.0) continue;
        if (!landed) {
            landed = true;
            shore = view.horizon + view.eye * view.focal / z;
            column.start(shore);
        }
        const double y = view.horizon - (h - view.eye) * view.focal / z;
        if (column.shows(y)) column.raise(y, shade(side * z, z, h));
        // Long steps over a crest would give the skyline teeth; behind it they do no harm.
        const bool near = column.shows(y - 10.0);
        step = near ? 1.0 + (view.stride - 1.0) / view.detail : view.stride;
    }
    return shore;
}

// Paints height(x, z) with shade(x, z, height). Returns where the land begins in each column, for
// the water in front of it.
template <class Height, class Shade>
std::vector<double> terrain(Picture& picture, const View& view, Height height, Shade shade) {
    std::vector<double> shore;
    for (int x = picture.left(); x < picture.right(); ++x) {
        Column column(picture.height());
        double start = 0.0;
        for (int part = 0; part < Column::fine; ++part) {
            const double across = x + (part + 0.5) / Column::fine - picture.middle();
            start = walk(column, view, across / view.focal, picture.height(), height, shade);
        }
        shore.push_back(start);
        column.put(picture, x);
    }
    return shore;
}
