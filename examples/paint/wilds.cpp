// Stills of open country: a forest, a desert and a mountain in winter.
#include "scenes.h"
#include "shapes.h"
#include "terrain.h"

namespace {

void trunks(Picture& picture, int layer, Random& random) {
    const double near = layer / 4.0;
    const Rgb bark = ramp(
        {{0.0, hex(0xb9cf7c)}, {0.35, hex(0x6f9a4d)}, {0.7, hex(0x2c5230)}, {1.0, hex(0x10231a)}},
        near);
    const double base = 400.0 + 165.0 * near * near;
    const int count = 35 - 7 * layer;
    const Noise noise(70u + static_cast<std::uint32_t>(layer));
    const auto colour = [&](int x, int y) {
        const double grooves = noise.layers(x * 0.22, y * 0.02, 3);
        const Rgb lit = mix(bark, hex(0xe6e48f), 0.22 * (1.0 - near));
        return mix(bark, lit, clamp01(0.5 + grooves)) * (1.0 + 0.14 * grooves);
    };
    picture.fill(colour, [&](cairo_t* pen) {
        for (int i = 0; i < count; ++i) {
            double x = sceneLeft + sceneWidth * (i + random.in(0.1, 0.9)) / count;
            // The path stays clear, or there would be no way into the wood.
            if (std::abs(x - 400.0) < 50.0 + 105.0 * near) x += x < 400.0 ? -130.0 : 130.0;
            const double half = (3.0 + 19.0 * near * near) * random.in(0.7, 1.25);
            const double lean = random.in(-12.0, 12.0);
            cairo_move_to(pen, x - half * 2.2, base + 30.0);
            cairo_curve_to(pen, x - half, base - 20.0, x - half, base - 60.0, x + lean - half * 0.7,
                           -10.0);
            cairo_line_to(pen, x + lean + half * 0.7, -10.0);
            cairo_curve_to(pen, x + half, base - 60.0, x + half, base - 20.0, x + half * 2.2,
                           base + 30.0);
            cairo_fill(pen);
        }
    });
}

void leaves(Picture& picture, double near, Random& random) {
    const Rgb tone = mix(hex(0x9cc24e), hex(0x1c4a24), near);
    for (int shade = 0; shade < 3; ++shade) {
        picture.fill(tone * (0.75 + 0.3 * shade), [&](cairo_t* pen) {
            for (int i = 0; i < 560; ++i) {
                const double x = random.in(sceneLeft - 10.0, sceneRight + 10.0);
                const double arch =
                    55.0 + 150.0 * near * std::pow(std::abs(x - 400.0) / 530.0, 1.4);
                const double y = arch * std::pow(random.next(), 1.4) - 6.0;
                const double size = random.in(4.0, 10.0) * (0.6 + 0.6 * near);
                oval(pen, x, y, size, size * random.in(0.45, 0.8));
            }
        });
    }
}

void ferns(Picture& picture, Random& random) {
    for (int row = 0; row < 4; ++row) {
        const double base = 440.0 + 46.0 * row;
        picture.fill(mix(hex(0x7fae3c), hex(0x143520), row / 3.0), [&](cairo_t* pen) {
            cairo_set_line_width(pen, 1.6 + 0.7 * row);
            for (int i = 0; i < 570; ++i) {
                const double x = random.in(sceneLeft - 20.0, sceneRight + 20.0);
                if (std::abs(x - 400.0) < 62.0 + 42.0 * row) continue;
                const double y = base + random.in(-10.0, 26.0);
                const double out = random.in(-22.0, 22.0);
                cairo_move_to(pen, x, y);
                cairo_curve_to(pen, x, y - 22.0, x + out * 0.6, y - 28.0 - 3.0 * row, x + out,
                               y - 18.0);
                cairo_stroke(pen);
            }
        });
    }
}

}  // namespace

