#pragma once

#include "disc/project/project.h"
#include "disc/project/table_reader.h"

namespace tkv::disc {

/// What a project file says of one film. Throws DiscError as the reader.
FilmRequest filmIn(const toml::table& table, const TableReader& reader);

}  // namespace tkv::disc
