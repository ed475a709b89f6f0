// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tkv::check {

/// Reads a stream of packs, once and without decoding anything. Throws std::runtime_error for the
/// first fault: what is no pack, a navigation pack in the wrong place, and, where `isTimed`, data
/// that come faster than a player reads, and sound that does not begin with the picture. Returns
/// where a player may stutter, since data come too late to be decoded or too early to be kept: a
/// film can be so hard that no encoder keeps to its rate. Empty for nowhere.
/// `files`: one after another they are the stream; at least one.
std::string checkStream(const std::vector<std::string>& files, bool isTimed);

}  // namespace tkv::check