Picture paintForest() {
    Picture picture = emptyScene();
    Random random(4);
    const Noise noise(11);
    picture.shade([&](int x, int y, Rgb) {
        const double light =
            std::exp(-std::pow((x - 410.0) / 260.0, 2.0) - std::pow((y - 250.0) / 250.0, 2.0));
        return mix(hex(0x7ea653), hex(0xfbf7c0), light) *
               (1.0 + 0.08 * noise.layers(x * 0.02, y * 0.02, 4));
    });
    picture.fill(
        [&](int x, int y) {
            const double path = std::abs(x - 400.0 - 26.0 * std::sin((y - 400.0) * 0.022)) /
                                (26.0 + 1.05 * (y - 400.0));
            const Rgb moss = mix(hex(0x9fc04f), hex(0x2a5528), (y - 400.0) / 170.0);
            const Rgb earth = mix(hex(0xf0dca0), hex(0x8a6a42), (y - 400.0) / 170.0);
            const double rough = 1.0 + 0.3 * noise.layers(x * 0.05, y * 0.14, 5);
            return mix(earth, moss, smooth(0.55, 1.0, path + 0.25 * noise.at(x * 0.04, y * 0.08))) *
                   rough;
        },
        [&](cairo_t* pen) { box(pen, sceneLeft, 404.0, sceneWidth, 180.0); });
    for (int layer = 0; layer < 5; ++layer) {
        trunks(picture, layer, random);
        if (layer > 0) leaves(picture, layer / 4.0, random);
        if (layer < 4) picture.glow(410.0, 260.0, 420.0, hex(0xf6f2b0) * (0.34 - 0.07 * layer));
        if (layer == 3) ferns(picture, random);
    }
    picture.shade([&](int x, int y, Rgb old) {
        const double angle = std::atan2(y + 160.0, x - 690.0);
        const double ray =
            smooth(0.0, 0.5, noise.layers(angle * 9.0, 4.0, 3)) * smooth(620.0, 120.0, y);
        return screen(
            old, hex(0xfff3b0) * (0.36 * ray * smooth(768.0, 360.0, std::abs(x - 430.0) * 1.6)));
    });
    picture.vignette(0.4);
    picture.grain(0.005, 32);
    return picture;
}

namespace {

double duneLand(const Noise& noise, double x, double z) {
    const double warp = 16.0 * noise.at(x * 0.011 + 4.0, z * 0.011);
    const double crest = 1.0 - std::abs(noise.at((x + warp) * 0.012, (z - warp) * 0.019 + 0.4));
    const double small = noise.at(x * 0.05, z * 0.05);
    return 1.0 + 24.0 * std::pow(std::max(0.0, crest), 2.2) + 0.7 * small;
}

Rgb duneColour(const Noise& noise, double x, double z, double h) {
    const double step = 0.3 + 0.002 * z;
    const double dx = (duneLand(noise, x + step, z) - h) / step;
    const double dz = (duneLand(noise, x, z + step) - h) / step;
    const double ripple = 0.10 * std::sin(3.4 * z + 1.5 * x + 5.0 * noise.at(x * 0.12, z * 0.12)) *
                          std::exp(-z / 60.0);
    const double sun = clamp01(
        (-0.85 * dx + 0.25 * dz + 0.16) / std::sqrt(dx * dx + dz * dz + 1.0) * 1.9 + ripple);
    const Rgb sand = mix(hex(0x7a2f2a), hex(0xf6a04a), sun);
    return mix(sand, hex(0xf9b877), 1.0 - std::exp(-z / 420.0));
}

void camel(cairo_t* pen, double x, double y, double size, bool rider) {
    cairo_save(pen);
    cairo_translate(pen, x, y);
    cairo_scale(pen, size, size);
    oval(pen, 0.0, -23.0, 14.5, 6.6);
    polygon(pen, {{-9.0, -26.0}, {-1.0, -36.0}, {2.5, -35.0}, {9.5, -25.0}});
    cairo_move_to(pen, 9.0, -28.0);
    cairo_curve_to(pen, 17.0, -24.0, 18.0, -28.0, 19.0, -38.0);
    cairo_line_to(pen, 22.5, -37.0);
    cairo_curve_to(pen, 23.0, -24.0, 18.0, -16.0, 9.0, -18.5);
    cairo_fill(pen);
    stroke(pen, 3.6, {{20.8, -37.6}, {25.4, -35.6}});
    stroke(pen, 1.0, {{19.8, -38.0}, {19.0, -41.0}});
    const auto leg = [pen](double hip, double hoof) {
        const double knee = 0.5 * (hip + hoof) + 0.7;
        polygon(pen, {{hip - 3.0, -22.0},
                      {hip + 3.0, -22.0},
                      {knee + 1.2, -10.0},
                      {hoof + 1.3, 0.6},
                      {hoof - 1.1, 0.6},
                      {knee - 1.0, -10.0}});
    };
    leg(-10.5, -14.0);
    leg(-9.5, -6.5);
    leg(9.0, 6.0);
    leg(10.0, 13.5);
    stroke(pen, 1.0, {{-13.8, -24.0}, {-16.0, -15.0}});
    if (rider) {
        polygon(pen, {{-5.0, -32.0}, {-2.0, -44.0}, {2.4, -44.0}, {5.5, -31.0}});
        disc(pen, 0.5, -45.6, 2.5);
        stroke(pen, 1.6, {{1.0, -42.0}, {5.5, -38.0}, {10.0, -38.5}});
    }
    cairo_restore(pen);
}

}  // namespace

