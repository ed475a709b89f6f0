// Shapes and natural features that several scenes share.
#pragma once

#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <vector>

struct Point {
    double x;
    double y;
};

void polygon(cairo_t* pen, std::initializer_list<Point> corners);
void disc(cairo_t* pen, double x, double y, double radius);
void oval(cairo_t* pen, double x, double y, double rx, double ry);
void box(cairo_t* pen, double x, double y, double width, double height);
void stroke(cairo_t* pen, double width, std::initializer_list<Point> corners);
void conifer(cairo_t* pen, double x, double base, double height, Random& random);

// Everything below the line y = top(x).
template <class Top>
void ground(cairo_t* pen, Top top) {
    double left, highest, right, lowest;
    cairo_clip_extents(pen, &left, &highest, &right, &lowest);
    cairo_move_to(pen, left - 2.0, lowest + 2.0);
    for (double x = left - 2.0; x <= right + 2.0; ++x)
        cairo_line_to(pen, x, top(x));
    cairo_line_to(pen, right + 2.0, lowest + 2.0);
    cairo_close_path(pen);
    cairo_fill(pen);
}

// How much cloud is seen at a pixel, and how brightly the sun lights it.
struct Cloud {
    double cover;
    double light;
};
Cloud cloudAt(const Noise& noise, double x, double above, double scale, double amount);

// Still water: mirrors what lies above `line` into the rows below the shore of each column.
struct Water {
    double line;
    double ripple;  // how far a wave moves the picture, as a share of its depth below the line
    double scale;   // pixels of a wave one hundred pixels below the line
    Rgb deep;
    double phase = 0.0;
};
void reflect(Picture& picture, const Water& water, const std::vector<double>& shore);
