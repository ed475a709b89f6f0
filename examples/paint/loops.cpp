// Every movement in these scenes covers a whole number of its own periods while t goes from
// 0 to 1, so that the last frame leads back to the first.
#include "scenes.h"
#include "shapes.h"

#include <array>
#include <numbers>

namespace {

constexpr double turn = 2.0 * std::numbers::pi;

// One arm of a lamp that turns above the viewer's eye, seen as a cone in lit air.
void beam(Picture& picture, Point lamp, double angle, Rgb light) {
    const double depth = 1.0 - 0.72 * std::sin(angle);  // of the far end; the lamp's is 1
    const Point end{lamp.x + 900.0 * std::cos(angle) / depth, lamp.y - 90.0 * (1.0 / depth - 1.0)};
    const double dx = end.x - lamp.x;
    const double dy = end.y - lamp.y;
    const double length = std::max(1.0, std::hypot(dx, dy));
    picture.shade([&](int x, int y, Rgb old) {
        const double along = ((x - lamp.x) * dx + (y - lamp.y) * dy) / length;
        if (along <= 0.0) return old;
        const double off = std::abs((x - lamp.x) * dy - (y - lamp.y) * dx) / length;
        const double width = 3.5 + along * (0.07 + 0.03 * std::max(0.0, std::sin(angle)));
        const double shape = std::exp(-std::pow(off / width, 2.0));
        return screen(old, light * (shape * 0.85 * std::exp(-along / 330.0) *
                                    smooth(1.0, 0.55, along / length)));
    });
}

void lighthouseTower(Picture& picture, Point lamp) {
    const Noise noise(8);
    const auto cliff = [&](double x) {
        return 402.0 + 215.0 * smooth(190.0, 470.0, x + 16.0 * noise.layers(x * 0.03, 1.0, 3)) +
               7.0 * noise.layers(x * 0.02, 4.0, 4);
    };
    picture.fill(
        [&](int x, int y) {
            return mix(hex(0x182030), hex(0x0a0e18),
                       (y - cliff(x)) / 110.0 + 0.5 * noise.layers(x * 0.03, y * 0.02, 4));
        },
        [&](cairo_t* pen) { ground(pen, cliff); });
    const auto round = [&](Rgb base) {
        return [base, lamp](int x, int) {
            return base * (0.78 - 0.45 * smooth(-26.0, 30.0, x - lamp.x));
        };
    };
    picture.fill(round(hex(0xb9bdc9)), [&](cairo_t* pen) {
        polygon(pen, {{lamp.x - 17.0, lamp.y + 20.0},
                      {lamp.x + 17.0, lamp.y + 20.0},
                      {lamp.x + 29.0, 412.0},
                      {lamp.x - 29.0, 412.0}});
    });
    picture.fill(round(hex(0xb0333a)), [&](cairo_t* pen) {
        for (int i = 0; i < 3; ++i) {
            const double top = lamp.y + 50.0 + 70.0 * i;
            const double half = 18.6 + 3.7 * i;
            polygon(pen, {{lamp.x - half, top},
                          {lamp.x + half, top},
                          {lamp.x + half + 1.9, top + 34.0},
                          {lamp.x - half - 1.9, top + 34.0}});
        }
    });
    picture.fill(hex(0x10131c), [&](cairo_t* pen) {
        box(pen, lamp.x - 24.0, lamp.y + 15.0, 48.0, 6.0);
        polygon(pen, {{lamp.x - 16.0, lamp.y - 13.0},
                      {lamp.x, lamp.y - 30.0},
                      {lamp.x + 16.0, lamp.y - 13.0}});
        for (const double side : {-13.0, 12.0})
            box(pen, lamp.x + side, lamp.y - 14.0, 1.6, 30.0);
        box(pen, lamp.x + 40.0, 384.0, 46.0, 30.0);
        polygon(pen, {{lamp.x + 35.0, 386.0}, {lamp.x + 63.0, 366.0}, {lamp.x + 91.0, 386.0}});
    });
    picture.fill(hex(0xffc96b), [&](cairo_t* pen) { box(pen, lamp.x + 56.0, 391.0, 9.0, 10.0); });
}

}  // namespace

