#include <regex>

#include "disc/project/labels.h"
#include "support.h"

namespace tkv::test::completion {

// The options as fish writes them, others in full.
std::string asIn(const std::string& shell, const std::string& option) {
    return shell == "fish" ? "-l " + option + " " : "--" + option;
}

TEST(Completion, KnowsEveryOptionLabelAndLanguage) {
    const std::string help = run(quoted(discProgramPath()) + " --help");
    const std::regex option("\n +(-[a-z],)?--([a-z-]+)");
    const auto first = std::sregex_iterator(help.begin(), help.end(), option);
    ASSERT_GT(std::distance(first, {}), 15) << help;
    const std::string languages =
        std::regex_replace(disc::labelLanguages(), std::regex(",| or"), "");
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        const std::string text = readText(checkoutPath("completion/tkvDvdDisc." + shell));
        const auto expectWord = [&](const std::string& word) {
            EXPECT_NE(text.find(word), std::string::npos) << shell << " lacks " << word;
        };
        for (auto match = first; match != std::sregex_iterator(); ++match)
            expectWord(asIn(shell, match->str(2)));
        for (const disc::LabelName& label : disc::kLabelNames)
            expectWord(std::string(label.name));
        expectWord(languages);
    }
}

}  // namespace tkv::test::completion
