// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tkv::check {

/// Reads a stream of packs, once and without decoding anything. Throws std::runtime_error for the
/// first place that a player stumbles over: what is no pack, a navigation pack in the wrong place,
/// and, where `isTimed`, data that come faster than a player reads, too late to be decoded or too
/// early to be kept, and sound that does not begin with the picture.
/// `files`: one after another they are the stream; at least one.
void checkStream(const std::vector<std::string>& files, bool isTimed);

}  // namespace tkv::check
