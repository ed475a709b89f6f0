// Stills of built places: a harbour and a city.
#include "scenes.h"
#include "shapes.h"

#include <array>

namespace {

// A shore that runs straight across a still.
std::vector<double> straightShore(double y) {
    return std::vector<double>(sceneWidth, y);
}

void windows(cairo_t* pen, double x, double y, int columns, int rows, double gapX, double gapY) {
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            box(pen, x + column * gapX, y + row * gapY, gapX * 0.42, gapY * 0.55);
}

void house(Picture& picture, double x, double width, double tall, double quay, Rgb wall) {
    const double top = quay - tall;
    const double gable = width * 0.42;
    picture.fill(
        [&](int px, int py) {
            return wall * (1.06 - 0.2 * (px - x) / width - 0.05 * (py - top) / tall);
        },
        [&](cairo_t* pen) {
            polygon(pen, {{x, quay},
                          {x, top},
                          {x + width / 2.0, top - gable},
                          {x + width, top},
                          {x + width, quay}});
        });
    picture.fill(hex(0x8c3f2e), [&](cairo_t* pen) {
        stroke(
            pen, 7.0,
            {{x - 3.0, top + 2.0}, {x + width / 2.0, top - gable}, {x + width + 3.0, top + 2.0}});
    });
    picture.fill(hex(0xfaf3e4), [&](cairo_t* pen) {
        windows(pen, x + width * 0.13 - 2.0, top + 12.0, 3, static_cast<int>(tall / 40.0),
                width * 0.30, 38.0);
    });
    picture.fill(hex(0x2b4a63), [&](cairo_t* pen) {
        const int rows = static_cast<int>(tall / 40.0);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < 3; ++column)
                box(pen, x + width * (0.13 + 0.30 * column), top + 14.0 + 38.0 * row,
                    width * 0.126 - 4.0, 17.0);
        box(pen, x + width * 0.42, quay - 26.0, width * 0.18, 26.0);
    });
}

void fishingBoat(Picture& picture, double x, double y, double size, Rgb hull) {
    const auto at = [&](cairo_t* pen) {
        cairo_translate(pen, x, y);
        cairo_scale(pen, size, size);
    };
    picture.fill(hex(0xf7f3ea), [&](cairo_t* pen) {
        at(pen);
        polygon(pen, {{-20.0, -14.0}, {-20.0, -40.0}, {12.0, -40.0}, {16.0, -14.0}});
        stroke(pen, 2.4, {{26.0, -14.0}, {26.0, -74.0}});
        stroke(pen, 1.2, {{64.0, -22.0}, {26.0, -72.0}, {-56.0, -16.0}});
    });
    picture.fill(hex(0x35566b), [&](cairo_t* pen) {
        at(pen);
        for (int i = 0; i < 3; ++i)
            box(pen, -16.0 + 10.0 * i, -35.0, 7.0, 9.0);
    });
    picture.fill(
        [&](int, int py) { return hull * (1.1 - 0.4 * (py - y + 20.0 * size) / (26.0 * size)); },
        [&](cairo_t* pen) {
            at(pen);
            cairo_move_to(pen, -62.0, -18.0);
            cairo_curve_to(pen, -20.0, -11.0, 30.0, -12.0, 70.0, -25.0);
            cairo_curve_to(pen, 62.0, -8.0, 54.0, 0.0, 46.0, 5.0);
            cairo_line_to(pen, -50.0, 5.0);
            cairo_close_path(pen);
            cairo_fill(pen);
        });
    picture.fill(hex(0xf7f3ea), [&](cairo_t* pen) {
        at(pen);
        cairo_move_to(pen, -61.0, -14.0);
        cairo_curve_to(pen, -20.0, -7.0, 30.0, -8.0, 68.0, -21.0);
        cairo_set_line_width(pen, 2.6);
        cairo_stroke(pen);
    });
}

}  // namespace

Picture paintHarbour() {
    Picture picture = emptyScene();
    const Noise clouds(21);
    const double quay = 340.0;
    picture.shade([&](int x, int y, Rgb) {
        const double above = clamp01(1.0 - y / quay);
        const Rgb sky =
            ramp({{0.0, hex(0xd8eef4)}, {0.4, hex(0x86c5e8)}, {1.0, hex(0x2f86c8)}}, above);
        const Cloud cloud = cloudAt(clouds, (x - 300.0) / 384.0, above, 0.7, 0.55);
        return mix(sky, mix(hex(0xc9d8e2), hex(0xffffff), cloud.light), cloud.cover * 0.9);
    });
    const Noise hills(4);
    picture.fill([](int, int y) { return mix(hex(0x6fa3a0), hex(0x4f8f68), (y - 180.0) / 150.0); },
                 [&](cairo_t* pen) {
                     ground(pen, [&](double x) {
                         return 262.0 - 70.0 * smooth(250.0, 768.0, x) -
                                34.0 * hills.layers(x * 0.006, 0.0, 5);
                     });
                 });
    picture.fill(hex(0xe9dfc6), [&](cairo_t* pen) { box(pen, 552.0, 110.0, 46.0, 230.0); });
    picture.fill(hex(0x3f7f78), [&](cairo_t* pen) {
        polygon(pen, {{546.0, 112.0}, {575.0, 36.0}, {604.0, 112.0}});
    });
    picture.fill(hex(0x35566b), [&](cairo_t* pen) { disc(pen, 575.0, 140.0, 13.0); });
    const std::array<Rgb, 7> walls{hex(0xe8b04a), hex(0xd9573f), hex(0xf1e3c4), hex(0x5b9bb5),
                                   hex(0xe58a6b), hex(0x7fa866), hex(0xf0cf7a)};
    Random random(14);
    double x = sceneLeft - 22.0;
    for (std::size_t i = 0; x < sceneRight; ++i) {
        const double width = random.in(82.0, 104.0);
        house(picture, x, width, random.in(92.0, 150.0), quay, walls[i % walls.size()]);
        x += width;
    }
    picture.fill(hex(0x8d8377),
                 [&](cairo_t* pen) { box(pen, sceneLeft, quay - 4.0, sceneWidth, 20.0); });
    picture.fill(hex(0x5d564f),
                 [&](cairo_t* pen) { box(pen, sceneLeft, quay + 8.0, sceneWidth, 10.0); });
    fishingBoat(picture, 575.0, 354.0, 0.9, hex(0x2468a0));
    reflect(picture, {quay + 18.0, 0.09, 26.0, hex(0x0d6f86)}, straightShore(quay + 19.0));
    picture.shade([](int, int y, Rgb old) {
        return mix(old, hex(0x14829a), 0.34 * smooth(340.0, 380.0, y));
    });
    for (int i = 0; i < 9; ++i) {
        picture.fill(mix(hex(0x8e2f33), hex(0x14647a), i / 9.0), [i](cairo_t* pen) {
            cairo_set_source_rgba(pen, 0.0, 0.0, 0.0, 0.75 - 0.07 * i);
            oval(pen, 252.0 + 4.0 * (i % 2), 470.0 + 5.5 * i, 124.0 - 8.0 * i, 4.2);
        });
    }
    fishingBoat(picture, 250.0, 462.0, 2.1, hex(0xc9312b));
    picture.grain(0.005, 31);
    return picture;
}

