// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace tkv::check {

/// Checks the files of a title set, from 1, or of the menus of the films (0): that its tables equal
/// their backup, that its streams are as long as the tables say, and all that checkStream does.
/// Throws std::runtime_error for the first fault, and returns what checkStream does.
/// `folder`: VIDEO_TS. `isTimed`: are the film's times to be looked at? Those of menus always are.
std::string checkTitleSet(const std::string& folder, int number, bool isTimed);

}  // namespace tkv::check
