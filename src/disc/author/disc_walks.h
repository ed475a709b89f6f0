#pragma once

#include <string>

#include "disc/plan/plan.h"

namespace tkv::disc {

/// What tkvDvdCheck is to find on the plan's disc, in JSON: the films, and walks. Each walk begins
/// when the disc is put in, and is a list of keys with the place to which each is to lead; together
/// they press every button for both kinds of displays, reach every film and its end, and press the
/// Menu and the Title key where they answer.
std::string discWalks(const DiscPlan& plan);

}  // namespace tkv::disc
