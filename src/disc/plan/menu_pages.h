#pragma once

#include <cstddef>

#include "disc/plan/plan.h"

namespace tkv::disc {

/// Where something of a film is to be seen: films begin and end with names and logos.
Span middleOf(const Film& film);

/// Pages that so many films or chapters fill.
std::size_t pagesFor(std::size_t entries);

/// Makes all pages of a disc anew, and what its films tell of them: their excerpts, and where in
/// the list their chapter menus are, whose numbers of pages they know.
void addPages(DiscPlan& plan, const Project& project);

}  // namespace tkv::disc
