#include "cli/front_end.h"

#include <fmt/format.h>

#include <optional>
#include <string_view>

#include "cli/args_helper.h"
#include "system/log.h"
#include "system/verbose.h"
#include "utils/existence.h"
#include "utils/numbers.h"

namespace tkv {

namespace {

constexpr std::string_view kBanner =
    "\n"
    "------------------------------------\n"
    "   tkvDvdMenuImg v1.5 - 2013-11-23  \n"
    "(UniversalBinary for Kinoveld)\n"
    "------------------------------------\n"
    " to generate menus for DVD-VIDEO...\n"
    "\n";

constexpr std::string_view kUsage =
    "\n"
    "USAGE:\n"
    "tkvDvdMenuImg [give some args to obtain some stuff] -o [output]\n"
    "\n";

constexpr std::string_view kDescription =
    "DESCRIPTION:\n"
    "The following options may be required:\n"
    " -isMainMenu   [optional] 1=main menu, (0||no arg)=submenus\n"
    " -mode         [required] -1=preview, 0=definitive, 1=jacket, 2=overlay(isPal)?PAL:NTSC\n"
    " -bkg\t\t\t[optional] input absolute path ( not used for overlays)\n"
    " -icon\t\t\t[optional] input absolute path (only used for jacket)\n"
    "…\n";

// Separates the items of a list within one argument. The host application uses it too.
constexpr std::string_view kListSeparator = "totoCestLePlusBeau";

constexpr int kFailure = 1;

int failWithUsage(std::string_view complaint) {
    writeStandardError(complaint);
    writeStandardError(kUsage);
    if (isVerbose()) writeStandardError(kDescription);
    return kFailure;
}

std::optional<MenuMode> menuMode(std::int32_t value) {
    if (value < static_cast<std::int32_t>(MenuMode::preview) ||
        value > static_cast<std::int32_t>(MenuMode::overlay)) {
        return std::nullopt;
    }
    return static_cast<MenuMode>(value);
}

// The value of an option; when it is absent the line `absence` says so.
std::optional<std::string> valueOf(const argsHelper& arguments, const std::string& option,
                                   std::string_view absence) {
    std::optional<std::string> value = arguments.SearchArgWithParam(option);
    if (!value) writeStandardError(absence);
    return value;
}

std::int32_t numberOf(const argsHelper& arguments, const std::string& option) {
    return intValue(arguments.SearchArgWithParam(option).value_or(""));
}

// Adjacent separators make an empty item; an empty value is a list of one empty item.
std::optional<std::vector<std::string>> listItems(const std::optional<std::string>& value) {
    if (!value) return std::nullopt;
    std::vector<std::string> items;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = value->find(kListSeparator, start)) != std::string::npos;
         start = end + kListSeparator.size()) {
        items.push_back(value->substr(start, end - start));
    }
    items.push_back(value->substr(start));
    return items;
}

}  // namespace

int runFrontEnd(const std::vector<std::string>& words, const Composer& composer) {
    setVerbose(0);
    writeStandardError(kBanner);
    const argsHelper arguments(words);
    if (arguments.SearchArg("-h")) return failWithUsage("");

    const std::optional<std::string> modeWord = arguments.SearchArgWithParam("-mode");
    if (!modeWord) return failWithUsage("-mode parameter missing, exit\n");
    const std::optional<MenuMode> mode = menuMode(intValue(*modeWord));
    if (!mode) {
        writeStandardError(
            fmt::format("-mode {} is not one of -1 (preview), 0 (definitive), 1 (jacket), "
                        "2 (overlay), exit\n",
                        *modeWord));
        return kFailure;
    }

    MenuRequest request;
    request.mode = *mode;
    if (*mode == MenuMode::jacket) {
        request.icon = arguments.SearchArgWithParam("-icon");
        if (!fileExists(request.icon)) request.icon.reset();
    } else {
        request.isMainMenu = numberOf(arguments, "-isMainMenu") == 1;
    }
    setVerbose(numberOf(arguments, "-v") > 0 ? 1 : 0);

    request.title = valueOf(arguments, "-title", "-title NO\n");
    const std::optional<std::string> output = arguments.SearchArgWithParam("-o");
    if (!output) return failWithUsage("-o parameter missing\n");
    request.output = *output;

    request.bkg = valueOf(arguments, "-bkg", "-bkg parameters missing\n");
    if (request.bkg && !fileExists(request.bkg)) {
        writeStandardError("bkg does not exist\n");
        request.bkg.reset();
    }

    request.dvdBt_readAll = valueOf(arguments, "-dvdBt_readAll", "dvdBt_readAll       : NO\n");
    request.dvdBt_menuPrev = valueOf(arguments, "-dvdBt_menuPrev", "dvdBt_menuPrev      : NO\n");
    request.dvdBt_menuMain = valueOf(arguments, "-dvdBt_menuMain", "dvdBt_menuMain      : NO\n");
    request.dvdBt_menuNext = valueOf(arguments, "-dvdBt_menuNext", "dvdBt_menuNext      : NO\n");
    request.thumbs = listItems(valueOf(arguments, "-thumbs", "-thumbs NO parameter missing\n"));
    request.captions =
        listItems(valueOf(arguments, "-captions", "-captions NO parameter missing\n"));

    // -isPal is accepted and has no effect.
    request.isPal = true;
    return composer(request) ? 0 : kFailure;
}

}  // namespace tkv