Picture paintLighthouse(double t) {
    Picture picture = emptyScene();
    const Noise noise(3);
    const Point lamp{185.0, 150.0};
    const double horizon = 400.0;
    const double angle = turn * t / 2.0;  // two arms: half a turn looks like the start
    const double facing = std::pow(std::sin(angle), 24.0);
    picture.shade([&](int x, int y, Rgb) {
        if (y < horizon) {
            const Rgb sky = ramp(
                {{0.0, hex(0x0a1230)}, {0.55, hex(0x17305c)}, {1.0, hex(0x3f6488)}}, y / horizon);
            const double cloud =
                smooth(0.0, 0.6, noise.layers(x * 0.005, y * 0.014, 4)) * y / horizon;
            return mix(sky, hex(0x2a3f63), 0.6 * cloud);
        }
        const double far = 60.0 / (y - horizon + 5.0);
        const double wave = noise.looped((x - 384.0) * far * 0.014, far * 9.0, t, 0.35, 3);
        const Rgb sea = ramp({{0.0, hex(0x35587c)}, {0.25, hex(0x183456)}, {1.0, hex(0x081426)}},
                             (y - horizon) / 176.0);
        const double glint = std::exp(-std::pow((x - 560.0) / (40.0 + 0.5 * (y - horizon)), 2.0));
        return screen(sea * (1.0 + 0.5 * wave),
                      hex(0xcfe0ff) * (0.55 * glint * smooth(0.12, 0.5, wave)));
    });
    Random random(77);
    for (int i = 0; i < 120; ++i) {
        const double y = 330.0 * std::pow(random.next(), 1.3);
        const double x = random.in(sceneLeft, sceneRight);
        const double twinkle = 0.75 + 0.25 * std::sin(turn * (t + random.next()));
        picture.glow(x, y, random.in(1.3, 2.6),
                     hex(0xe8efff) * (random.in(0.3, 1.0) * twinkle * (1.0 - y / 400.0)));
    }
    picture.glow(560.0, 120.0, 110.0, hex(0x9fb6e0) * 0.35);
    picture.fill(hex(0xf2f1e4), [](cairo_t* pen) { disc(pen, 560.0, 120.0, 25.0); });
    for (const double arm : {angle, angle + turn / 2.0})
        if (std::sin(arm) < 0.0) beam(picture, lamp, arm, hex(0xffe9b0));
    lighthouseTower(picture, lamp);
    for (const double arm : {angle, angle + turn / 2.0})
        if (std::sin(arm) >= 0.0) beam(picture, lamp, arm, hex(0xffe9b0));
    picture.glow(lamp.x, lamp.y, 60.0 + 170.0 * facing, hex(0xffdf9a) * (0.6 + 0.4 * facing));
    picture.glow(lamp.x, lamp.y, 15.0 + 22.0 * facing, hex(0xfffbe6));
    return picture;
}

namespace {

void sailBoat(Picture& picture, double x, double y, double tilt) {
    const auto at = [&](cairo_t* pen) {
        cairo_translate(pen, x, y);
        cairo_rotate(pen, tilt);
        cairo_scale(pen, 1.3, 1.3);
    };
    const auto sail = [&](Rgb bright, Rgb dim, Point top, Point luff, Point clew, double belly) {
        picture.fill([&](int px, int) { return mix(bright, dim, smooth(-90.0, 110.0, px - x)); },
                     [&](cairo_t* pen) {
                         at(pen);
                         cairo_move_to(pen, luff.x, luff.y);
                         cairo_line_to(pen, top.x, top.y);
                         cairo_curve_to(pen, top.x + belly, top.y + 60.0, clew.x + belly * 0.3,
                                        clew.y - 60.0, clew.x, clew.y);
                         cairo_curve_to(pen, clew.x * 0.6, clew.y + 7.0, luff.x, luff.y + 6.0,
                                        luff.x, luff.y);
                         cairo_fill(pen);
                     });
    };
    picture.fill(hex(0x6b4a2e), [&](cairo_t* pen) {
        at(pen);
        stroke(pen, 3.2, {{0.0, -14.0}, {0.0, -208.0}});
        stroke(pen, 2.6, {{0.0, -32.0}, {-78.0, -28.0}});
    });
    sail(hex(0xfffdf4), hex(0xd9dfe6), {3.0, -200.0}, {5.0, -34.0}, {66.0, -30.0}, 16.0);
    sail(hex(0xe2503c), hex(0xc93a30), {-3.0, -206.0}, {-3.0, -37.0}, {-76.0, -33.0}, -14.0);
    picture.fill(
        [&](int, int py) { return mix(hex(0xffffff), hex(0xa9bccb), smooth(-26.0, 22.0, py - y)); },
        [&](cairo_t* pen) {
            at(pen);
            cairo_move_to(pen, -80.0, -20.0);
            cairo_line_to(pen, 92.0, -24.0);
            cairo_curve_to(pen, 78.0, -2.0, 60.0, 12.0, 40.0, 16.0);
            cairo_line_to(pen, -66.0, 16.0);
            cairo_close_path(pen);
            cairo_fill(pen);
        });
    picture.fill(hex(0x24507a), [&](cairo_t* pen) {
        at(pen);
        polygon(pen, {{-80.0, -20.0}, {92.0, -24.0}, {88.0, -17.0}, {-78.5, -13.5}});
    });
}

void swell(Picture& picture, int layer, double t) {
    const double near = layer / 4.0;
    const double base = 376.0 + 165.0 * std::pow(near, 1.3);
    const double tall = 3.0 + 12.0 * near;
    const double length = 110.0 + 190.0 * near;
    const auto top = [&](double x) {
        const double phase = x / length + layer * 0.37;
        return base + tall * (0.6 * std::sin(turn * (phase + t)) +
                              0.4 * std::sin(turn * (phase * 1.7 + 2.0 * t + 0.2)));
    };
    const Rgb crest = mix(hex(0x6fc3d6), hex(0x2a93b8), near);
    const Rgb trough = mix(hex(0x3d9dbf), hex(0x0c4a7a), near);
    picture.fill(
        [&](int x, int y) {
            const double below = y - top(x);
            const Rgb body = mix(crest, trough, smooth(0.0, 22.0 + 60.0 * near, below));
            return mix(body, hex(0xe6f8fa), 0.6 * smooth(2.5 + 3.5 * near, 0.0, below));
        },
        [&](cairo_t* pen) { ground(pen, top); });
}

}  // namespace

