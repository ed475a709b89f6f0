#include "disc/film/captions.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <optional>
#include <regex>

#include "disc/project/names.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

// Before that, a camera's clock was not set.
constexpr int kFirstYear = 1990;

// A day and a time of day, apart or written in one, as files and tags have them; then nothing but
// what cameras add: fractions of a second, a zone, a number.
constexpr const char* kMoment =
    R"((\d{4})[-_.:]?(\d\d)[-_.:]?(\d\d)(?:[-_ t]|[-_ ]at[-_ ])(\d\d)[-_.:]?(\d\d)[-_.:]?(\d\d))";

// How cameras and telephones call what they take: a word and a number, or a moment.
constexpr const char* kCamera =
    "(?:(?:vid|img|pxl|mvi|mov|video|dsc[fn]?|gopr|g[hpx]|dji|mah|sam|cimg|imag|hpim|sdc|pict|clip|"
    "trim|p|c)[-_ ]?\\d{3,8}(?:[-_]wa\\d+)?|\\d{5}|";

// Of a tag in ISO 8601, or a name; of Greenwich's time the user's. What is longer is neither, and
// too much for a regular expression.
std::optional<std::tm> momentIn(const std::string& text) {
    if (text.size() > 255) return {};
    static const std::regex pattern(std::string(".*?") + kMoment + "(?:[.,]?\\d*)(z?).*");
    const std::string lowered = asciiLowered(text);
    std::smatch match;
    if (!std::regex_match(lowered, match, pattern)) return {};
    const auto number = [&](std::size_t part) { return std::stoi(match.str(part)); };
    std::tm moment{};
    moment.tm_year = number(1) - 1900;
    moment.tm_mon = number(2) - 1;
    moment.tm_mday = number(3);
    moment.tm_hour = number(4);
    moment.tm_min = number(5);
    moment.tm_sec = number(6);
    // Put right, a day or an hour that there is none of becomes another.
    std::tm same = moment;
    const std::time_t seconds = timegm(&same);
    const bool isMoment = same.tm_mday == moment.tm_mday && same.tm_hour == moment.tm_hour &&
                          same.tm_min == moment.tm_min && number(1) >= kFirstYear;
    if (!isMoment) return {};
    if (match.length(7) > 0) localtime_r(&seconds, &moment);
    return moment;
}

// Of each request, which of a DVD's titles it is among those of the disc, from 1; 0 where it is the
// only one, or no DVD's.
std::vector<int> titleNumbers(const std::vector<FilmRequest>& requests) {
    std::vector<int> numbers;
    for (auto request = requests.begin(); request != requests.end(); ++request) {
        const auto isSame = [&](const FilmRequest& other) {
            return other.title > 0 && other.path == request->path;
        };
        const bool isOfSeveral = request->title > 0 && std::ranges::count_if(requests, isSame) > 1;
        numbers.push_back(
            isOfSeveral ? static_cast<int>(std::count_if(requests.begin(), request + 1, isSame))
                        : 0);
    }
    return numbers;
}

std::string ownCaption(const FilmRequest& request, const Film& film, const std::string& language) {
    std::string caption = captionOf(request, film.title);
    const std::string name = withoutExtension(lastComponent(request.path));
    const bool isByName = caption == readableName(request.path);
    if (request.caption || !isByName || !isCameraName(name)) return caption;
    std::optional<std::tm> taken = momentIn(film.taken);
    if (!taken) taken = momentIn(name);
    return taken ? dateAndTime(*taken, language) : caption;
}

// The captions without their numbers; none where these are no numbering of them.
std::optional<std::vector<std::string>> withoutNumbers(const std::vector<std::string>& captions) {
    constexpr std::string_view kDigits = "0123456789";
    std::vector<std::string> rest;
    int last = -1;
    for (const std::string& caption : captions) {
        const std::size_t end = caption.find_first_not_of(kDigits);
        const std::size_t name = caption.find_first_not_of("-.)_ ", end);
        if (end == 0 || end > 3 || name == std::string::npos || name == end) return {};
        const int number = std::stoi(caption.substr(0, end));
        const bool isCount = number <= 1 || caption.front() == '0';
        if (number <= last || (rest.empty() && !isCount)) return {};
        last = number;
        rest.push_back(withCapital(caption.substr(name)));
    }
    return rest;
}

}  // namespace

bool isCameraName(const std::string& name) {
    static const std::regex pattern(std::string(kCamera) +
                                    "(?:vid|img|pxl|mvi|mov|video|dji|trim|signal|whatsapp "
                                    "video|screen[-_ ]?recording)?[-_ ]?" +
                                    kMoment + "[-_\\d]*)");
    return std::regex_match(asciiLowered(name), pattern);
}

std::vector<std::string> captionsOf(const std::vector<FilmRequest>& requests,
                                    const std::vector<Film>& films, const Labels& labels) {
    const std::vector<int> numbers = titleNumbers(requests);
    const bool isOneDvd = std::ranges::all_of(requests, [&](const FilmRequest& request) {
        return request.path == requests.front().path;
    });
    std::vector<std::string> captions;
    for (std::size_t i = 0; i < films.size(); ++i) {
        std::string caption = ownCaption(requests[i], films[i], labels.language);
        if (numbers[i] > 0 && !requests[i].caption) {
            const std::string title = withNumber(labels.title, numbers[i]);
            caption = isOneDvd ? title : fmt::format("{}, {}", caption, title);
        }
        captions.push_back(std::move(caption));
    }
    const bool areGiven = std::ranges::any_of(
        requests, [](const FilmRequest& request) { return request.caption.has_value(); });
    if (areGiven || captions.size() < 2) return captions;
    return withoutNumbers(captions).value_or(captions);
}

}  // namespace tkv::disc
