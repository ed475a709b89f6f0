#pragma once

#include <string>
#include <vector>

#include "disc/make/excerpt_frames.h"
#include "disc/make/film_encoding.h"
#include "disc/make/scenes.h"
#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// The names of a part's pictures, which count from 0, as ffmpeg is told them.
inline constexpr const char* kFramePattern = "%06d.jpg";

/// Frames of a disc's film that are wanted as a folder of pictures.
struct WantedExcerpt {
    std::vector<FrameRange> parts;  ///< as many, and as long, as writeExcerpt takes them
    int lead = 0;                   ///< as it takes it
    FrameShape shape;
    std::string name;  ///< in the workshop
};

/// What is to be cut of a film for its excerpts, in their order. `name`: of the disc's film in the
/// workshop. `scenes`: where the excerpts' parts begin.
std::vector<WantedExcerpt> wantedExcerpts(const DiscFilm& film, const std::string& name,
                                          const std::vector<std::vector<Scene>>& scenes);

/// The excerpts that are cut while their film is encoded. The encoder writes each frame once in
/// each size, however many excerpts it belongs to.
class ExcerptBatch {
  public:
    /// Makes the folders that the encoder writes into. `film`: its name in the workshop, which must
    /// outlive this.
    ExcerptBatch(std::vector<WantedExcerpt> wanted, const std::string& film, Workshop& workshop);

    /// What the encoder is to write.
    std::vector<ExcerptOutput> outputs() const;

    /// Makes the excerpts of what it has written.
    void handOut();

  private:
    // All frames of one size, in the order in which the encoder writes them.
    struct Frames {
        PixelSize size;
        std::vector<FrameRange> ranges;
        std::string folder;
    };

    Pictures picturesOf(const FrameRange& range, const Frames& frames) const;

    std::vector<WantedExcerpt> wanted_;
    std::vector<Frames> frames_;
    Workshop& workshop_;
};

/// What stands for each excerpt of a film before there is any: a picture, or a folder with one, by
/// name. `scenes`: where the excerpts' parts begin.
std::vector<std::string> stillExcerpts(const DiscFilm& film,
                                       const std::vector<std::vector<Scene>>& scenes,
                                       Workshop& workshop);

/// The pictures that ffmpeg has written into a folder of the workshop: from one number on, at most
/// so many. The last frames of a film may be missing: its length is known to a frame or two.
Pictures picturesIn(const std::string& folder, int first, int count, const Workshop& workshop);

}  // namespace tkv::disc
