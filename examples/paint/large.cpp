#include "scenes.h"
#include "shapes.h"
#include "terrain.h"

#include <numbers>

namespace {

constexpr double lakeHorizon = 980.0;

Rgb duskSky(double x, double above, const Noise& noise) {
    const Rgb cool = ramp({{0.0, hex(0xb98a92)},
                           {0.16, hex(0x8d7797)},
                           {0.42, hex(0x4f5f8e)},
                           {0.75, hex(0x2b3c6b)},
                           {1.0, hex(0x182648)}},
                          above);
    const Rgb warm = ramp({{0.0, hex(0xffcf94)},
                           {0.12, hex(0xf6a27c)},
                           {0.34, hex(0x9c6f8b)},
                           {0.62, hex(0x48507f)},
                           {1.0, hex(0x1b294d)}},
                          above);
    const double sunward = smooth(-0.75, 0.55, x);
    const Rgb sky = mix(cool, warm, sunward);
    const Cloud cloud = cloudAt(noise, x, above, 0.55, 0.62);
    const Rgb lit = mix(hex(0xc08a95), hex(0xffb184), sunward * (1.0 - 0.6 * above));
    const Rgb shade = mix(hex(0x3f4a72), hex(0x80617f), sunward * (1.0 - above));
    const double thick = cloud.cover * (0.82 - 0.3 * above);
    return mix(sky, mix(shade, lit, cloud.light * cloud.light), thick);
}

// A lake between steep shores, closed by high peaks far behind it.
double lakeLand(const Noise& noise, double x, double z) {
    const double wander = 14.0 * noise.at(z * 0.012, 3.3);
    const double side = std::abs(x + 8.0 - wander * smooth(40.0, 120.0, z));
    const double bank =
        smooth(10.0, 120.0, side - 26.0 + 9.0 * noise.layers(x * 0.02, z * 0.02, 3));
    const double back = smooth(185.0, 420.0, z);
    const double basin =
        -1.2 + 26.0 * bank * smooth(60.0, 190.0, z) + 10.0 * smooth(165.0, 220.0, z);
    const double crags =
        noise.ridged(x * 0.0075 + 0.6, z * 0.0075, 5) + 0.028 * noise.layers(x * 0.14, z * 0.14, 5);
    const double peaks =
        crags * (26.0 * bank * smooth(50.0, 200.0, z) +
                 92.0 * back * (0.45 + 0.55 * smooth(20.0, 210.0, std::abs(x - 30.0))));
    const double land = basin + peaks;
    if (land < 0.3 || z > 260.0) return land;
    // Treetops roughen the slopes below the tree line.
    const double trees = clamp01(noise.at(x * 1.9, z * 1.9) + 0.3) * smooth(46.0, 20.0, land);
    return land + 1.7 * trees;
}

Rgb lakeColour(const Noise& noise, double x, double z, double h) {
    const double step = 0.12 + z * 0.0016;
    const double dx = (lakeLand(noise, x + step, z) - h) / step;
    const double dz = (lakeLand(noise, x, z + step) - h) / step;
    const double size = std::sqrt(dx * dx + dz * dz + 1.0);
    const double sun = clamp01((-dx * 0.80 + dz * 0.18 + 0.30) / size);
    const double sky = 0.45 + 0.55 / size;
    const double rough = 0.5 + 0.5 * noise.layers(x * 0.11, z * 0.11 + h * 0.2, 4);
    const double snowline = smooth(50.0, 84.0, h + 30.0 * rough - 9.0 * (size - 1.0));
    const Rgb rock = mix(hex(0x4a4450), hex(0x6a5f63), rough);
    const Rgb wood = mix(hex(0x142429), hex(0x2b3c3c), rough);
    const Rgb ground =
        mix(mix(wood, rock, smooth(24.0, 52.0, h + 12.0 * rough)), hex(0xdcdce6), snowline);
    const Rgb light =
        hex(0x7c86ad) * (0.8 * sky) + hex(0xffa878) * (1.15 * sun * smooth(5.0, 60.0, h));
    const double air = 1.0 - std::exp(-z / 640.0);
    const double mist =
        std::exp(-h / 9.0) * smooth(110.0, 300.0, z) * (0.75 + 0.35 * noise.at(x * 0.02, z * 0.01));
    const Rgb haze = mix(hex(0x6f7199), hex(0xb98797), smooth(-40.0, 190.0, x * 260.0 / z));
    return mix(ground * light, haze, clamp01(std::max(air, mist * 0.75)));
}

void lakeForeground(Picture& picture) {
    Random random(23);
    const Noise noise(61);
    const int width = picture.right();
    const int height = picture.height();
    const auto bank = [&](double x) {
        const double left = smooth(760.0, 0.0, x);
        const double right = smooth(780.0, 0.0, width - x);
        return height + 14.0 - 175.0 * left - 130.0 * right -
               16.0 * noise.layers(x * 0.012, 2.0, 5);
    };
    const auto dark = [&](int x, int y) {
        const double patch = noise.layers(x * 0.02, y * 0.05, 5);
        return mix(hex(0x0b1016), hex(0x1a1f22), clamp01(0.3 + patch)) * (1.0 - 0.2 * y / height);
    };
    picture.fill(dark, [&](cairo_t* pen) {
        ground(pen, bank);
        for (int i = 0; i < 15; ++i) {
            const double left = 330.0 * std::pow(random.next(), 1.5);
            conifer(pen, left, bank(left) + 24.0, random.in(170.0, 430.0) * (1.25 - left / 440.0),
                    random);
            const double right = 240.0 * std::pow(random.next(), 1.5);
            conifer(pen, width - right, bank(width - right) + 24.0,
                    random.in(150.0, 330.0) * (1.2 - right / 330.0), random);
        }
        cairo_set_line_width(pen, 1.6);
        for (int i = 0; i < 900; ++i) {
            const double x =
                random.next() < 0.6 ? random.in(0.0, 780.0) : width - random.in(0.0, 750.0);
            const double tall = random.in(8.0, 34.0);
            cairo_move_to(pen, x, bank(x) + 6.0);
            cairo_rel_curve_to(pen, 0.0, -tall * 0.5, random.in(-3.0, 3.0), -tall * 0.8,
                               random.in(-10.0, 10.0), -tall);
        }
        cairo_stroke(pen);
    });
}

}  // namespace