Picture paintSailing(double t) {
    Picture picture = emptyScene();
    const Noise noise(29);
    const double horizon = 372.0;
    picture.shade([&](int x, int y, Rgb) {
        const double above = clamp01(1.0 - y / horizon);
        const Rgb sky =
            ramp({{0.0, hex(0xffeccb)}, {0.25, hex(0xbfe3ec)}, {1.0, hex(0x3a93d0)}}, above);
        const double far = 1.0 / (above + 0.22);
        const double thick = noise.looped((x - 384.0) * far * 0.0034, far * 1.5, t, 0.22, 4);
        const double under = noise.looped((x - 384.0) * far * 0.0034, far * 1.5 - 0.16, t, 0.22, 2);
        const Rgb cloud = mix(hex(0xb9cede), hex(0xffffff), clamp01(0.6 + 1.2 * (thick - under)));
        return mix(sky, cloud, smooth(-0.05, 0.42, thick) * 0.92);
    });
    picture.glow(150.0, 300.0, 260.0, hex(0xfff0c0) * 0.55);
    const Noise hills(13);
    picture.fill(
        [](int, int y) { return mix(hex(0x7d9fb6), hex(0xb9cdd2), smooth(290.0, 372.0, y)); },
        [&](cairo_t* pen) {
            ground(pen, [&](double x) {
                return 392.0 - 90.0 * std::exp(-std::pow((x - 640.0) / 130.0, 2.0)) -
                       30.0 * hills.layers(x * 0.012, 0.0, 5);
            });
        });
    picture.fill(hex(0x8ccbd8),
                 [&](cairo_t* pen) { box(pen, sceneLeft, horizon, sceneWidth, 204.0); });
    const double bob = 7.0 * std::sin(turn * (t + 0.1));
    for (int layer = 0; layer <= 4; ++layer) {
        swell(picture, layer, t);
        if (layer == 2)
            sailBoat(picture, 350.0, 446.0 + bob, 0.055 * std::sin(turn * (t - 0.12)) - 0.02);
    }
    return picture;
}