namespace {

void towers(Picture& picture, int layer, double river, Random& random) {
    const double near = layer / 2.0;
    const Rgb wall = ramp({{0.0, hex(0x6a3f86)}, {0.5, hex(0x3a2a66)}, {1.0, hex(0x17163a)}}, near);
    for (double x = sceneLeft - 20.0; x < sceneRight;) {
        const double width = random.in(38.0, 74.0);
        const double middle = 1.0 - std::abs(x + width / 2.0 - 360.0) / 420.0;
        const double tall =
            (1.2 - 0.6 * near) * random.in(90.0, 150.0) +
            190.0 * std::max(0.0, middle) * random.in(0.3, 1.0) * (1.0 - 0.35 * near);
        const double top = river - tall;
        const Rgb face = wall * random.in(0.8, 1.3);
        picture.fill(
            [&](int, int y) {
                return mix(face, hex(0xb0508c),
                           0.45 * (1.0 - near) * smooth(river - 200.0, river, y));
            },
            [&](cairo_t* pen) {
                box(pen, x, top, width, tall);
                if (random.next() < 0.4) box(pen, x + width * 0.25, top - 16.0, width * 0.5, 18.0);
                if (random.next() < 0.3)
                    stroke(pen, 2.0, {{x + width / 2.0, top - 46.0}, {x + width / 2.0, top}});
            });
        if (layer > 0) {
            const Rgb lamp = random.next() < 0.65 ? hex(0xffd27a) : hex(0x9fe0ff);
            picture.fill(lamp * (0.62 + 0.38 * near), [&](cairo_t* pen) {
                for (double y = top + 8.0; y < river - 10.0; y += 16.0)
                    for (double wx = x + 5.0; wx < x + width - 9.0; wx += 12.0)
                        if (random.next() < 0.46) box(pen, wx, y, 7.2, 9.0);
            });
        }
        x += width + random.in(0.0, 12.0);
    }
}

}  // namespace

Picture paintCity() {
    Picture picture = emptyScene();
    Random random(9);
    const Noise noise(18);
    const double river = 420.0;
    picture.shade([&](int x, int y, Rgb) {
        const double above = clamp01(1.0 - y / river);
        const Rgb sky = ramp({{0.0, hex(0xff9a76)},
                              {0.22, hex(0xd7558a)},
                              {0.5, hex(0x6a2f86)},
                              {1.0, hex(0x17133f)}},
                             above);
        const Cloud cloud = cloudAt(noise, (x - 384.0) / 384.0, above, 0.6, 0.45);
        return mix(sky, mix(hex(0x3f2468), hex(0xf08aa0), cloud.light * (1.0 - above)),
                   cloud.cover * 0.6);
    });
    for (int i = 0; i < 93; ++i)
        picture.glow(random.in(sceneLeft, sceneRight), random.in(0.0, 170.0), random.in(1.2, 2.2),
                     hex(0xffffff) * random.in(0.2, 0.8));
    picture.glow(610.0, 96.0, 150.0, hex(0xffd9c0) * 0.5);
    picture.fill(hex(0xfff3dc), [](cairo_t* pen) { disc(pen, 610.0, 96.0, 38.0); });
    for (int layer = 0; layer < 3; ++layer) {
        towers(picture, layer, river, random);
        if (layer < 2) picture.glow(384.0, river, 460.0, hex(0xff7a8a) * 0.22);
    }
    picture.fill(hex(0x0f0e2a),
                 [&](cairo_t* pen) { box(pen, sceneLeft, river - 6.0, sceneWidth, 10.0); });
    for (double x = sceneLeft - 8.0; x < sceneRight + 17.0; x += 39.0) {
        picture.glow(x, river - 9.0, 17.0, hex(0xffc46a) * 0.8);
        picture.glow(x, river - 9.0, 4.0, hex(0xfff3d0));
    }
    reflect(picture, {river + 3.0, 0.16, 20.0, hex(0x120f33)}, straightShore(river + 4.0));
    picture.vignette(0.3);
    picture.grain(0.005, 33);
    return picture;
}