Picture paintDesert() {
    Picture picture = emptyScene();
    const Noise noise(6);
    picture.shade([&](int, int y, Rgb) {
        return ramp({{0.0, hex(0xffe0a0)},
                     {0.35, hex(0xffb765)},
                     {0.7, hex(0xf0803f)},
                     {1.0, hex(0xc9502f)}},
                    clamp01(1.0 - y / 290.0));
    });
    picture.glow(520.0, 190.0, 330.0, hex(0xffd98a) * 0.7);
    picture.fill(hex(0xfff6d2), [](cairo_t* pen) { disc(pen, 520.0, 190.0, 66.0); });
    terrain(
        picture, {34.0, 262.0, 560.0, 26.0, 900.0},
        [&](double x, double z) { return duneLand(noise, x, z); },
        [&](double x, double z, double h) { return duneColour(noise, x, z, h); });
    const auto crest = [](double x) {
        return 428.0 + 62.0 * std::cos((x - 250.0) * 0.0062) * -1.0 + 0.05 * x;
    };
    picture.fill(
        [&](int x, int y) {
            return mix(hex(0x6a2420), hex(0x2a0f16), (y - crest(x)) / 180.0) *
                   (1.0 + 0.12 * std::sin(y * 0.5 + x * 0.06 + 3.0 * noise.at(x * 0.02, y * 0.03)));
        },
        [&](cairo_t* pen) { ground(pen, crest); });
    picture.fill(hex(0x2a0f16), [&](cairo_t* pen) {
        for (int i = 0; i < 4; ++i) {
            const double x = 118.0 + 118.0 * i;
            camel(pen, x, crest(x) + 2.0, 2.15, i != 2);
        }
    });
    picture.vignette(0.22);
    picture.grain(0.005, 34);
    return picture;
}

namespace {

double peakLand(const Noise& noise, double x, double z) {
    const double summit = std::exp(-std::hypot(x - 26.0, z - 260.0) / 62.0);
    return 0.5 + 120.0 * summit +
           34.0 * noise.ridged(x * 0.012, z * 0.012, 8) * smooth(60.0, 240.0, z);
}

Rgb peakColour(const Noise& noise, double x, double z, double h) {
    const double step = 0.2 + 0.003 * z;
    const double dx = (peakLand(noise, x + step, z) - h) / step;
    const double dz = (peakLand(noise, x, z + step) - h) / step;
    const double size = std::sqrt(dx * dx + dz * dz + 1.0);
    const double sun = clamp01((0.8 * dx + 0.2 * dz + 0.35) / size);
    const Rgb snow = mix(hex(0x7f9fd0), hex(0xffffff), sun);
    const Rgb rock = mix(hex(0x3f5478), hex(0x7d8ba3), sun);
    return mix(mix(snow, rock, smooth(1.65, 2.2, size + 0.5 * noise.layers(x * 0.1, h * 0.1, 4))),
               hex(0xb4d3ee), 1.0 - std::exp(-z / 900.0));
}

void cabin(Picture& picture) {
    picture.fill(hex(0x5a3524), [](cairo_t* pen) {
        polygon(pen,
                {{150.0, 470.0}, {150.0, 390.0}, {205.0, 338.0}, {330.0, 352.0}, {330.0, 470.0}});
    });
    picture.fill(hex(0x7a4a30), [](cairo_t* pen) {
        polygon(pen,
                {{150.0, 474.0}, {150.0, 392.0}, {205.0, 340.0}, {260.0, 392.0}, {260.0, 474.0}});
    });
    picture.fill(hex(0x4a2b1e), [](cairo_t* pen) {
        for (int i = 0; i < 8; ++i)
            box(pen, 150.0, 396.0 + 10.0 * i, 180.0, 1.6);
        box(pen, 288.0, 316.0, 18.0, 40.0);
    });
    picture.fill(hex(0xf6faff), [](cairo_t* pen) {
        polygon(pen, {{198.0, 330.0},
                      {322.0, 330.0},
                      {352.0, 398.0},
                      {262.0, 400.0},
                      {206.0, 344.0},
                      {146.0, 402.0},
                      {136.0, 394.0}});
        box(pen, 284.0, 310.0, 26.0, 9.0);
    });
    picture.fill(hex(0xffce62), [](cairo_t* pen) {
        box(pen, 186.0, 406.0, 38.0, 34.0);
        box(pen, 284.0, 414.0, 28.0, 28.0);
    });
    picture.fill(hex(0x4a2b1e), [](cairo_t* pen) {
        box(pen, 203.5, 406.0, 3.0, 34.0);
        box(pen, 186.0, 421.5, 38.0, 3.0);
        box(pen, 296.5, 414.0, 3.0, 28.0);
    });
    picture.glow(205.0, 424.0, 80.0, hex(0xffb040) * 0.5);
    picture.glow(298.0, 428.0, 60.0, hex(0xffb040) * 0.5);
}

void snowyPine(Picture& picture, double x, double base, double tall, Random& random) {
    picture.fill(hex(0x1f4458), [&](cairo_t* pen) { conifer(pen, x, base, tall, random); });
    picture.fill(hex(0xeef6ff), [&](cairo_t* pen) {
        for (int i = 1; i < 7; ++i) {
            const double y = base - tall + tall * 0.135 * i;
            const double out = tall * 0.025 * i + 2.0;
            cairo_move_to(pen, x - out, y);
            cairo_curve_to(pen, x - out * 0.4, y - tall * 0.07, x + out * 0.2, y - tall * 0.07,
                           x + out * 0.6, y - tall * 0.01);
            cairo_curve_to(pen, x + out * 0.1, y - tall * 0.02, x - out * 0.3, y - tall * 0.035,
                           x - out, y);
            cairo_fill(pen);
        }
    });
}

}  // namespace

