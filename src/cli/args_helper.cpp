#include "cli/args_helper.h"

#include <algorithm>
#include <utility>

namespace tkv {

argsHelper::argsHelper(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

bool argsHelper::SearchArg(const std::string& option) const {
    return std::find(arguments_.begin(), arguments_.end(), option) != arguments_.end();
}

std::optional<std::string> argsHelper::SearchArgWithParam(const std::string& option) const {
    for (std::size_t i = 0; i + 1 < arguments_.size(); ++i) {
        if (arguments_[i] == option) return arguments_[i + 1];
    }
    return std::nullopt;
}

}  // namespace tkv
