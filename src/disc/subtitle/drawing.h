#pragma once

#include <memory>
#include <string>
#include <vector>

#include "disc/project/standard.h"
#include "disc/subtitle/picture.h"
#include "graphics/geometry.h"

namespace tkv::disc {

/// The frame into which subtitles are drawn.
struct SubtitleFrame {
    PixelSize raster;
    double aspect = 0;  ///< width to height, as it is shown
    int barX = 0;       ///< columns of black on each side of the film's picture
    int barY = 0;       ///< rows above and below
    PixelSize film;     ///< of the film before it was converted
    bool operator==(const SubtitleFrame&) const = default;
};

/// Draws texts of the format ASS.
class SubtitleDrawing {
  public:
    /// `fonts`: the bytes of such as are used besides the system's.
    SubtitleDrawing(const SubtitleFrame& frame, const std::vector<std::string>& fonts);
    ~SubtitleDrawing();
    SubtitleDrawing(SubtitleDrawing&&) = delete;

    /// Takes a text. `keepsStyle`: does it look as it says, or as subtitles of discs do? False when
    /// it is none of that format.
    bool load(const std::string& text, bool keepsStyle);

    /// When each line of the text begins and ends, in seconds.
    struct Span {
        double begin, end;
    };
    std::vector<Span> lines() const;

    /// What is to be seen at a time in seconds.
    SubtitlePicture at(double seconds);

  private:
    struct Handles;
    SubtitleFrame frame_;
    std::unique_ptr<Handles> handles_;
};

}  // namespace tkv::disc