Picture paintBackground() {
    // The file has 2400 columns, which are shown at 16:9.
    Picture picture(2844, 1600);
    const Noise clouds(1207);
    const Noise land(1);
    const double half = picture.middle();
    picture.shade([&](int x, int y, Rgb) {
        return duskSky((x - half) / half, clamp01((lakeHorizon - y) / lakeHorizon), clouds);
    });
    Random random(5);
    for (int i = 0; i < 180; ++i) {
        const double y = 520.0 * std::pow(random.next(), 1.6);
        picture.glow(random.in(0.0, picture.right()), y, random.in(1.6, 3.4),
                     hex(0xdfe6ff) * (random.in(0.1, 0.75) * (1.0 - y / 560.0)));
    }
    const View view{3.2, lakeHorizon, 1750.0, 50.0, 620.0, 1.002, 6.0};
    const std::vector<double> shore = terrain(
        picture, view, [&](double x, double z) { return lakeLand(land, x, z); },
        [&](double x, double z, double h) { return lakeColour(land, x, z, h); });
    picture.shade([&](int x, int y, Rgb old) {
        const double wisp = 0.55 + 0.6 * clouds.layers(x * 0.0022, y * 0.011, 5);
        const double band = std::exp(
            -std::pow((y - lakeHorizon - 20.0) / (y < lakeHorizon + 20.0 ? 44.0 : 30.0), 2.0));
        return mix(old, mix(hex(0x76799f), hex(0xb48f9f), smooth(-900.0, 300.0, x - half)),
                   clamp01(0.5 * wisp * band));
    });
    reflect(picture, {lakeHorizon + 22.0, 0.085, 60.0, hex(0x131c33)}, shore);
    lakeForeground(picture);
    picture.vignette(0.35);
    picture.shade([](int, int, Rgb old) { return old * 1.05; });
    picture.grain(0.022, 77);
    return picture;
}

