#include "disc/film/film_answer.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "disc/film/subtitle_words.h"
#include "disc/project/languages.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// A member of an object; null when it has none of this name, or is no object.
const Json& member(const Json& object, const char* key) {
    static const Json null;
    const auto found = object.find(key);
    return found == object.end() ? null : *found;
}

// ffprobe says "unknown" and "N/A" for what a film does not tell.
std::string textOf(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_string()) return {};
    const auto& text = value.get_ref<const std::string&>();
    return text == "unknown" || text == "N/A" ? std::string() : text;
}

// Some numbers stand in quotes. 0 when there is none.
double numberOf(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (value.is_number()) return value.get<double>();
    const std::string text = textOf(object, key);
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::isfinite(number) ? number : 0;
}

int intOf(const Json& object, const char* key) {
    const double number = numberOf(object, key);
    return std::abs(number) < 1e9 ? static_cast<int>(number) : 0;
}

// "30000/1001" or "16:15"; none when a part is missing or not above 0.
std::optional<FrameRate> fractionOf(const Json& object, const char* key) {
    const std::string text = textOf(object, key);
    const char* const end = text.data() + text.size();
    FrameRate fraction;
    const auto first = std::from_chars(text.data(), end, fraction.numerator);
    if (first.ptr == end) return std::nullopt;
    std::from_chars(first.ptr + 1, end, fraction.denominator);
    if (fraction.numerator <= 0 || fraction.denominator <= 0) return std::nullopt;
    return fraction;
}

// A tag, which some containers write in capital letters.
std::string tagOf(const Json& object, const char* lower, const char* upper) {
    const Json& tags = member(object, "tags");
    const std::string text = textOf(tags, lower);
    return text.empty() ? textOf(tags, upper) : text;
}

Fields fieldsOf(const std::string& order) {
    // Of the two letters, which ought to tell what is stored first and what is shown first, files
    // and decoders alike mean what is shown first by the first one.
    if (order == "tt" || order == "tb") return Fields::topFirst;
    if (order == "bb" || order == "bt") return Fields::bottomFirst;
    return Fields::progressive;
}

bool isOnItsSide(const Json& stream) {
    double degrees = numberOf(member(stream, "tags"), "rotate");
    for (const Json& data : member(stream, "side_data_list")) {
        if (data.contains("rotation")) degrees = numberOf(data, "rotation");
    }
    return std::abs(std::remainder(degrees, 180)) > 45;
}

void readShape(const Json& stream, VideoTrack& video) {
    video.size = {intOf(stream, "width"), intOf(stream, "height")};
    video.shown = video.size;
    const FrameRate pixel = fractionOf(stream, "sample_aspect_ratio").value_or(FrameRate{1, 1});
    double aspect = pixel.perSecond() * video.size.width / video.size.height;
    if (aspect < 0.1 || aspect > 10) aspect = 1.0 * video.size.width / video.size.height;
    if (isOnItsSide(stream)) {
        std::swap(video.shown.width, video.shown.height);
        aspect = 1 / aspect;
    }
    video.aspect = aspect;
}

void readMotion(const Json& stream, VideoTrack& video) {
    const auto usable = [&](const char* key) {
        const auto rate = fractionOf(stream, key);
        return rate && rate->perSecond() < 1000 ? rate : std::nullopt;
    };
    const auto average = usable("avg_frame_rate");
    const auto ticks = usable("r_frame_rate");
    video.frameRate = average.value_or(ticks.value_or(FrameRate{25, 1}));
    // No picture of the main level lasts so short: these are fields, of which flags repeat some.
    // The average is that of the first pictures only.
    if (ticks && ticks->perSecond() >= 47.5 && video.codec == "mpeg2video" &&
        video.level == kMainLevel)
        video.frameRate = {ticks->numerator, 2 * ticks->denominator};
    video.fields = fieldsOf(textOf(stream, "field_order"));
    // Some containers count fields.
    if (video.fields != Fields::progressive && video.frameRate.perSecond() >= 47.5)
        video.frameRate.denominator *= 2;
}

VideoTrack videoTrackOf(const Json& stream) {
    VideoTrack video;
    video.index = intOf(stream, "index");
    video.codec = textOf(stream, "codec_name");
    video.profile = textOf(stream, "profile");
    video.level = intOf(stream, "level");
    video.pixelFormat = textOf(stream, "pix_fmt");
    video.matrix = textOf(stream, "color_space");
    video.transfer = textOf(stream, "color_transfer");
    video.range = textOf(stream, "color_range");
    readShape(stream, video);
    readMotion(stream, video);
    for (const Json& data : member(stream, "side_data_list"))
        video.maxBitRate = std::max<std::int64_t>(video.maxBitRate, intOf(data, "max_bitrate"));
    return video;
}

