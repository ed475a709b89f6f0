#pragma once

#include <cstdint>
#include <string>

#include "disc/author/author_file.h"
#include "disc/plan/plan.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Seconds of work that it takes to write so many bytes, as Progress counts it.
double writingWeight(std::int64_t bytes);

/// Writes the disc's folders VIDEO_TS and AUDIO_TS into `folder`, a name in the workshop, which
/// must not be there yet. Throws DiscError when what is there afterwards is no whole disc.
void authorDisc(const DiscPlan& plan, const DiscPieces& pieces, const std::string& folder,
                const Workshop& workshop, Progress& progress);

/// What is told of the warnings among dvdauthor's lines; empty where there is none.
std::string warningIn(const std::string& lines);

/// Writes the image of a disc's folder; both are names in the workshop. `label`: as volumeLabel
/// returns it.
void makeImage(const std::string& folder, const std::string& label, const std::string& image,
               const Workshop& workshop, Progress& progress);

/// Bytes of all files in a folder and below it.
std::int64_t bytesIn(const std::string& folder);

}  // namespace tkv::disc