namespace {

Rgb dawnSky(double x, double y, const Noise& noise) {
    const double above = clamp01(1.0 - y / 760.0);
    const Rgb sky = ramp({{0.0, hex(0xffe2a6)},
                          {0.25, hex(0xfbc58c)},
                          {0.5, hex(0xd7a893)},
                          {0.75, hex(0x87a0ab)},
                          {1.0, hex(0x4d7d93)}},
                         above);
    const Cloud cloud = cloudAt(noise, (x - 1000.0) / 800.0, above, 0.6, 0.4);
    return mix(sky, mix(hex(0xc9998c), hex(0xfff0cf), cloud.light), cloud.cover * 0.7);
}

void mistyRidge(Picture& picture, int layer, Random& random) {
    const Noise noise(300u + static_cast<std::uint32_t>(layer));
    const double near = layer / 6.0;
    const double base = 500.0 + 520.0 * std::pow(near, 1.25);
    const double swing = 120.0 + 60.0 * near;
    const auto top = [&](double x) {
        return base - swing * noise.layers(x * (0.0021 - 0.0006 * near) + layer * 7.1, 0.5, 6);
    };
    const Rgb crest = ramp({{0.0, hex(0xd9b08f)},
                            {0.3, hex(0xa08c80)},
                            {0.6, hex(0x4c6468)},
                            {0.85, hex(0x1f3a42)},
                            {1.0, hex(0x0f2028)}},
                           near);
    const Rgb fog = ramp({{0.0, hex(0xfbd39a)}, {0.5, hex(0xe0b795)}, {1.0, hex(0x55686a)}}, near);
    const auto colour = [&](int x, int y) {
        const double depth = (y - top(x)) / (150.0 + 110.0 * near);
        const double wisps = 0.35 * noise.layers(x * 0.006, y * 0.012, 5);
        const double sun = std::exp(-std::pow((x - 1060.0) / 420.0, 2.0)) * (1.0 - near);
        const Rgb body = mix(crest, hex(0xffcf8d), 0.35 * sun);
        return mix(body, mix(fog, hex(0xffe2ae), 0.5 * sun),
                   smooth(0.15, 1.0, depth + wisps) * (0.95 - 0.35 * near));
    };
    picture.fill(colour, [&](cairo_t* pen) {
        ground(pen, top);
        const double tall = 9.0 + 120.0 * near * near;
        const double gap = 2.5 + 22.0 * near * near;
        for (double x = -20.0; x < picture.right() + 20.0; x += gap * random.in(0.4, 1.7)) {
            const double stand = smooth(-0.35, 0.25, noise.at(x * 0.006, 9.0));
            if (random.next() > 0.25 + stand) continue;
            conifer(pen, x, top(x) + tall * 0.15,
                    tall * random.in(0.55, 1.25) * (0.6 + 0.4 * stand), random);
        }
    });
}

void hiker(cairo_t* pen, double x, double y, double size) {
    cairo_save(pen);
    cairo_translate(pen, x, y);
    cairo_scale(pen, size, size);
    disc(pen, 0.5, -16.2, 1.8);
    box(pen, -1.9, -17.4, 5.0, 0.7);
    box(pen, -0.9, -18.9, 2.8, 1.8);
    polygon(pen, {{-2.0, -14.8}, {2.0, -14.8}, {2.1, -7.6}, {-1.8, -7.6}});
    polygon(pen, {{-5.0, -14.2}, {-2.2, -15.2}, {-1.8, -8.6}, {-4.7, -8.8}});
    stroke(pen, 1.7, {{-0.8, -8.0}, {-1.4, -4.0}, {-2.4, 0.6}});
    stroke(pen, 1.7, {{0.9, -8.0}, {1.7, -4.2}, {1.5, 0.6}});
    stroke(pen, 1.2, {{1.2, -14.0}, {2.8, -10.8}, {5.0, -10.6}});
    stroke(pen, 0.5, {{5.0, -13.4}, {5.5, 0.6}});
    cairo_restore(pen);
}

}  // namespace

