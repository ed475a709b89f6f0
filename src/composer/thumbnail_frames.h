#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "system/files.h"

namespace tkv {

/// The entries that exist, in their order: an entry that does not exist as it stands is looked for
/// in the folder of the last one that did, and dropped if it is not there either.
std::vector<std::string> resolveThumbnails(const std::vector<std::string>& entries);

/// Picks the picture that a place shows in each pass; the frames of a folder play as a loop. Keeps
/// the frame counters of one run: called once for each place of each pass, in order.
class ThumbnailFrames {
  public:
    ThumbnailFrames() { counters_.fill(-1); }

    /// The picture of `entry` at `place` in pass `pass`, both from 0: the entry itself when its
    /// extension is "jpg", otherwise the next file of the folder it names; none when there is no
    /// such file.
    std::optional<std::string> pictureOf(const std::string& entry, std::size_t place, int pass);

  private:
    struct Listing {
        FileStamp stamp;
        std::vector<std::string> files;
    };

    const std::vector<std::string>& filesOf(const std::string& folder);
    int advance(std::size_t place, int pass, int frames);

    /// The frame last shown at each place; the places from 8 on share the last counter.
    std::array<int, 9> counters_{};
    std::map<std::string, Listing> listings_;
};

}  // namespace tkv
