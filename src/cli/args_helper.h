#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tkv {

/// Looks options up in the words of a command line, the program's name not among them.
///
/// Every search walks the whole list: a value that reads like an option is found as that option
/// too, and whatever word follows an option is its value, also one that begins with a hyphen.
class argsHelper {
  public:
    explicit argsHelper(std::vector<std::string> arguments);

    /// Whether some word equals `option` exactly.
    bool SearchArg(const std::string& option) const;

    /// The word behind the first `option` that has one behind it.
    std::optional<std::string> SearchArgWithParam(const std::string& option) const;

  private:
    std::vector<std::string> arguments_;
};

}  // namespace tkv
