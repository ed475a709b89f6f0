#pragma once

// Draws the frames of a film that is made of pictures:
//
//     const SlideTimes times(show, conversion);
//     SlideFrames frames(show, times, conversion.frames, raster);
//     std::vector<std::uint8_t> frame(frameBytes(raster));
//     frames.draw(0, frame);  // and so on

#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <span>

#include "disc/film/slides.h"
#include "disc/make/slide_planes.h"
#include "disc/make/slide_stage.h"
#include "disc/plan/conversion.h"

namespace tkv::disc {

/// What a moment of the film shows.
struct SlideMoment {
    std::size_t slide = 0;
    Turning turning{};  ///< into the next one
    bool operator==(const SlideMoment&) const = default;
};

/// When slides begin and end, in moments of the film: its frames, or twice as many of one with
/// fields.
class SlideTimes {
  public:
    SlideTimes(const SlideShow& show, const Conversion& conversion);

    /// The first moment at which a slide is there and nothing else.
    int begin(std::size_t slide) const;

    /// The first moment at which something of a slide is there.
    int birth(std::size_t slide) const;

    /// Of a moment in 0 to count() - 1.
    SlideMoment at(int moment) const;

    /// Which part of a slide's life has gone.
    double lifeOf(std::size_t slide, int moment) const;

    /// Seconds for which a slide is seen.
    double lifeSeconds() const;

    /// The slide that is there, whatever it turns into.
    std::size_t slideAt(double seconds) const;

    int count() const { return count_; }
    int ofFrame() const { return ofFrame_; }

  private:
    std::size_t slides_;
    double step_;
    int ofFrame_;  // moments
    int count_;
    double perSecond_;
    int fade_, black_;
};

/// Draws frames of a film in their order. A slide's picture is decoded once, ahead of its turn and
/// in another thread; three at most are kept.
class SlideFrames {
  public:
    /// `end`: behind the last frame that is to be drawn. `raster`: of the frames, shown as 16:9.
    /// The show must outlive it.
    SlideFrames(const SlideShow& show, const SlideTimes& times, int end, PixelSize raster);

    /// Draws the frame of the disc, with the fields that it has. `frame`: frameBytes(raster) bytes
    /// in which the one before is left. Throws DiscError when a picture cannot be read any more.
    void draw(int number, std::span<std::uint8_t> frame);

    /// Draws what is seen when a frame begins, without fields.
    void drawStill(int number, std::span<std::uint8_t> frame);

  private:
    using Stage = std::shared_ptr<const SlideStage>;

    void prepare(std::size_t slide);
    void drawMoment(int moment, RowSet rows, std::span<std::uint8_t> frame);
    const Planes& seen(std::size_t slide, int moment, RowSet rows, Planes& drawn);

    const SlideShow& show_;
    SlideTimes times_;
    int end_;  // moment
    PixelSize raster_;
    std::map<std::size_t, std::shared_future<Stage>> stages_;
    Planes drawn_, drawnNext_;
    std::optional<SlideMoment> last_;
};

}  // namespace tkv::disc