// "0x80"; 0 where there is none.
int idOf(const Json& stream) {
    const std::string text = textOf(stream, "id");
    int number = 0;
    if (text.starts_with("0x"))
        std::from_chars(text.data() + 2, text.data() + text.size(), number, 16);
    return number;
}

AudioTrack audioTrackOf(const Json& stream) {
    AudioTrack track;
    track.index = intOf(stream, "index");
    track.id = idOf(stream);
    track.codec = textOf(stream, "codec_name");
    track.channels = intOf(stream, "channels");
    track.sampleRate = intOf(stream, "sample_rate");
    track.bitRate = intOf(stream, "bit_rate");
    track.language = discLanguage(tagOf(stream, "language", "LANGUAGE"));
    return track;
}

FilmSubtitle subtitleOf(const Json& stream) {
    FilmSubtitle subtitle;
    subtitle.index = intOf(stream, "index");
    subtitle.id = idOf(stream);
    subtitle.codec = textOf(stream, "codec_name");
    subtitle.language = discLanguage(tagOf(stream, "language", "LANGUAGE"));
    subtitle.kind = kindInTitle(tagOf(stream, "title", "TITLE"));
    if (subtitle.codec == "eia_608") subtitle.kind = SubtitleKind::hearing;
    const Json& disposition = member(stream, "disposition");
    const auto is = [&](const char* what) { return intOf(disposition, what) != 0; };
    if (is("hearing_impaired")) subtitle.kind = SubtitleKind::hearing;
    if (is("comment")) subtitle.kind = SubtitleKind::commentary;
    if (is("forced")) subtitle.kind = SubtitleKind::forced;
    subtitle.isDefault = is("default");
    return subtitle;
}

// Whether there are captions in the first pictures.
bool hasCaptions(const Json& frames) {
    return std::ranges::any_of(frames, [](const Json& frame) {
        const Json& data = member(frame, "side_data_list");
        return std::ranges::any_of(data, [](const Json& each) {
            return textOf(each, "side_data_type").starts_with("ATSC A53");
        });
    });
}

// Of whatever is said, for those who do not hear it.
FilmSubtitle captionsIn(const Film& film) {
    FilmSubtitle subtitle;
    subtitle.index = film.video.index;
    subtitle.codec = kCaptions;
    if (!film.audio.empty()) subtitle.language = film.audio.front().language;
    subtitle.kind = SubtitleKind::hearing;
    return subtitle;
}

bool isFont(const Json& stream) {
    if (textOf(stream, "codec_type") != "attachment") return false;
    const std::string type = tagOf(stream, "mimetype", "MIMETYPE");
    return type.find("font") != std::string::npos || type.find("opentype") != std::string::npos;
}

bool isKind(const Json& stream, const char* kind) {
    return textOf(stream, "codec_type") == kind && !textOf(stream, "codec_name").empty();
}

bool isHeard(const Json& stream) {
    return isKind(stream, "audio") && intOf(stream, "channels") > 0 &&
           intOf(stream, "sample_rate") > 0;
}

// Cover art and the like are streams of one picture.
bool isMovingPicture(const Json& stream) {
    const Json& disposition = member(stream, "disposition");
    return isKind(stream, "video") && intOf(disposition, "attached_pic") == 0 &&
           intOf(disposition, "timed_thumbnails") == 0 && intOf(stream, "width") > 0 &&
           intOf(stream, "height") > 0;
}

// Whether it is the half of a VobSub with the pictures.
bool holdSubtitlesOnly(const Json& streams) {
    return !streams.empty() && std::ranges::all_of(streams, [](const Json& stream) {
        return isKind(stream, "subtitle");
    });
}

// The one that players show; null when there is none.
const Json* filmStream(const Json& streams) {
    const Json* first = nullptr;
    for (const Json& stream : streams) {
        if (!isMovingPicture(stream)) continue;
        if (intOf(member(stream, "disposition"), "default") != 0) return &stream;
        if (first == nullptr) first = &stream;
    }
    return first;
}

// Whether a stream is encrypted as MP4 and QuickTime files say it.
bool isEncrypted(const Json& stream) {
    const std::string tag = textOf(stream, "codec_tag_string");
    return tag == "encv" || tag == "enca" || tag == "drmi" || tag == "drms";
}

