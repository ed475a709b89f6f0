#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "system/resources.h"

namespace tkv {

/// A dotted version as one number: the second part counts hundredths, the third ten-thousandths,
/// later ones nothing; "1.2.3" gives 1.0203.
float floatFromString(const std::string& text);

/// The lines of a text that are not empty, split at every Unicode newline; blanks make a line.
std::vector<std::string> linesOfText(const std::optional<std::string>& text);

/// The version of the `spumux` program among the resources, minor and patch number only: 0.7.2
/// gives 0.0702. 0 when it prints none, and when the program that must be there is not: `spumux`
/// with `requireSpumux`, `dvdauthor` without.
/// Its input is empty, its output is read up to one mebibyte, and after the timeout `patience` it
/// is killed; what it has printed by then counts.
float versionSpumux(bool requireSpumux, const std::string& resources = resourceFolder(),
                    std::chrono::milliseconds patience = std::chrono::seconds(10));

}  // namespace tkv
