// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace tkv::check {

/// What the tables of a DVD tell of its titles, as a JSON text with the member "titles": of each
/// its "titleSet" and its "number" on the disc, the "cells" that it plays one after another
/// ("first" and "last", sectors of the set's VOBs, its length in "seconds" and the "start" in the
/// stream's own time, below 0 where that is not told), the "chapters" (seconds), the
/// streams of "sound" and "subtitles" ("stream", as a program stream numbers it, "language", empty
/// where it is not told, "kind": normal, hearing, commentary or forced, and of subtitles
/// "letterboxed": the stream that displays get which show a wide title between bars), the "palette"
/// of the subtitles (sixteen numbers, Y, Cr and Cb), and whether other angles lie between its
/// sectors
/// ("isInterleaved"). Titles that cannot be read are left out.
/// `folder`: VIDEO_TS, or what holds it. Without the disc's own tables the titles are those of its
/// sets, in their order.
std::string titlesOf(const std::string& folder);

}  // namespace tkv::check
