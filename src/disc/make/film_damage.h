#pragma once

#include <string>
#include <string_view>

namespace tkv::disc {

/// Whether a line of ffmpeg's is none of a decoder's: its encoder and its multiplexer complain of a
/// film that is too hard for its rate.
bool isOfEncoding(std::string_view line);

/// Counts the places of a film of which its decoders complain while it is encoded.
class FilmDamage {
  public:
    /// `lacksBeginning`: of what comes before its first keyframe nothing is said.
    explicit FilmDamage(bool lacksBeginning) : lacksBeginning_(lacksBeginning) {}

    /// So much is encoded, in seconds.
    void reach(double seconds);

    /// A line that ffmpeg has written to its standard error stream.
    void take(std::string_view line);

    /// "3 places of camera.mp4 could not be decoded, the first at about 0:03."; empty for none.
    /// `path`: of the film.
    std::string sentence(const std::string& path) const;

  private:
    bool lacksBeginning_;
    double seconds_ = 0, first_ = 0, last_ = 0;
    int places_ = 0;
};

}  // namespace tkv::disc
