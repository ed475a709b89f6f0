#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "disc/run/tools.h"

namespace tkv::disc {

/// Bytes of ffprobe's answer about a film; those of real ones take some thousands.
inline constexpr std::size_t kMostAnswer = 64 << 20;

/// Asks ffprobe and hands on the lines of its answer. `input`: as inputWords returns it.
/// `questions`: its other arguments. Throws as Tools::run when it cannot read them, or answers more
/// than `most` bytes.
void askFfprobe(const std::vector<std::string>& input, const std::vector<std::string>& questions,
                const Tools& tools, const Failure& failure,
                const std::function<void(std::string_view line)>& onLine,
                std::size_t most = kMostAnswer);

/// Throws DiscError unless the file holds sound that menus can be given. `path`: absolute.
void requireSound(const std::string& path, const Tools& tools);

}  // namespace tkv::disc
