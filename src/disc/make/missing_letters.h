#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/project/labels.h"

namespace tkv::disc {

/// What letters of the disc's texts no installed font has, which would be boxes in menus and on the
/// cover: a line for each script, with the first text and Debian's package that has such a font.
std::vector<std::string> missingLetterLines(const DiscPlan& plan, const Labels& labels);

}  // namespace tkv::disc
