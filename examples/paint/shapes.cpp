#include "shapes.h"

#include <numbers>

void polygon(cairo_t* pen, std::initializer_list<Point> corners) {
    for (const Point& corner : corners)
        cairo_line_to(pen, corner.x, corner.y);
    cairo_close_path(pen);
    cairo_fill(pen);
}

void disc(cairo_t* pen, double x, double y, double radius) {
    oval(pen, x, y, radius, radius);
}

void oval(cairo_t* pen, double x, double y, double rx, double ry) {
    cairo_save(pen);
    cairo_translate(pen, x, y);
    cairo_scale(pen, rx, ry);
    cairo_arc(pen, 0.0, 0.0, 1.0, 0.0, 2.0 * std::numbers::pi);
    cairo_restore(pen);
    cairo_fill(pen);
}

void box(cairo_t* pen, double x, double y, double width, double height) {
    cairo_rectangle(pen, x, y, width, height);
    cairo_fill(pen);
}

void stroke(cairo_t* pen, double width, std::initializer_list<Point> corners) {
    for (const Point& corner : corners)
        cairo_line_to(pen, corner.x, corner.y);
    cairo_set_line_width(pen, width);
    cairo_set_line_cap(pen, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(pen, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(pen);
}

void conifer(cairo_t* pen, double x, double base, double height, Random& random) {
    const int tiers = std::clamp(static_cast<int>(height / 7.0), 5, 26);
    const double reach = height * random.in(0.17, 0.24);
    const double lean = height * random.in(-0.02, 0.02);
    const auto side = [&](int tier, double sign) {
        const double t = (tier + 1.0) / tiers;
        const double y = base - height * (1.0 - t * 0.94);
        const double out = reach * std::pow(t, 0.8) * random.in(0.65, 1.1);
        const double stem = x + lean * (1.0 - t);
        cairo_line_to(pen, stem + sign * out, y + height * 0.025);
        cairo_line_to(pen, stem + sign * out * 0.45, y - height * 0.012);
    };
    cairo_move_to(pen, x + lean, base - height);
    for (int tier = 0; tier < tiers; ++tier)
        side(tier, 1.0);
    cairo_line_to(pen, x + height * 0.018, base);
    cairo_line_to(pen, x - height * 0.018, base);
    for (int tier = tiers - 1; tier >= 0; --tier) {
        // The left side climbs, so its two points come in the other order.
        const double t = (tier + 1.0) / tiers;
        const double y = base - height * (1.0 - t * 0.94);
        const double out = reach * std::pow(t, 0.8) * random.in(0.65, 1.1);
        const double stem = x + lean * (1.0 - t);
        cairo_line_to(pen, stem - out * 0.45, y - height * 0.012 + height * 0.94 / tiers * 0.6);
        cairo_line_to(pen, stem - out, y + height * 0.025);
        cairo_line_to(pen, stem - out * 0.4, y - height * 0.012);
    }
    cairo_close_path(pen);
    cairo_fill(pen);
}

Cloud cloudAt(const Noise& noise, double x, double above, double scale, double amount) {
    // Clouds lie on a flat ceiling: they shrink and crowd towards the horizon.
    const double far = 1.0 / (above + 0.16);
    const double u = x * far * scale;
    const double v = far * scale * 1.7;
    const double here = noise.layers(u, v, 6);
    const double sunward = noise.layers(u + 0.12, v + 0.16, 4);
    const double edge = 0.45 - amount;
    return {smooth(edge, edge + 0.55, here), clamp01(0.5 + 1.3 * (here - sunward))};
}

void reflect(Picture& picture, const Water& water, const std::vector<double>& shore) {
    const Picture above = picture;
    const Noise waves(91);
    picture.shade([&](int x, int y, Rgb old) {
        // The pixel the shore runs through still shows some sky between land and water.
        const double start = shore[static_cast<std::size_t>(x - picture.left())] - 1.0;
        const double depth = y - water.line;
        if (y + 1.0 <= start || depth <= 0.0) return old;
        // Equal waves look shorter and flatter the nearer they are to the line.
        const double far = 100.0 / (depth + 4.0);
        const double u = (x - picture.middle()) * far / water.scale;
        const double v = 18.0 * far * 100.0 / water.scale;
        const double wave = waves.layers(u * 0.35 + water.phase, v * 0.35, 4);
        const double sway = water.ripple * (depth + 6.0);
        Rgb seen{};
        for (int i = -2; i <= 2; ++i)
            seen = seen + above.sample(x + wave * sway * 0.25,
                                       water.line - depth - wave * sway + i * sway * 0.2) *
                              0.2;
        const double clear = 0.86 - 0.4 * depth / (picture.height() - water.line) + 0.10 * wave;
        return mix(old, mix(water.deep, seen, clamp01(clear)), clamp01(y + 1.0 - start));
    });
}
