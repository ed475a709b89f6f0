#include "disc/run/fault.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace tkv::disc {

std::optional<Fault> faultOf(const std::function<void()>& action) {
    try {
        action();
        return std::nullopt;
    } catch (const DiscError& error) {
        return error.faults().front();
    }
}

void failOn(const std::string& path, std::string_view what) {
    const std::string why = std::generic_category().message(errno);
    throw DiscError(fmt::format("{} cannot be {}: {}.", path, what, why), path);
}

}  // namespace tkv::disc
