#pragma once

#include <string>
#include <vector>

#include "disc/make/film_encoding.h"
#include "disc/make/scenes.h"
#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// The names of an excerpt's frames, which count from 0, as ffmpeg is told them.
inline constexpr const char* kFramePattern = "%06d.jpg";

/// A run of the frames of a disc's film that is wanted as a folder of pictures.
struct WantedExcerpt {
    FrameRange range;
    PixelSize size;
    std::string name;  ///< in the workshop
};

/// What is to be cut of a film for its excerpts, in their order. `name`: of the disc's film in the
/// workshop. `scenes`: where the excerpts begin.
std::vector<WantedExcerpt> wantedExcerpts(const DiscFilm& film, const std::string& name,
                                          const std::vector<Scene>& scenes);

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

    std::vector<WantedExcerpt> wanted_;
    std::vector<Frames> frames_;
    Workshop& workshop_;
};

}  // namespace tkv::disc