namespace {

const std::array<Rgb, 2> gondolaColours{hex(0xff5d73), hex(0x4fd0e0)};

void wheelLights(Picture& picture, Point hub, double radius, double t) {
    constexpr int arms = 12;
    // Two arms on, the gondolas have the same colours again: that much makes the loop.
    const double angle = turn * 2.0 / arms * t;
    const auto rim = [&](double arm, double r) {
        return Point{hub.x + r * std::cos(angle + turn * arm / arms),
                     hub.y + r * std::sin(angle + turn * arm / arms)};
    };
    picture.fill(hex(0xd9a7b8), [&](cairo_t* pen) {
        for (int i = 0; i < arms; ++i)
            stroke(pen, 2.2, {hub, rim(i, radius)});
        for (const double r : {radius, radius * 0.4}) {
            cairo_set_line_width(pen, r < radius ? 2.2 : 4.0);
            cairo_new_sub_path(pen);
            cairo_arc(pen, hub.x, hub.y, r, 0.0, turn);
            cairo_stroke(pen);
        }
    });
    for (int i = 0; i < arms * 2; ++i) {
        const Point bulb = rim(i / 2.0 + 0.25, radius * 0.94);
        picture.glow(bulb.x, bulb.y, 12.0, hex(0xffd27a) * 0.8);
        picture.glow(bulb.x, bulb.y, 5.0, hex(0xfff6d8));
    }
    for (int i = 0; i < arms; ++i) {
        for (const double r : {0.4, 0.7}) {
            const Point bulb = rim(i, radius * r);
            picture.glow(bulb.x, bulb.y, 12.0,
                         gondolaColours[static_cast<std::size_t>(i % 2)] * 0.9);
        }
    }
    for (int i = 0; i < arms; ++i) {
        const Point top = rim(i, radius);
        const Rgb paint = gondolaColours[static_cast<std::size_t>(i % 2)];
        picture.fill(
            [&](int, int y) { return paint * (1.0 - 0.35 * smooth(8.0, 26.0, y - top.y)); },
            [&](cairo_t* pen) {
                stroke(pen, 2.0, {top, {top.x, top.y + 8.0}});
                polygon(pen, {{top.x - 15.0, top.y + 9.0},
                              {top.x, top.y + 1.0},
                              {top.x + 15.0, top.y + 9.0}});
                cairo_arc(pen, top.x, top.y + 17.0, 14.0, 0.0, turn / 2.0);
                cairo_close_path(pen);
                cairo_fill(pen);
                box(pen, top.x - 1.0, top.y + 6.0, 2.0, 12.0);
            });
        picture.glow(top.x, top.y + 14.0, 15.0, hex(0xffe2a0) * 0.6);
    }
    picture.fill(hex(0xffe2b0), [&](cairo_t* pen) { disc(pen, hub.x, hub.y, 13.0); });
    picture.glow(hub.x, hub.y, 70.0, hex(0xffc070) * 0.8);
}

void fairground(Picture& picture, double t) {
    const double floor = 520.0;
    Random random(66);
    picture.fill(hex(0x2a1838), [&](cairo_t* pen) {
        box(pen, sceneLeft, floor, sceneWidth, 60.0);
        for (const double x : {-52.0, 682.0}) {
            const double wide = 138.0;
            polygon(pen, {{x - 8.0, floor - 44.0},
                          {x + wide / 2.0, floor - 96.0},
                          {x + wide + 8.0, floor - 44.0}});
            box(pen, x, floor - 46.0, wide, 48.0);
            stroke(pen, 2.0, {{x + wide / 2.0, floor - 94.0}, {x + wide / 2.0, floor - 114.0}});
        }
        for (int i = 0; i < 23; ++i) {
            const double x = random.in(sceneLeft, sceneRight);
            const double tall = random.in(22.0, 29.0);
            oval(pen, x, floor + 14.0 - tall * 0.5, 4.6, tall * 0.5);
            disc(pen, x, floor + 10.0 - tall, 3.8);
        }
    });
    for (const double x : {-52.0, 682.0}) {
        picture.fill(
            [&](int px, int) {
                return (px - static_cast<int>(x) + 806) / 25 % 2 == 0 ? hex(0xe35d5b)
                                                                      : hex(0xf6e3c5);
            },
            [&](cairo_t* pen) { box(pen, x - 6.0, floor - 46.0, 150.0, 14.0); });
        picture.fill(hex(0xffc46b),
                     [&](cairo_t* pen) { box(pen, x + 14.0, floor - 29.0, 110.0, 18.0); });
        picture.glow(x + 69.0, floor - 22.0, 100.0, hex(0xff9f4a) * 0.45);
    }
    for (int i = -4; i < 25; ++i) {
        const double x = 36.0 * i + 6.0;
        const double y = 424.0 + 20.0 * std::pow(std::sin(turn * x / 384.0), 2.0);
        const double lit = 0.45 + 0.55 * std::pow(std::cos(turn / 2.0 * (i / 2.0 - t)), 2.0);
        picture.glow(x, y, 12.0, hex(0xffc868) * lit);
        picture.glow(x, y, 3.5, hex(0xfff3d0) * lit);
    }
}

}  // namespace

Picture paintWheel(double t) {
    Picture picture = emptyScene();
    const Noise noise(44);
    const Point hub{384.0, 254.0};
    picture.shade([&](int x, int y, Rgb) {
        const Rgb sky = ramp({{0.0, hex(0x1c1f52)},
                              {0.4, hex(0x5a3578)},
                              {0.7, hex(0xc45a78)},
                              {1.0, hex(0xffab6e)}},
                             y / 540.0);
        const double cloud = smooth(0.0, 0.55, noise.layers(x * 0.004, y * 0.013, 3));
        return mix(sky, mix(hex(0x3b2a62), hex(0xff9080), smooth(120.0, 470.0, y)), 0.55 * cloud);
    });
    const auto leg = [&](cairo_t* pen) {
        for (const double side : {-1.0, 1.0}) {
            stroke(pen, 9.0, {hub, {hub.x + side * 112.0, 526.0}});
            stroke(pen, 4.0, {{hub.x, 430.0}, {hub.x + side * 72.0, 430.0}});
        }
    };
    picture.fill(hex(0x3a2450), leg);
    wheelLights(picture, hub, 206.0, t);
    fairground(picture, t);
    return picture;
}