// Why none of the film's pictures can be decoded, behind its name; empty when they can.
std::string whyUndecodable(const Json& streams) {
    std::string why;
    for (const Json& stream : streams) {
        if (isEncrypted(stream)) return "is encrypted. Leave it out, or decrypt it first";
        if (isMovingPicture(stream)) why.clear();
        if (textOf(stream, "codec_type") == "video" && textOf(stream, "codec_name").empty())
            why = fmt::format(
                "is in a codec ({}) that nothing here knows. Leave it out, or "
                "convert it first",
                textOf(stream, "codec_tag_string"));
    }
    return why;
}

// What ffmpeg would show in wrong colours; empty for all else.
std::string_view unreadableColors(const Json& stream) {
    for (const Json& data : member(stream, "side_data_list")) {
        // The profile whose base layer is for no other display.
        if (intOf(data, "dv_profile") == 5) return "Dolby Vision's profile 5";
    }
    return textOf(stream, "color_space") == "ictcp" ? "ICtCp" : "";
}

// What of a film no disc gets: tracks that nothing here can read, and other pictures than `shown`.
std::vector<std::string> leftOutOf(const Json& streams, const Json& shown) {
    std::vector<std::string> notes;
    int pictures = 0;
    for (const Json& stream : streams) {
        if (isMovingPicture(stream) && &stream != &shown) ++pictures;
        const std::string kind = textOf(stream, "codec_type");
        const bool isSound = kind == "audio";
        if (!isSound && kind != "subtitle") continue;
        if (isSound ? isHeard(stream) : isKind(stream, "subtitle")) continue;
        notes.push_back(fmt::format("track {} ({}) is left out: nothing here can read it",
                                    intOf(stream, "index"), isSound ? "sound" : "subtitles"));
    }
    if (pictures > 0)
        notes.push_back(fmt::format("{} more moving picture{} in it {} left out", pictures,
                                    pictures == 1 ? "" : "s", pictures == 1 ? "is" : "are"));
    return notes;
}

bool isPicture(const std::string& container) {
    return container == "image2" || container.ends_with("_pipe");
}

}  // namespace

Film filmFromAnswer(FilmSource source, std::string_view json) {
    const Json answer = Json::parse(json, nullptr, false);
    const Json& format = member(answer, "format");
    const Json& streams = member(answer, "streams");
    Film film;
    film.source = std::move(source);
    film.container = textOf(format, "format_name");
    const Json* const stream = filmStream(streams);
    const std::string& path = film.source.path;
    if (const std::string why = whyUndecodable(streams); !why.empty())
        throw DiscError(fmt::format("{} {}.", path, why), path);
    if (stream == nullptr && holdSubtitlesOnly(streams))
        throw NoFilm(fmt::format("{} holds subtitles only. Leave it out.", path), path);
    if (stream == nullptr || isPicture(film.container)) {
        throw DiscError(
            fmt::format("{} holds no moving picture. Leave it out, or name the film.", path), path);
    }
    if (const std::string_view what = unreadableColors(*stream); !what.empty()) {
        throw DiscError(fmt::format("{} has its colours in {}, which nothing here can read. Leave "
                                    "it out, or convert it to HDR10 or SDR first.",
                                    path, what),
                        path);
    }
    film.video = videoTrackOf(*stream);
    film.title = tagOf(format, "title", "TITLE");
    film.taken = tagOf(format, "com.apple.quicktime.creationdate", "creation_time");
    film.seconds = numberOf(format, "duration");
    if (film.seconds <= 0) film.seconds = std::max(0.0, numberOf(*stream, "duration"));
    film.seconds = std::min(film.seconds, kLongestFilm);

    for (const Json& each : streams) {
        if (isHeard(each)) film.audio.push_back(audioTrackOf(each));
        if (isKind(each, "subtitle")) film.subtitles.push_back(subtitleOf(each));
        if (isFont(each)) film.fonts.push_back(intOf(each, "index"));
        if (textOf(each, "codec_name") == "dvd_nav_packet") film.hasNavigation = true;
    }
    film.notes = leftOutOf(streams, *stream);
    if (hasCaptions(member(answer, "frames"))) film.subtitles.push_back(captionsIn(film));
    film.start = numberOf(format, "start_time");
    film.video.start = std::max(0.0, numberOf(*stream, "start_time") - film.start);
    const double start = film.start + film.video.start;
    for (const Json& chapter : member(answer, "chapters")) {
        const double seconds = std::max(0.0, numberOf(chapter, "start_time") - start);
        if (seconds < kLongestFilm)
            film.marks.push_back({seconds, tagOf(chapter, "title", "TITLE")});
    }
    return film;
}

}  // namespace tkv::disc
