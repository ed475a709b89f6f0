#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tkv {

/// Looks options up in the arguments of a command line, without the program's name.
///
/// Every search scans the whole list: a value that reads like an option is found as that option
/// too, and whatever argument follows an option is its value, even one that begins with a hyphen.
class argsHelper {
  public:
    explicit argsHelper(std::vector<std::string> arguments);

    /// Whether some argument equals `option` exactly.
    bool SearchArg(const std::string& option) const;

    /// The argument after the first `option` that has one after it.
    std::optional<std::string> SearchArgWithParam(const std::string& option) const;

  private:
    std::vector<std::string> arguments_;
};

}  // namespace tkv
