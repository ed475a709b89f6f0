#include "disc/project/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>

#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

constexpr std::size_t kMaxVolumeLabel = 32;
constexpr std::string_view kBlanks = " \t\n\v\f\r";

bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

// A few letters and digits. What comes after the dot of "1.5" or of "Dr. Who" belongs to the name.
bool isExtension(std::string_view text) {
    static const std::regex pattern("[0-9a-z]{1,4}");
    const std::string lowered = asciiLowered(text);
    return std::regex_match(lowered, pattern) &&
           !std::all_of(lowered.begin(), lowered.end(), isAsciiDigit);
}

bool isDvdFolder(std::string_view name) {
    return asciiLowered(name) == "video_ts";
}

// The name to be read; parts of a DVD have none of their own.
std::string nameToRead(std::string_view path) {
    std::string folder;
    if (dvdPartOf(path)) folder = parentFolder(path);
    if (isDvdFolder(lastComponent(folder.empty() ? path : folder)))
        folder = parentFolder(folder.empty() ? path : folder);
    if (!folder.empty() && folder != "/") return lastComponent(folder);
    const std::string name = lastComponent(path);
    return isExtension(pathExtension(name)) ? withoutExtension(name) : name;
}

void turnDotsIntoBlanks(std::string& name) {
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
        const bool isInNumber = isAsciiDigit(name[i - 1]) && isAsciiDigit(name[i + 1]);
        if (name[i] == '.' && name[i + 1] != ' ' && !isInNumber) name[i] = ' ';
    }
}

// Runs of blanks become one, those at the ends go.
std::string withSingleBlanks(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (kBlanks.find(c) == std::string_view::npos) {
            result += c;
        } else if (!result.empty() && result.back() != ' ') {
            result += ' ';
        }
    }
    if (result.ends_with(' ')) result.pop_back();
    return result;
}

double numberIn(const std::string& digits) {
    return digits.empty() ? 0 : std::stod(digits);
}

}  // namespace

std::optional<DvdPart> dvdPartOf(std::string_view path) {
    static const std::regex pattern(R"((?:video_ts|vts_(\d\d)_(\d))\.(vob|ifo|bup))");
    const std::string name = asciiLowered(lastComponent(path));
    std::smatch match;
    if (!std::regex_match(name, match, pattern)) return {};
    const auto number = [&](std::size_t i) { return static_cast<int>(numberIn(match.str(i))); };
    return DvdPart{number(1), number(2), match.str(3) == "vob"};
}

std::string readableName(std::string_view path) {
    const std::string name = nameToRead(path);
    std::string text = name;
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char c) { return c == '_' || c < ' ' || c == '\x7F'; }, ' ');
    turnDotsIntoBlanks(text);
    text = validUtf8(withSingleBlanks(text));
    if (text.empty()) return validUtf8(name);
    return withCapital(text);
}

std::string withCapital(const std::string& text) {
    const std::string_view first = firstCharacters(text, 1);
    return upperCased(first) + text.substr(first.size());
}

std::string captionOf(const FilmRequest& request, std::string_view tag) {
    if (request.caption) return *request.caption;
    const std::string title = withSingleBlanks(validUtf8(tag));
    return title.empty() ? readableName(request.path) : title;
}

std::string shortName(const FilmRequest& request) {
    const bool isPlain = isDvdFolder(lastComponent(request.path));
    std::string name = lastComponent(isPlain ? parentFolder(request.path) : request.path);
    if (request.parts.size() > 1) name += fmt::format(" and {} more", request.parts.size() - 1);
    if (request.title > 0) name += fmt::format(", title {}", request.title);
    return name;
}

std::string volumeLabel(std::string_view text) {
    std::string label;
    for (const char c : upperCased(latinLetters(text))) {
        if ((c >= 'A' && c <= 'Z') || isAsciiDigit(c)) {
            label += c;
        } else if (!label.empty() && label.back() != '_') {
            label += '_';
        }
    }
    if (label.size() > kMaxVolumeLabel) label.resize(kMaxVolumeLabel);
    if (label.ends_with('_')) label.pop_back();
    return label.empty() ? "DVD" : label;
}

std::optional<double> secondsOf(std::string_view text) {
    static const std::regex clock(R"((?:(?:(\d{1,2}):)?(\d{1,4}):)?(\d{1,6}(?:\.\d{1,6})?))");
    static const std::regex units(R"((?:(\d{1,2})h)?(?:(\d{1,4})m)?(?:(\d{1,6}(?:\.\d{1,6})?)s)?)");
    const std::string words(text);
    std::smatch match;
    const bool isClock = std::regex_match(words, match, clock);
    if (words.empty() || (!isClock && !std::regex_match(words, match, units))) return {};
    const double minutes = numberIn(match.str(2));
    const double seconds = numberIn(match.str(3));
    if (isClock && match[1].matched && minutes >= 60) return {};
    if (isClock && match[2].matched && seconds >= 60) return {};
    const double sum = 3600 * numberIn(match.str(1)) + 60 * minutes + seconds;
    return sum < kLongestFilm ? std::optional(sum) : std::nullopt;
}

std::string timeText(double seconds) {
    const auto hundredths = static_cast<std::int64_t>(std::llround(std::max(0.0, seconds) * 100));
    const std::int64_t whole = hundredths / 100;
    std::string text =
        whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                     : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    if (hundredths % 100 != 0) text += fmt::format(".{:02}", hundredths % 100);
    if (hundredths % 100 != 0 && text.ends_with('0')) text.pop_back();
    return text;
}

std::string absolutePath(std::string_view path, std::string_view folder) {
    namespace fs = std::filesystem;
    std::string clean = (fs::path(folder) / path).lexically_normal().string();
    while (clean.size() > 1 && clean.ends_with('/'))
        clean.pop_back();
    return clean;
}

}  // namespace tkv::disc
