#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "disc/run/tools.h"

namespace tkv::disc {

/// What discs are written with: an optical drive, or a file that behaves like one.
struct Drive {
    std::string path;  ///< absolute, without links
    bool isFile = false;

    /// How xorriso is told of it.
    std::string address() const { return isFile ? "stdio:" + path : path; }
};

/// What is in a drive.
struct Medium {
    enum class State { missing, unknown, blank, written };
    State state = State::missing;
    std::string kind;  ///< "DVD+RW"
    bool isErasable = false;
    std::int64_t sectors = 0;  ///< that it takes when it is blank; 0 where nobody knows

    bool isDvd() const { return kind.starts_with("DVD"); }
    bool isDualLayer() const { return kind.ends_with(" DL"); }
};

/// What decides whether something is a drive that may be used.
struct DeviceFacts {
    bool isThere = false;
    bool isBlockDevice = false;
    bool isOptical = false;
    bool mayWrite = false;
    std::string group;  ///< whose members may
};

/// Why discs cannot be written to what is at a path, so that no disk ever is; empty when they can.
std::string whyNoDrive(const std::string& path, const DeviceFacts& facts);

/// The names of the drives that write DVDs, as Linux lists them in /proc/sys/dev/cdrom/info.
std::vector<std::string> writersIn(std::string_view info);

/// The drive that is meant: a device's path, "stdio:" and that of a file, or the first one that
/// writes DVDs where it is empty. Throws DiscError for anything that is none.
Drive findDrive(const std::string& asked);

/// What xorriso's table of contents tells of a medium. Where it is told twice, the second time as
/// it would be after erasing, that counts for how much it takes.
Medium mediumIn(const Drive& drive, const std::vector<std::string>& lines);

/// Has xorriso look, which changes nothing. Throws DiscError when the drive cannot be used.
Medium lookAt(const Drive& drive, bool erases, const Tools& tools);

/// "the DVD+RW in /dev/sr0"
std::string nameOf(const Drive& drive, const Medium& medium);

/// Why a disc of so many bytes cannot be written to the medium, and what to do about it; empty when
/// it can. `erases`: what is on it may go.
std::string whyNotBurnable(const Drive& drive, const Medium& medium, std::int64_t bytes,
                           bool erases);

}  // namespace tkv::disc
