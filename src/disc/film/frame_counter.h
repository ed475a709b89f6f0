#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "disc/film/film.h"

namespace tkv::disc {

/// Counts a film's frames in what ffprobe tells of its packets, line by line.
class FrameCounter {
  public:
    /// The entries of a packet that its lines hold, in this order, with commas between.
    static constexpr const char* kEntries =
        "packet=codec_type,stream_index,pts_time,duration_time,flags";

    explicit FrameCounter(const Film& film);
    void take(std::string_view line);

    /// How many packets of the picture a decoder needs for its first frame, where that is not the
    /// first of all: a recording that begins between two keyframes has some that nobody can decode.
    /// 0 where the film begins with a keyframe.
    int packetsToFirstFrame() const;

    /// The time of the first keyframe, of the file's own time.
    double firstKeyframe() const;

    /// Fills in the film's frames, keyframes and length and which sound tracks are whole, and
    /// leaves out those that nothing was read of. `firstFrame`: the time of the first frame that
    /// can be decoded, of the file's own time; none for the first of all. All that is before it
    /// does not count, and the film begins there: its chapters and its sound follow.
    void finish(Film& film, std::optional<double> firstFrame = {});

    /// Where the last packet of picture, sound or text ends, in seconds of the file's own time.
    double lastEnd() const { return lastEnd_; }

  private:
    struct Packet {
        std::string_view kind, flags;
        int stream = -1;
        std::optional<double> time, duration;
    };
    // A run of frames whose times go on without a jump; its keyframes' times are the file's.
    struct Run {
        double start = 0, end = 0;
        std::vector<double> keyframes;
    };

    // What was read of a stream.
    struct Stream {
        bool isSeen = false;
        std::optional<double> first, time;  // of its first and last packet
        std::optional<double> end;          // of its last packet, where that is told
        bool isBroken = false;              // Does a packet begin somewhere else?
        double seconds = 0;                 // in which packet followed packet
    };

    static void takeTime(Stream& stream, const Packet& packet);
    void takeFrame(const Packet& packet);
    void noteBeginning(const Packet& packet);
    void closeRun();
    void leaveOutBefore(double firstFrame, Film& film);

    int videoStream_;
    double frameSeconds_;
    bool mayJump_;  // may times jump ahead where recordings were joined?
    int frames_ = 0, timedFrames_ = 0, untimed_ = 0, lastKeyframe_ = 0, interval_ = 0;
    double lastEnd_ = 0;
    std::vector<Stream> streams_;          // by their numbers
    std::vector<double> beginning_;        // times of the first packets of the picture
    std::optional<std::size_t> keyframe_;  // the first, among these
    std::optional<Run> run_;
    double seconds_ = 0;                // of all closed runs
    std::vector<double> keyframes_;     // of all closed runs, from the first frame
    std::vector<int> keyframeNumbers_;  // of all frames, by count
};

}  // namespace tkv::disc
