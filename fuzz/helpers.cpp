#include <fmt/format.h>

#include <filesystem>

#include "fuzzing.h"
#include "system/description.h"
#include "system/paths.h"
#include "system/unicode.h"
#include "system/verbose.h"
#include "utils/guarded_removal.h"
#include "utils/numbers.h"
#include "utils/text_file.h"
#include "utils/version_probe.h"

// Any bytes as what the helpers of texts, numbers, versions and paths are given.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

void checkNumbers(const std::string& text, std::int32_t multiple) {
    const std::int32_t value = intValue(text);
    require(intValue(fmt::format(" {}x", value)) == value, "a number is read back");
    floatFromString(text);
    if (multiple != 0 && value % multiple == 0)
        require(nbMultipleArrondi(value, multiple) == value, "a multiple stays");
    if (multiple > 0 && std::abs(std::int64_t{value}) < 1'000'000)
        require(nbMultipleArrondi(value, multiple) % multiple == 0, "it becomes a multiple");
}

void checkLines(const std::string& text) {
    std::size_t bytes = 0;
    for (const std::string& line : linesOfText(text)) {
        require(!line.empty() && line.find_first_of("\n\v\f\r") == std::string::npos,
                "a line is one");
        bytes += line.size();
    }
    require(bytes <= text.size(), "lines are pieces of the text");
    const std::string valid = validUtf8(text);
    require(isUtf8(shortDescription(valid)), "a short description is valid");
    require(describe(std::vector<std::string>{valid}).ends_with(")"), "a list is closed");
    require(isUtf8(describe(std::vector<std::string>{text})), "a description is valid");
}

void checkPaths(const std::string& path) {
    expandTilde(path);
    fichier_dirname(path);
    EyetvBundle(path);
    const std::string extension = pathExtension(path);
    require(extension.find_first_of("./") == std::string::npos, "an extension is the last piece");
    if (!extension.empty())
        require(lastComponent(path) == lastComponent(withoutExtension(path)) + "." + extension,
                "an extension is taken off once");
    const std::string name = lastComponent(path);
    require(name == "/" || name.find('/') == std::string::npos, "a name has no slash");
    if (!path.empty() && name != "/")
        require(lastComponent(joinPath(parentFolder(path), name)) == name, "a name stays last");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file = scratchFolder() + "/a.txt";
    Input input(data, size);
    setVerbose(input.flag() ? 1 : 0);
    const auto multiple = static_cast<std::int32_t>(input.between(-32768, 32767));
    const std::string text = input.rest();
    checkNumbers(text, multiple);
    checkLines(text);
    checkPaths(text);
    std::filesystem::remove(file);
    require(ecritureFichier(file, text, true) == !text.empty(), "a text is written");
    return 0;
}
