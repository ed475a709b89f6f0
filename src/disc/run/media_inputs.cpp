#include "disc/run/media_inputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace tkv::disc {

namespace {

// ffmpeg's demuxers of cameras', discs', television's and the web's films, of sound, and of raw
// streams. Of those with several names one is enough.
constexpr std::string_view kFormats =
    "matroska,mov,avi,mpeg,mpegts,mpegvideo,asf,flv,live_flv,mxf,gxf,dv,ogg,nut,rm,wtv,nsv,nuv,pva,"
    "pmp,ivf,ivr,swf,gif,apng,h261,h263,h264,hevc,m4v,cavsvideo,dirac,dnxhd,obu,av1,vc1,vc1test,"
    "mjpeg,"
    "mpjpeg,yuv4mpegpipe,lmlm4,lxf,r3d,viv,vivo,flic,wav,w64,caf,aiff,au,mp3,aac,ac3,eac3,dts,"
    "truehd,"
    "mlp,flac,ape,wv,tta,tak,mpc,mpc8,amr,voc,xwma,dsf,iff,oma,spdif,loas";

constexpr std::string_view kNotAllowed = "] Format not on whitelist";
// What ffmpeg says since version 7 of a playlist under the name of a film.
constexpr std::string_view kRenamedPlaylist = "Not detecting m3u8/hls";

constexpr std::array<std::string_view, 6> kPlaylists{"hls", "dash", "concat",
                                                     "sdp", "imf",  "webm_dash_manifest"};
constexpr std::array<std::string_view, 22> kTexts{
    "tty",  "aqtitle", "ass",       "ffmetadata", "jacosub", "lrc",   "mcc", "microdvd",
    "mpl2", "mpsub",   "pjs",       "realtext",   "sami",    "sbg",   "scc", "srt",
    "stl",  "sup",     "subviewer", "subviewer1", "vobsub",  "webvtt"};

template <std::size_t count>
bool isAmong(const std::array<std::string_view, count>& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

ForeignFormat playlist() {
    return {"it is a playlist, which only names other files", NoFilm::Kind::playlist};
}

}  // namespace

std::vector<std::string> guardedCommand(const std::vector<std::string>& command) {
    const bool isReader = command.front() == "ffmpeg" || command.front() == "ffprobe";
    if (!isReader) return command;
    std::vector<std::string> guarded;
    for (std::size_t i = 0; i < command.size(); ++i) {
        const std::string next = i + 1 < command.size() ? command[i + 1] : "";
        const bool isFile = next.starts_with("file:") || next.starts_with("concat:");
        if (command[i] == "-i" && isFile) {
            guarded.insert(guarded.end(), {"-format_whitelist", std::string(kFormats),
                                           "-protocol_whitelist", "file,concat"});
        }
        guarded.push_back(command[i]);
    }
    return guarded;
}

std::optional<ForeignFormat> foreignFormat(std::string_view line) {
    if (line.starts_with(kRenamedPlaylist)) return playlist();
    // "[hls @ 0x55c14a53f500] Format not on whitelist …"
    if (!line.starts_with('[') || line.find(kNotAllowed) == std::string_view::npos) return {};
    const std::string_view name = line.substr(1, line.find(' ') - 1);
    if (isAmong(kPlaylists, name)) return playlist();
    if (isAmong(kTexts, name)) return ForeignFormat{"it is a text"};
    if (name.starts_with("image2") || name.ends_with("_pipe"))
        return ForeignFormat{"it is a picture"};
    return ForeignFormat{fmt::format("{} is no format of films", name)};
}

}  // namespace tkv::disc
