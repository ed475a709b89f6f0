#include "disc/make/slide_stage.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "graphics/drawing.h"
#include "graphics/formats.h"
#include "graphics/text.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

// Shapes of pictures that stand still and fill the frame, though a little of them goes.
constexpr double kNearlyFilling = 0.87;

// What of a picture that moves is to be seen at once for it to fill the frame: of squares and of
// what stands upright that would be too little.
constexpr double kEnoughSeen = 0.58;

// Pixels of a moving stage for one of the frame.
constexpr double kFiner = 4.0 / 3;

// Of what is behind a whole picture: so few pixels that they cost nothing to be blurred.
constexpr PixelSize kGround{64, 36};
constexpr double kGroundSigma = 3, kGroundLight = 0.55, kGroundColor = 0.7;

// Zoom and speed a second of its life, and at most.
constexpr double kZoomSpeed = 0.018, kMostZoom = 0.12, kPanSpeed = 0.05;

// Of that zoom, what is left to a picture that is to stay whole.
constexpr double kWholePart = 0.4;

double shapeOf(const Bitmap& picture) {
    const Size size = picture.nominalSize();
    return size.width / size.height;
}

int even(double length) {
    return std::max(2, 2 * static_cast<int>(std::lround(length / 2)));
}

Bitmap blank(PixelSize size) {
    std::optional<Bitmap> bitmap = Bitmap::create(size);
    if (!bitmap) throw std::bad_alloc();
    return *std::move(bitmap);
}

Rect allOf(const Bitmap& bitmap) {
    return {0, 0, bitmap.nominalSize().width, bitmap.nominalSize().height};
}

// The part of a picture that stretches to that size.
Planes stretched(const Bitmap& picture, const Rect& part, PixelSize size) {
    Bitmap made = blank(size);
    if (!drawPicture(made, picture, part, allOf(made), Compositing::sourceOver, 1))
        throw std::bad_alloc();
    return planesOf(made);
}

// The largest part of the shape of a frame; of what is too high rather the upper half, where faces
// are.
Rect filling(const Bitmap& picture) {
    const Size size = picture.nominalSize();
    const double width = std::min(size.width, size.height * kWideAspect);
    const double height = std::min(size.height, size.width / kWideAspect);
    constexpr double kAbove = 0.4;
    return {(size.width - width) / 2, (size.height - height) * (1 - kAbove), width, height};
}

// The picture whole, before itself out of focus.
Planes wholeOnGround(const Bitmap& picture, PixelSize size) {
    Planes ground = stretched(picture, filling(picture), kGround);
    blur(ground, kGroundSigma);
    weaken(ground, kGroundLight, kGroundColor);
    Planes made = emptyPlanes(size);
    resample(ground, {0, 0, kGround.width, kGround.height}, ColorSite::middle, kAllRows, made);
    const Placement place = placedIn(size, kWideAspect, shapeOf(picture), {2, 2});
    put(stretched(picture, allOf(picture), {place.width, place.height}), place.x, place.y, made);
    return made;
}

// A title in one line or two, each of which ends where the frame does.
constexpr double kFontPart = 0.05, kMarginPart = 0.08, kTextPart = 0.8;  // of the frame's height

std::string broken(std::string text, double charactersOfLine) {
    const auto half = characterCount(text) / 2;
    if (static_cast<double>(2 * half) <= charactersOfLine) return text;
    const std::size_t middle = firstCharacters(text, half).size();
    const std::size_t before = text.rfind(' ', middle), after = text.find(' ', middle);
    const std::size_t at = after == std::string::npos ||
                                   (before != std::string::npos && middle - before < after - middle)
                               ? before
                               : after;
    if (at != std::string::npos) text[at] = '\n';
    return text;
}

std::optional<Overlay> captionOverlay(const std::string& caption, PixelSize raster) {
    if (caption.empty()) return std::nullopt;
    const double rows = raster.height;
    const PixelSize canvas{even(rows * kWideAspect), raster.height};
    TextAttributes attributes;
    attributes.fontSize = static_cast<float>(std::lround(rows * kFontPart));
    attributes.alignment = Alignment::center;
    attributes.shadow.blurRadius = 3;
    const double width = canvas.width * kTextPart;
    const std::string text = broken(caption, width / (0.55 * attributes.fontSize));
    const double line = 1.28 * attributes.fontSize;
    const double height = line * (text.find('\n') == std::string::npos ? 1 : 2) + 2;
    const auto letters =
        rasterizeText(text, attributes,
                      Rect{(canvas.width - width) / 2, rows * kMarginPart, width, height}, canvas);
    if (!letters) return std::nullopt;
    Bitmap page = blank(canvas), made = blank(raster);
    if (!blend(page, *letters, 1) ||
        !drawPicture(made, page, allOf(page), allOf(made), Compositing::sourceOver, 1))
        throw std::bad_alloc();
    // To its foot the picture grows so dark that letters can be read on white, too: at 6:1.
    constexpr double kShade = 0.62;
    const double middle = rows * kMarginPart + height / 2, foot = 2.2 * (middle + height / 2);
    std::vector<double> shade;
    for (int y = 0; y < raster.height; ++y) {
        const double part = std::clamp((foot - (rows - y)) / (foot - middle), 0.0, 1.0);
        shade.push_back(kShade * part * part * (3 - 2 * part));
    }
    return overlayOf(made, shade);
}

