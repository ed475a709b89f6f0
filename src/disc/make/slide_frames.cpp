#include "disc/make/slide_frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "disc/run/fault.h"
#include "graphics/formats.h"
#include "graphics/picture_faults.h"

namespace tkv::disc {

namespace {

SlideStage readStage(const Slide& slide, const SlideLook& look, PixelSize raster) {
    std::optional<PixelSize> size;
    const std::optional<Bitmap> picture = decodePicture(slide.path, [&](PixelSize full) {
        size = full;
        return neededFor(full, look, raster);
    });
    if (picture) return stageOf(*picture, slide.title, look, raster);
    throw DiscError(
        fmt::format("{} cannot be read any more: {}.", slide.path, whyNoPicture(slide.path, size)),
        slide.path);
}

double partWay(double from, double to, double part) {
    return from + (to - from) * part;
}

}  // namespace

SlideTimes::SlideTimes(const SlideShow& show, const Conversion& conversion)
    : slides_(show.slides.size()),
      step_(show.step),
      ofFrame_(conversion.hasFields() ? 2 : 1),
      count_(conversion.frames * ofFrame_),
      perSecond_(conversion.frameRate().perSecond() * ofFrame_) {
    fade_ = static_cast<int>(std::lround(fadeSeconds(step_) * perSecond_));
    black_ = static_cast<int>(std::lround(kBlackSeconds * perSecond_));
}

int SlideTimes::begin(std::size_t slide) const {
    if (slide >= slides_) return count_;
    const double seconds = static_cast<double>(slide) * step_;
    return static_cast<int>(std::lround(seconds * perSecond_ / ofFrame_)) * ofFrame_;
}

SlideMoment SlideTimes::at(int moment) const {
    SlideMoment found;
    // Nearly the right one, since moments are rounded.
    found.slide = std::min(slides_ - 1, static_cast<std::size_t>(moment / perSecond_ / step_));
    while (found.slide > 0 && moment < begin(found.slide))
        --found.slide;
    while (found.slide + 1 < slides_ && moment >= begin(found.slide + 1))
        ++found.slide;
    const int turning = moment - (begin(found.slide + 1) - fade_) + 1;
    if (found.slide + 1 < slides_ && turning > 0)
        found.turning.part = static_cast<double>(turning) / (fade_ + 1);
    const int lit = std::min(moment + 1, count_ - moment);
    found.turning.light = std::min(1.0, static_cast<double>(lit) / (black_ + 1));
    return found;
}

std::size_t SlideTimes::slideAt(double seconds) const {
    const double moment = std::clamp(seconds * perSecond_, 0.0, count_ - 1.0);
    return at(static_cast<int>(moment)).slide;
}

int SlideTimes::birth(std::size_t slide) const {
    return slide == 0 ? 0 : begin(slide) - fade_;
}

double SlideTimes::lifeOf(std::size_t slide, int moment) const {
    return static_cast<double>(moment - birth(slide)) / (begin(slide + 1) - birth(slide));
}

double SlideTimes::lifeSeconds() const {
    return step_ + fade_ / perSecond_;
}

SlideFrames::SlideFrames(const SlideShow& show, const SlideTimes& times, int end, PixelSize raster)
    : show_(show), times_(times), end_(end * times.ofFrame()), raster_(raster) {}

void SlideFrames::prepare(std::size_t slide) {
    if (slide >= show_.slides.size() || stages_.contains(slide) || times_.birth(slide) >= end_)
        return;
    const SlideLook look{show_.request.moves, slide, times_.lifeSeconds()};
    const auto read = [&source = show_.slides[slide], look, raster = raster_] {
        return std::make_shared<const SlideStage>(readStage(source, look, raster));
    };
    stages_.emplace(slide, std::async(std::launch::async, read).share());
}

const Planes& SlideFrames::seen(std::size_t slide, int moment, RowSet rows, Planes& drawn) {
    prepare(slide);
    const SlideStage& stage = *stages_.at(slide).get();
    if (!stage.motion) return stage.picture;
    const PixelSize wanted{raster_.width, raster_.height / rows.step};
    if (drawn.front().size != wanted) drawn = emptyPlanes(wanted);
    const auto& [from, to] = *stage.motion;
    const double part = times_.lifeOf(slide, moment);
    const PixelSize size = stage.picture.front().size;
    const double across = size.width / stage.width, down = size.height / stage.height;
    const double side = partWay(from.size, to.size, part);
    resample(stage.picture,
             {partWay(from.x, to.x, part) * across, partWay(from.y, to.y, part) * down,
              side * across, side * down},
             ColorSite::left, rows, drawn);
    if (stage.caption) cover(drawn, *stage.caption, rows);
    return drawn;
}

void SlideFrames::drawMoment(int moment, RowSet rows, std::span<std::uint8_t> frame) {
    const SlideMoment now = times_.at(moment);
    if (!show_.request.moves && last_ == now) return;
    last_ = now;
    const bool isTurning = now.turning.part > 0;
    // What is behind is not needed again, and what comes next is decoded meanwhile.
    stages_.erase(stages_.begin(), stages_.lower_bound(now.slide));
    prepare(now.slide);
    prepare(now.slide + 1);
    if (isTurning) prepare(now.slide + 2);
    const Planes& first = seen(now.slide, moment, rows, drawn_);
    const Planes& next = isTurning ? seen(now.slide + 1, moment, rows, drawnNext_) : first;
    writeFrame(first, next, now.turning, rows, frame);
}

void SlideFrames::draw(int number, std::span<std::uint8_t> frame) {
    if (times_.ofFrame() == 1) return drawMoment(number, kAllRows, frame);
    drawMoment(2 * number, kTopField, frame);
    drawMoment(2 * number + 1, kBottomField, frame);
}

void SlideFrames::drawStill(int number, std::span<std::uint8_t> frame) {
    drawMoment(number * times_.ofFrame(), kAllRows, frame);
}

}  // namespace tkv::disc
