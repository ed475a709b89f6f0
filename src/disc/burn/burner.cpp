#include "disc/burn/burner.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "disc/run/fault.h"

namespace tkv::disc {

std::string_view causeIn(std::string_view line, bool reads) {
    // "libburn : FATAL : Burn run failed", ":-( unable to PREVENT MEDIA REMOVAL: Input/output
    // error"
    constexpr std::array<std::string_view, 3> kMarks{" : FATAL : ", " : FAILURE : ", ":-( "};
    constexpr std::string_view kSmallMark = " : SORRY : ";
    for (const std::string_view mark : {kMarks[0], kMarks[1], kMarks[2], kSmallMark}) {
        if (mark == kSmallMark && !reads) continue;
        const std::size_t at = line.find(mark);
        if (at == std::string_view::npos) continue;
        std::string_view words = line.substr(at + mark.size());
        while (words.ends_with('.') || words.ends_with(' '))
            words.remove_suffix(1);
        return words;
    }
    return {};
}

void runBurner(Program program, const std::string& task, const std::string& advice,
               const Tools& tools) {
    std::string cause;
    program.onError = [&, tell = std::move(program.onError)](std::string_view line) {
        if (cause.empty()) cause = causeIn(line);
        if (tell) tell(line);
    };
    try {
        tools.run(std::move(program), {"--burn", task, advice});
    } catch (const DiscError&) {
        if (cause.empty()) throw;
        throw DiscError(fmt::format("{}: {}. {}", task, cause, advice), "--burn");
    }
}

}  // namespace tkv::disc