// How much of what is not seen lies before what is, at the first moment and at the last.
struct Anchors {
    double from, to;
};

// The same where less than all of the way is gone.
Anchors within(Anchors anchors, double slack, double most) {
    const double way = std::abs(anchors.to - anchors.from) * slack;
    if (way <= most) return anchors;
    const double middle = (anchors.from + anchors.to) / 2, part = most / way;
    return {middle + (anchors.from - middle) * part, middle + (anchors.to - middle) * part};
}

}  // namespace

bool fillsFrame(double aspect, bool moves) {
    const double seen = std::min(aspect / kWideAspect, kWideAspect / aspect);
    return seen >= (moves ? kEnoughSeen : kNearlyFilling);
}

Motion motionOf(double width, double height, bool isFilling, const SlideLook& look) {
    const double zoom =
        std::min(kMostZoom, kZoomSpeed * look.seconds) * (isFilling ? 1 : kWholePart);
    const double most = kPanSpeed * look.seconds;
    const std::size_t turn = look.number % 4;
    // Two slides go nearer and two go further away, to the right or to the left.
    const bool isNearer = turn % 2 == 0;
    const double far = 1, near = 1 - zoom;
    StageView from{0, 0, isNearer ? far : near}, to{0, 0, isNearer ? near : far};
    Anchors across = turn < 2 ? Anchors{0.25, 0.75} : Anchors{0.75, 0.25};
    Anchors down{0.5, 0.5};
    if (width > 1) across = within(turn < 2 ? Anchors{0, 1} : Anchors{1, 0}, width - near, most);
    // Faces are in the upper half of most pictures.
    if (height > 1)
        down = within(turn < 2 ? Anchors{0.1, 0.5} : Anchors{0.5, 0.1}, height - near, most);
    from.x = (width - from.size) * across.from;
    from.y = (height - from.size) * down.from;
    to.x = (width - to.size) * across.to;
    to.y = (height - to.size) * down.to;
    return {from, to};
}

SlideStage stageOf(const Bitmap& picture, const std::string& caption, const SlideLook& look,
                   PixelSize raster) {
    const double aspect = shapeOf(picture), finer = look.moves ? kFiner : 1;
    const PixelSize frame{even(raster.width * finer), even(raster.height * finer)};
    const bool isFilling = fillsFrame(aspect, look.moves);
    SlideStage stage;
    if (look.moves && isFilling) {
        stage.width = std::max(1.0, aspect / kWideAspect);
        stage.height = std::max(1.0, kWideAspect / aspect);
        stage.picture =
            stretched(picture, allOf(picture),
                      {even(frame.width * stage.width), even(frame.height * stage.height)});
    } else if (isFilling) {
        stage.picture = stretched(picture, filling(picture), frame);
    } else {
        stage.picture = wholeOnGround(picture, frame);
    }
    stage.caption = captionOverlay(caption, raster);
    if (look.moves) {
        stage.motion = motionOf(stage.width, stage.height, isFilling, look);
        return stage;
    }
    Planes made = emptyPlanes(raster);
    resample(stage.picture, {0, 0, 1.0 * raster.width, 1.0 * raster.height}, ColorSite::left,
             kAllRows, made);
    stage.picture = std::move(made);
    if (stage.caption) cover(stage.picture, *std::exchange(stage.caption, std::nullopt), kAllRows);
    return stage;
}

PixelSize neededFor(PixelSize full, const SlideLook& look, PixelSize raster) {
    const double aspect = static_cast<double>(full.width) / full.height;
    const double finer = look.moves ? kFiner : 1;
    Size shown{raster.width * finer, raster.height * finer};
    const bool isFilling = fillsFrame(aspect, look.moves);
    double& cut = (aspect > kWideAspect) == isFilling ? shown.width : shown.height;
    const double more = std::max(aspect / kWideAspect, kWideAspect / aspect);
    cut *= isFilling ? more : 1 / more;
    // Behind it itself is seen, larger than it is whole, but so coarsely that it does not matter.
    return sufficientFor(shown);
}

}  // namespace tkv::disc
