// The camera travels with the train: the train stays, everything else passes by whole periods.
#include "scenes.h"
#include "shapes.h"

#include <numbers>

namespace {

constexpr double turn = 2.0 * std::numbers::pi;
constexpr double rail = 372.0;
constexpr double arch = 192.0;  // from pier to pier: the way the bridge goes in one loop

double fraction(double x) {
    return x - std::floor(x);
}

void roundTree(cairo_t* pen, double x, double base, double size) {
    box(pen, x - size * 0.1, base - size * 1.2, size * 0.2, size * 1.5);
    disc(pen, x - size * 0.5, base - size * 1.2, size * 0.6);
    disc(pen, x + size * 0.5, base - size * 1.3, size * 0.55);
    disc(pen, x, base - size * 1.9, size * 0.7);
}

void valley(Picture& picture, double t) {
    const Noise noise(51);
    picture.shade([&](int x, int y, Rgb) {
        const Rgb sky =
            ramp({{0.0, hex(0x5aa0c8)}, {0.55, hex(0xbfdcdc)}, {1.0, hex(0xffe9c4)}}, y / 330.0);
        const double cloud = noise.looped(x * 0.0042, y * 0.016, t, -0.12, 3);
        return mix(sky, hex(0xfffaf0), 0.75 * smooth(0.0, 0.5, cloud));
    });
    picture.fill(
        [&](int x, int y) {
            return mix(hex(0x7f97a8), hex(0xd9d8cc),
                       smooth(150.0, 330.0, y) + 0.12 * noise.layers(x * 0.02, y * 0.02, 4));
        },
        [&](cairo_t* pen) {
            ground(pen, [&](double x) {
                return 250.0 - 150.0 * noise.layers(x * 0.0042 + 0.35, 7.0, 6);
            });
        });
    for (int layer = 0; layer < 3; ++layer) {
        const double near = layer / 2.0;
        const double period = 96.0 + 48.0 * layer;
        const double shift = period * t;
        const auto top = [&](double x) {
            return 318.0 + 172.0 * layer - 37.0 * layer * layer +
                   (9.0 - 2.0 * layer) * std::sin(turn * (x + shift) / period);
        };
        const Rgb leaf =
            ramp({{0.0, hex(0xb79a62)}, {0.5, hex(0x9a8240)}, {1.0, hex(0x4f5a2e)}}, near);
        picture.fill(
            [&](int x, int y) {
                return mix(leaf, hex(0xf0dcb4),
                           (0.75 - 0.3 * near) * smooth(0.0, 120.0, y - top(x)));
            },
            [&](cairo_t* pen) {
                ground(pen, top);
                Random random(500u + static_cast<std::uint64_t>(layer));
                const int count = 3 + layer % 2;
                for (int i = 0; i < count; ++i) {
                    const double place = period * (i + random.in(0.0, 0.8)) / count;
                    const double size = (9.0 + 6.0 * near) * random.in(0.7, 1.3);
                    const bool poplar = random.next() < 0.4;
                    for (double x = place - fraction(t) * period - 3.0 * period;
                         x < sceneRight + 60.0; x += period) {
                        if (poplar)
                            oval(pen, x, top(x) - size * 1.5, size * 0.42, size * 2.0);
                        else
                            roundTree(pen, x, top(x), size);
                    }
                }
            });
    }
}

void viaduct(Picture& picture, double t) {
    const Noise noise(19);
    const double shift = arch * t;
    const auto stone = [&](int x, int y) {
        const double along = x + shift;
        const double row = std::floor(y / 24.0);
        const double brick = fraction(along / 48.0 + 0.5 * row);
        const bool joint = brick < 0.04 || fraction(y / 24.0) < 0.1;
        const double tone = noise.at(fraction(along / arch) * 8.0, row * 0.7);
        return mix(hex(0xa98f78), hex(0x7a6556),
                   clamp01(0.45 + 0.16 * tone + (y - 400.0) / 420.0)) *
               (joint ? 0.93 : 1.0);
    };
    picture.fill(stone, [&](cairo_t* pen) {
        cairo_set_fill_rule(pen, CAIRO_FILL_RULE_EVEN_ODD);
        cairo_rectangle(pen, sceneLeft - 4.0, rail + 10.0, sceneWidth + 8.0, sceneHeight);
        const double radius = 74.0;
        for (double x = -arch / 2.0 - shift; x < sceneRight + arch; x += arch) {
            cairo_new_sub_path(pen);
            cairo_arc(pen, x, rail + 112.0, radius, turn / 2.0, turn);
            cairo_line_to(pen, x + radius, sceneHeight + 8.0);
            cairo_line_to(pen, x - radius, sceneHeight + 8.0);
            cairo_close_path(pen);
        }
        cairo_fill(pen);
    });
    picture.fill(hex(0xcdb497), [&](cairo_t* pen) {
        box(pen, sceneLeft, rail + 8.0, sceneWidth, 9.0);
        cairo_set_line_width(pen, 7.0);
        for (double x = -arch / 2.0 - shift; x < sceneRight + arch; x += arch) {
            cairo_new_sub_path(pen);
            cairo_arc(pen, x, rail + 112.0, 77.0, turn / 2.0, turn);
            cairo_stroke(pen);
        }
    });
    picture.fill(hex(0x8a7a6a),
                 [&](cairo_t* pen) { box(pen, sceneLeft, rail + 3.0, sceneWidth, 6.0); });
    picture.fill(hex(0x3d352f), [&](cairo_t* pen) {
        box(pen, sceneLeft, rail, sceneWidth, 3.0);
        for (double x = sceneLeft - fraction(t * 6.0) * 32.0; x < sceneRight; x += 32.0)
            box(pen, x, rail + 3.0, 16.0, 5.0);
    });
}

void spokedWheel(cairo_t* pen, double x, double radius, double angle) {
    cairo_set_line_width(pen, 4.0);
    cairo_new_sub_path(pen);
    cairo_arc(pen, x, rail - radius, radius - 2.0, 0.0, turn);
    cairo_stroke(pen);
    for (int i = 0; i < 5; ++i) {
        const double a = angle + turn * i / 5.0;
        stroke(pen, 1.8,
               {{x, rail - radius},
                {x + (radius - 3.0) * std::cos(a), rail - radius + (radius - 3.0) * std::sin(a)}});
    }
    disc(pen, x, rail - radius, 4.0);
}

void coach(Picture& picture, double x) {
    picture.fill(hex(0x2a2724), [&](cairo_t* pen) {
        box(pen, x - 6.0, rail - 17.0, 180.0, 7.0);
        for (const double axle : {24.0, 48.0, 122.0, 146.0})
            disc(pen, x + axle, rail - 9.0, 9.0);
    });
    picture.fill(
        [](int, int y) {
            return mix(hex(0xb8433a), hex(0x7a2226), smooth(rail - 80.0, rail - 16.0, y));
        },
        [&](cairo_t* pen) { box(pen, x, rail - 76.0, 170.0, 60.0); });
    picture.fill(hex(0xf4e3c0), [&](cairo_t* pen) { box(pen, x, rail - 72.0, 170.0, 30.0); });
    picture.fill(hex(0x54616b), [&](cairo_t* pen) {
        polygon(pen, {{x - 3.0, rail - 75.0},
                      {x + 6.0, rail - 84.0},
                      {x + 164.0, rail - 84.0},
                      {x + 173.0, rail - 75.0}});
    });
    picture.fill(
        [](int, int y) {
            return mix(hex(0x4a6f86), hex(0xbcd9df), smooth(rail - 68.0, rail - 47.0, y));
        },
        [&](cairo_t* pen) {
            for (int i = 0; i < 4; ++i)
                box(pen, x + 10.0 + 40.0 * i, rail - 68.0, 30.0, 21.0);
        });
}

void engine(Picture& picture, double x, double t) {
    // A wheel with five spokes looks the same after a fifth of a turn; two fifths are quick enough.
    const double angle = turn * 0.4 * t;
    const auto metal = [](Rgb base) {
        return [base](int, int y) {
            return base * (0.75 + 0.85 * std::exp(-std::pow((y - rail + 76.0) / 9.0, 2.0)));
        };
    };
    picture.fill(metal(hex(0x20262b)), [&](cairo_t* pen) {
        box(pen, x + 60.0, rail - 86.0, 128.0, 48.0);
        disc(pen, x + 186.0, rail - 62.0, 24.0);
        polygon(pen, {{x + 158.0, rail - 84.0},
                      {x + 154.0, rail - 118.0},
                      {x + 182.0, rail - 118.0},
                      {x + 178.0, rail - 84.0}});
        oval(pen, x + 128.0, rail - 86.0, 13.0, 13.0);
        oval(pen, x + 92.0, rail - 86.0, 10.0, 11.0);
        box(pen, x - 2.0, rail - 36.0, 214.0, 12.0);
        polygon(pen, {{x + 196.0, rail - 34.0},
                      {x + 216.0, rail - 30.0},
                      {x + 232.0, rail - 4.0},
                      {x + 196.0, rail - 4.0}});
    });
    picture.fill(hex(0x8d2529), [&](cairo_t* pen) {
        box(pen, x, rail - 106.0, 62.0, 74.0);
        box(pen, x + 60.0, rail - 38.0, 150.0, 5.0);
    });
    picture.fill(hex(0xd8a84a), [&](cairo_t* pen) {
        for (const double band : {84.0, 110.0, 146.0})
            box(pen, x + band, rail - 86.0, 2.6, 48.0);
        box(pen, x + 152.0, rail - 121.0, 32.0, 5.0);
        disc(pen, x + 211.0, rail - 66.0, 6.0);
    });
    picture.fill(hex(0xbcd9df), [&](cairo_t* pen) {
        box(pen, x + 12.0, rail - 96.0, 20.0, 24.0);
        box(pen, x + 38.0, rail - 96.0, 16.0, 24.0);
    });
    picture.fill(hex(0x17191b), [&](cairo_t* pen) {
        polygon(pen, {{x - 8.0, rail - 104.0},
                      {x + 4.0, rail - 114.0},
                      {x + 58.0, rail - 114.0},
                      {x + 70.0, rail - 104.0}});
    });
    picture.fill(hex(0xa02c2c), [&](cairo_t* pen) {
        for (const double axle : {34.0, 84.0, 134.0})
            spokedWheel(pen, x + axle, 22.0, angle);
        spokedWheel(pen, x + 182.0, 13.0, angle);
    });
    // The rod would give the fifths away, so it is seen only as the blur of its level.
    picture.fill(hex(0xc9ccd0), [&](cairo_t* pen) {
        box(pen, x + 30.0, rail - 25.0 + 2.0 * std::sin(turn * t), 150.0, 4.0);
    });
}

void steam(Picture& picture, Point funnel, double t) {
    constexpr int puffs = 26;
    for (int i = puffs - 1; i >= 0; --i) {
        // Each puff takes the place of the next one behind it: two of them leave in a loop.
        const double age = (i + 2.0 * t) / puffs;
        Random random(100u + static_cast<std::uint64_t>(i % 2));
        const double sway = 9.0 * std::sin(turn * (i + 2.0 * t) / 6.0);
        const double x = funnel.x - 560.0 * std::pow(age, 1.15);
        const double y = funnel.y - 105.0 * std::pow(age, 0.55) + sway * age;
        const double size = 15.0 + 74.0 * std::pow(age, 0.8) * random.in(0.85, 1.1);
        const double thick = 0.62 * (1.0 - smooth(0.35, 1.0, age)) * smooth(0.0, 0.05, age);
        const int left = std::max(sceneLeft, static_cast<int>(x - size));
        for (int py = std::max(0, static_cast<int>(y - size));
             py < std::min(sceneHeight, static_cast<int>(y + size) + 1); ++py) {
            for (int px = left; px < std::min(sceneRight, static_cast<int>(x + size) + 1); ++px) {
                const double far = std::hypot(px - x, py - y) / size;
                const Rgb tone =
                    mix(hex(0xffffff), hex(0xc3b8b0), smooth(-0.5, 0.9, (py - y) / size));
                picture.at(px, py) = mix(picture.at(px, py), tone, thick * smooth(1.0, 0.35, far));
            }
        }
    }
}

}  // namespace

Picture paintTrain(double t) {
    Picture picture = emptyScene();
    valley(picture, t);
    viaduct(picture, t);
    const double shake = 0.8 * std::sin(2.0 * turn * t);
    for (const double x : {-150.0, 36.0, 222.0})
        coach(picture, x + shake);
    engine(picture, 412.0 + shake, t);
    steam(picture, {580.0 + shake, rail - 124.0}, t);
    return picture;
}
