#pragma once

#include <string>
#include <vector>

#include "disc/film_encoding.h"
#include "disc/workshop.h"
#include "graphics/geometry.h"

namespace tkv::disc {

/// A run of the frames of a disc's film that is wanted as a folder of pictures.
struct WantedExcerpt {
    FrameRange range;
    PixelSize size;
    std::string name;  ///< in the workshop
};

/// The excerpts that are cut while their film is encoded. The encoder writes each frame once in
/// each size, however many excerpts it belongs to.
class ExcerptBatch {
  public:
    /// Makes the folders that the encoder writes into. `film`: its name in the workshop.
    ExcerptBatch(std::vector<WantedExcerpt> wanted, const std::string& film);

    /// What the encoder is to write.
    std::vector<ExcerptOutput> outputs() const;

    /// Makes the excerpts of what it has written.
    void handOut(Workshop& workshop);

  private:
    // All frames of one size, in the order in which the encoder writes them.
    struct Frames {
        PixelSize size;
        std::vector<FrameRange> ranges;
        std::string folder;
    };

    std::vector<WantedExcerpt> wanted_;
    std::vector<Frames> frames_;
};

}  // namespace tkv::disc
