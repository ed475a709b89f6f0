#include "disc/film/dvd_titles.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "disc/project/languages.h"
#include "disc/run/environment.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// The library that reads the tables is under the GPL, and stays in a process of its own: a table so
// damaged that the library gives up ends no more than that.
constexpr const char* kTableReader = "tkvDvdCheck";

// Bytes of its answer; that of 99 titles with 99 chapters takes less than one of them.
constexpr std::size_t kMostTables = 16 << 20;

SubtitleKind kindNamed(std::string_view word) {
    if (word == "hearing") return SubtitleKind::hearing;
    if (word == "commentary") return SubtitleKind::commentary;
    return word == "forced" ? SubtitleKind::forced : SubtitleKind::normal;
}

std::vector<DvdStream> streamsFrom(const Json& list) {
    std::vector<DvdStream> streams;
    for (const Json& each : list) {
        const DvdStream stream{
            each.at("stream").get<int>(), discLanguage(each.at("language").get<std::string>()),
            kindNamed(each.at("kind").get<std::string>()), each.value("letterboxed", 0)};
        // Two names for one stream are one track of a copy.
        if (std::ranges::find(streams, stream.id, &DvdStream::id) == streams.end())
            streams.push_back(stream);
    }
    return streams;
}

// Seconds by which a cell may begin earlier or later than the one before it ends.
constexpr double kSeam = 0.1;

DvdTitle titleFrom(const Json& json) {
    DvdTitle title;
    json.at("number").get_to(title.number);
    json.at("titleSet").get_to(title.titleSet);
    json.at("isInterleaved").get_to(title.isInterleaved);
    double end = -1;  // of the cell before, in the stream's own time; below 0: not known
    std::int64_t sectors = 0;
    for (const Json& cell : json.at("cells")) {
        const SectorRange range{cell.at("first").get<std::int64_t>(),
                                cell.at("last").get<std::int64_t>() + 1};
        const double start = cell.at("start").get<double>(),
                     length = cell.at("seconds").get<double>();
        const bool goesOn = start < 0 || end < 0 || std::abs(start - end) < kSeam;
        if (title.runs.empty() || !goesOn) title.runs.push_back({title.seconds, sectors});
        end = start < 0 ? -1 : start + length;
        sectors += range.end - range.first;
        title.seconds += length;
        if (!title.cells.empty() && title.cells.back().end == range.first) {
            title.cells.back().end = range.end;
        } else {
            title.cells.push_back(range);
        }
    }
    json.at("chapters").get_to(title.chapters);
    title.sound = streamsFrom(json.at("sound"));
    title.subtitles = streamsFrom(json.at("subtitles"));
    json.at("palette").get_to(title.palette);
    return title;
}

}  // namespace

std::vector<DvdTitle> dvdTitlesFrom(const std::string& json) {
    std::vector<DvdTitle> titles;
    try {
        const Json answer = Json::parse(json);
        for (const Json& title : answer.at("titles"))
            titles.push_back(titleFrom(title));
    } catch (const Json::exception&) {
        return {};
    }
    return titles;
}

std::vector<DvdTitle> dvdTitlesIn(const std::string& folder, ProgramStop& stop) {
    std::string answer;
    Program program;
    program.command = {programBeside(kTableReader), "--titles", folder};
    program.onOutput = [&](std::string_view line) { answer += line; };
    // The library talks about what it does without.
    program.onError = [](std::string_view) {};
    program.mostOutput = kMostTables;
    if (program.command.front().empty()) return {};
    const ProgramEnd end = runProgram(std::move(program), stop);
    if (end.how == ProgramEnd::How::stopped) throw Interrupted();
    if (end.how != ProgramEnd::How::exited || end.status != 0) return {};
    return dvdTitlesFrom(answer);
}

}  // namespace tkv::disc
