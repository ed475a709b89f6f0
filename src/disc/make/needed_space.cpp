#include "disc/make/needed_space.h"

#include <filesystem>
#include <system_error>

namespace tkv::disc {

namespace {

// Of a pixel of an excerpt, at most, in all frames and on the way; and of what two menus are made
// of.
constexpr std::int64_t kExcerptBytes = 250;
constexpr std::int64_t kPageBytes = 200 << 20;

}  // namespace

std::int64_t neededSpace(const DiscPlan& plan, const std::vector<std::string>& films,
                         bool makesImage, const Workshop& workshop) {
    std::int64_t bytes = plan.bytes * (makesImage ? 3 : 2);
    for (const DiscFilm& film : plan.films) {
        for (const Excerpt& excerpt : film.excerpts)
            bytes += kExcerptBytes * excerpt.shape.frame.width * excerpt.shape.frame.height;
    }
    if (!plan.pages.empty()) bytes += kPageBytes;
    for (const std::string& name : films) {
        std::error_code error;
        const auto made = std::filesystem::file_size(workshop.path(name), error);
        if (!error) bytes -= static_cast<std::int64_t>(made);
    }
    return bytes;
}

}  // namespace tkv::disc
