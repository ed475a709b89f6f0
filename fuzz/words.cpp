#include "cli/front_end.h"
#include "fuzzing.h"

// Any NUL-terminated arguments; a stub in place of the composer only inspects the request.

using namespace tkv;
using namespace tkv::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string folder = scratchFolder() + "/";
    std::vector<std::string> words;
    // Paths that may be opened, if only to see whether they are there, stay away from devices.
    for (Input input(data, size); !input.isAtEnd();) {
        std::string word = input.word();
        const bool isPath = word.find('/') != std::string::npos || word.starts_with('~');
        if (isPath) word.insert(0, folder);
        words.push_back(std::move(word));
    }
    int calls = 0;
    const auto compose = [&](const MenuRequest& request) {
        ++calls;
        require(request.mode >= MenuMode::preview && request.mode <= MenuMode::overlay,
                "the mode is one of four");
        require(!request.thumbs || !request.thumbs->empty(), "a list has items");
        require(!request.icon || request.mode == MenuMode::jacket, "only jackets have icons");
        return request.isMainMenu;
    };
    const int status = runFrontEnd(words, compose);
    require(calls == 0 ? status == 1 : calls == 1 && (status == 0 || status == 1),
            "the status is that of one call at most");
    return 0;
}