Picture paintCover() {
    Picture picture(1600, 1200);
    const Noise clouds(414);
    picture.shade([&](int x, int y, Rgb) { return dawnSky(x, y, clouds); });
    picture.glow(1060.0, 430.0, 700.0, hex(0xffca80) * 0.7);
    picture.glow(1060.0, 430.0, 230.0, hex(0xfff0c8) * 0.8);
    picture.fill(hex(0xfffbe8), [](cairo_t* pen) { disc(pen, 1060.0, 430.0, 52.0); });
    Random random(88);
    for (int layer = 0; layer <= 6; ++layer) {
        mistyRidge(picture, layer, random);
        if (layer < 5) picture.glow(1060.0, 500.0 + 40.0 * layer, 520.0, hex(0xffc888) * 0.16);
    }
    const Noise turf(52);
    const auto knoll = [&](double x) {
        return 1216.0 - 190.0 * smooth(900.0, 240.0, x) * smooth(-500.0, 260.0, x) -
               5.0 * turf.layers(x * 0.02, 0.0, 4);
    };
    picture.fill(hex(0x081318), [&](cairo_t* pen) {
        ground(pen, knoll);
        hiker(pen, 372.0, knoll(372.0) + 2.0, 7.4);
        for (int i = 0; i < 500; ++i) {
            const double x = random.in(0.0, 900.0);
            stroke(
                pen, 1.3,
                {{x, knoll(x) + 5.0}, {x + random.in(-5.0, 5.0), knoll(x) - random.in(2.0, 13.0)}});
        }
    });
    picture.fill(hex(0x3b4a52), [&](cairo_t* pen) {
        for (int i = 0; i < 11; ++i) {
            const double x = 560.0 + 34.0 * std::abs(i - 4) + random.in(-9.0, 9.0);
            const double y = 190.0 + 15.0 * i + random.in(-5.0, 5.0);
            stroke(pen, 2.2,
                   {{x - 13.0, y - 5.0},
                    {x - 5.0, y - 6.0},
                    {x, y},
                    {x + 6.0, y - 6.0},
                    {x + 14.0, y - 4.0}});
        }
    });
    picture.vignette(0.3);
    picture.grain(0.016, 78);
    return picture;
}

Picture paintIcon() {
    Picture picture(256, 256);
    picture.shade([](int, int, Rgb) { return hex(0x1f4e5f); });
    const Rgb ivory = hex(0xf4ead5);
    picture.fill(hex(0x173c4a), [](cairo_t* pen) { disc(pen, 123.0, 125.0, 88.0); });
    picture.fill(ivory, [](cairo_t* pen) {
        disc(pen, 118.0, 118.0, 88.0);
        cairo_move_to(pen, 118.0, 196.0);
        cairo_curve_to(pen, 168.0, 196.0, 190.0, 186.0, 236.0, 186.0);
        cairo_set_line_width(pen, 20.0);
        cairo_stroke(pen);
    });
    picture.fill(hex(0xe2a33b), [](cairo_t* pen) {
        cairo_set_line_width(pen, 6.0);
        cairo_arc(pen, 118.0, 118.0, 78.0, 0.0, 2.0 * std::numbers::pi);
        cairo_stroke(pen);
    });
    picture.fill(hex(0x1f4e5f), [](cairo_t* pen) {
        for (int i = 0; i < 5; ++i) {
            const double angle = 2.0 * std::numbers::pi * (i / 5.0) - std::numbers::pi / 2.0;
            disc(pen, 118.0 + 45.0 * std::cos(angle), 118.0 + 45.0 * std::sin(angle), 20.0);
        }
        disc(pen, 118.0, 118.0, 9.0);
        for (int i = 0; i < 5; ++i)
            box(pen, 160.0 + 16.0 * i, 185.0 + 2.0 - i, 8.0, 6.0);
    });
    return picture;
}
