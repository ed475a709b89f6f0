#pragma once

#include "player.h"

namespace tkv::test::disc {

/// A folder in which the program makes discs of short films.
class Films : public testing::Test {
  protected:
    /// A film, or what else ffmpeg makes of these words. It is made once for all tests and runs,
    /// and stands in the folder as a link. `marks`: what ffmpeg reads as "pipe:0".
    void make(const std::string& name, const std::string& words, const std::string& marks = "");

    /// One film of each kind: with two chapters of 2.2 s, the first red and the second blue;
    /// upright and silent; of fields with two languages; and ready for a PAL disc.
    void makeAllKinds();

    /// The last alone.
    void makeReady(const std::string& name = "ready.vob");

    /// Runs the program in the folder; its output, and its status in the last line.
    /// `before`: what the shell is told first.
    std::string makeDisc(const std::string& words, const std::string& before = "") const;

    /// The same, which must succeed.
    void expectDisc(const std::string& words) const;

    /// Words for the shell, so that a program of this name does something else; the real one is
    /// "$real" there.
    std::string faked(const std::string& name, const std::string& script) const;

    /// What is left of a file's pictures or sound after ffmpeg's words, as raw bytes.
    std::string raw(const std::string& input, const std::string& words) const;

    /// The mean colour of the picture at `seconds` after these filters, as televisions decode it.
    Rgba colorAt(const std::string& input, double seconds, const std::string& filters) const;

    /// The tone that is heard in a file at `seconds`; 0 where it is silent.
    int hertzAt(const std::string& input, double seconds) const;

    void expectFaultsTold(const std::string& out) const;

    Bitmap menu(const std::string& name) const;
    std::string file(const std::string& name) const { return folder_.file(name); }

    TempFolder folder_;
};

/// The film on a disc that holds one.
inline constexpr const char* kFirstFilm = "/disc/VIDEO_TS/VTS_01_1.VOB";

}  // namespace tkv::test::disc
