#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

// Values as the diagnostic lines print them, in the notation of OpenStep property lists.

namespace tkv {

/// The text, or "nil" when there is none.
std::string describe(const std::optional<std::string>& text);

/// A list, one item a line between parentheses:
///     (
///         word,
///         "two words"
///     )
/// An item that is not made of ASCII letters and digits alone stands in double quotes, what is
/// not ASCII in it as \Uxxxx escapes of its UTF-16 units.
std::string describe(const std::vector<std::string>& list);

/// No list prints as an empty one.
std::string describe(const std::optional<std::vector<std::string>>& list);

/// A list of lists, each on lines of its own:
///     (
///             (
///             word,
///             "two words"
///         )
///     )
std::string describeLists(const std::vector<std::vector<std::string>>& lists);

/// Named values between braces, in the order given:
///     {
///         name = value;
///     }
std::string describe(const std::vector<std::pair<std::string, std::string>>& dictionary);

}  // namespace tkv