Picture paintSnow() {
    Picture picture = emptyScene();
    const Noise noise(15);
    Random random(40);
    picture.shade([](int, int y, Rgb) {
        return ramp({{0.0, hex(0x3f86cf)}, {0.5, hex(0x8fc1ea)}, {1.0, hex(0xe4f1fa)}}, y / 400.0);
    });
    terrain(
        picture, {6.0, 400.0, 700.0, 40.0, 500.0},
        [&](double x, double z) { return peakLand(noise, x, z); },
        [&](double x, double z, double h) { return peakColour(noise, x, z, h); });
    picture.fill(
        [&](int, int y) { return mix(hex(0x5f86a8), hex(0xc4dbee), smooth(360.0, 430.0, y)); },
        [&](cairo_t* pen) {
            for (double x = sceneLeft - 10.0; x < sceneRight + 10.0; x += random.in(4.0, 12.0))
                conifer(pen, x, 434.0, random.in(30.0, 70.0), random);
        });
    const auto field = [&](double x) {
        return 440.0 - 22.0 * std::cos((x - 230.0) * 0.008) - 6.0 * noise.at(x * 0.01, 3.0);
    };
    picture.fill(
        [&](int x, int y) {
            return mix(
                hex(0xffffff), hex(0x8fb4dd),
                clamp01((y - field(x)) / 170.0 + 0.25 * noise.layers(x * 0.008, y * 0.02, 4)));
        },
        [&](cairo_t* pen) { ground(pen, field); });
    for (const double x : {60.0, 118.0, 372.0, 430.0})
        snowyPine(picture, x, 462.0, random.in(130.0, 210.0), random);
    cabin(picture);
    picture.fill(
        [&](int x, int y) {
            return mix(hex(0xf2f8ff), hex(0xa9c8ea),
                       clamp01((y - 462.0) / 130.0 + 0.2 * noise.layers(x * 0.01, y * 0.02, 4)));
        },
        [&](cairo_t* pen) {
            ground(pen, [](double x) {
                return 476.0 - 12.0 * std::sin(x * 0.012) + 4.0 * std::sin(x * 0.04);
            });
        });
    snowyPine(picture, 640.0, 545.0, 330.0, random);
    snowyPine(picture, 735.0, 560.0, 250.0, random);
    picture.fill([](int, int y) { return mix(hex(0xffffff), hex(0xb7d0ee), (y - 525.0) / 50.0); },
                 [](cairo_t* pen) {
                     ground(pen, [](double x) {
                         return 548.0 - 22.0 * smooth(480.0, 700.0, x) + 3.0 * std::sin(x * 0.03);
                     });
                 });
    picture.grain(0.005, 35);
    for (int i = 0; i < 200; ++i)
        picture.glow(random.in(sceneLeft, sceneRight), random.in(0.0, sceneHeight),
                     random.in(2.0, 5.0), hex(0xffffff) * random.in(0.4, 1.0));
    return picture;
}
