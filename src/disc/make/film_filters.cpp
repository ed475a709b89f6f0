#include "disc/make/film_filters.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace tkv::disc {

namespace {

// Brings HDR down to what a television shows. Its reference white, which BT.2408 has at 203 cd/m2,
// is a little below a television's: what is up to half as bright stays as it is, and what is
// brighter shares the rest. Colours that a television lacks are the nearest that it has, since
// whole numbers are not below 0: a missing green would be taken off the red.
std::string toneMapped(const SourceColors& colors, PixelSize size) {
    return fmt::format(
        "zscale=w={}:h={}:filter=bicubic:tin={}:pin=2020:min={}:rin={}:transfer=linear"
        ":primaries=2020:npl=203,"
        "format=gbrpf32le,zscale=primaries=709,tonemap=mobius:param=0.5:desat=0,"
        "zscale=transfer=601:range=full,format=gbrp16le,"
        "zscale=matrix=170m:range=limited,format=yuv420p",
        size.width, size.height, colors.transfer, colors.matrix,
        colors.isFullRange ? "full" : "limited");
}

enum class Rows { together, byFields };

// Brings the picture to a size, and its colours to those of a disc, whose players expect BT.601.
std::string scaled(const SourceColors& colors, PixelSize size, Rows rows) {
    if (!colors.transfer.empty()) return toneMapped(colors, size);
    std::string from;
    if (!colors.matrix.empty()) {
        from = fmt::format(":in_color_matrix={}:in_range={}", colors.matrix,
                           colors.isFullRange ? "pc" : "tv");
    }
    return fmt::format(
        "scale={}:{}:flags=bicubic+accurate_rnd:interl={}{}:out_color_matrix=bt601:out_range=tv,"
        "format=yuv420p",
        size.width, size.height, rows == Rows::byFields ? 1 : 0, from);
}

std::string padded(const Placement& placement, PixelSize raster) {
    if (placement == Placement{0, 0, raster.width, raster.height}) return {};
    return fmt::format(",pad={}:{}:{}:{}", raster.width, raster.height, placement.x, placement.y);
}

// Turns the disc's colours into a JPEG's.
std::string asJpeg(PixelSize size) {
    return fmt::format(
        "scale={}:{}:flags=bicubic:in_color_matrix=bt601:in_range=tv:out_color_matrix=bt601"
        ":out_range=pc,format=yuvj420p,setsar=1",
        size.width, size.height);
}

// How much of a picture may go at each of two edges for it to fill another shape. It does for 4:3
// and 2.39:1 in 16:9.
constexpr double kMostCut = 0.13;

// The part of a frame that shows something, in parts of its width and height from the top left, and
// its shape on the screen.
struct Seen {
    double x = 0, y = 0, width = 1, height = 1;
    double aspect = 0;
};

Seen seenOf(const Conversion& conversion) {
    const PixelSize raster{kRasterWidth, factsOf(conversion.standard).rasterHeight};
    const Placement& placement = conversion.placement;
    Seen seen;
    seen.x = static_cast<double>(placement.x) / raster.width;
    seen.y = static_cast<double>(placement.y) / raster.height;
    seen.width = static_cast<double>(placement.width) / raster.width;
    seen.height = static_cast<double>(placement.height) / raster.height;
    const double frame = conversion.isWide ? kWideAspect : kNarrowAspect;
    seen.aspect = frame * seen.width / seen.height;
    return seen;
}

// The largest part of that shape in its middle.
Seen middleOf(const Seen& seen, double shape) {
    const double width = std::min(1.0, shape / seen.aspect);
    const double height = std::min(1.0, seen.aspect / shape);
    return {seen.x + seen.width * (1 - width) / 2, seen.y + seen.height * (1 - height) / 2,
            seen.width * width, seen.height * height, shape};
}

std::string cutTo(const Seen& seen) {
    return fmt::format("crop=iw*{:.6f}:ih*{:.6f}:iw*{:.6f}:ih*{:.6f}", seen.width, seen.height,
                       seen.x, seen.y);
}

// Makes a picture of that raster which the seen part fills. `scaled`: what brings a part to a size.
template <typename Scaled>
std::string filled(const Seen& seen, const Raster& raster, const Scaled& scaled) {
    const auto& [size, shape] = raster;
    std::string middle = fmt::format("{},{}", cutTo(middleOf(seen, shape)), scaled(size));
    if (isCutToFill(seen.aspect, shape)) return middle;
    const Placement placement = placedIn(size, shape, seen.aspect, {2, 2});
    // Labels are those of the whole graph.
    return fmt::format(
        "split[for{0}][around{0}];[around{0}]{1},gblur=sigma={2},eq=brightness=-0.14[behind{0}]"
        ";[for{0}]{3},{4}[whole{0}];[behind{0}][whole{0}]overlay={5}:{6}",
        fmt::format("{}x{}", size.width, size.height), middle, size.height / 12, cutTo(seen),
        scaled({placement.width, placement.height}), placement.x, placement.y);
}

// A disc's frame as a picture of an excerpt.
std::string excerptPicture(PixelSize size, const Conversion& conversion) {
    const auto scaled = [](PixelSize to) {
        return fmt::format("scale={}:{}:flags=bicubic", to.width, to.height);
    };
    return fmt::format("{},{}", filled(seenOf(conversion), onPage(size), scaled), asJpeg(size));
}

// Times from 0 on, at a rate. Were the first picture's time between two frames', times that
// tremble by a millisecond would lose some pictures and double others.
std::string timed(FrameRate rate, double speed) {
    return fmt::format("settb=1/90000,setpts=(PTS-STARTPTS)/{:.9f},fps={}/{}:start_time=0,", speed,
                       rate.numerator, rate.denominator);
}

// The film's pictures at the rate that its frames or fields are to have.
std::string motionFilters(const Conversion& conversion) {
    const FrameRate frames = conversion.frameRate();
    const FrameRate fields{2 * frames.numerator, frames.denominator};
    switch (conversion.fields) {
        case FieldSource::none:
            return timed(frames, conversion.speed);
        case FieldSource::kept:
            return timed(frames, 1) + (conversion.isTopFirst ? "" : "setfield=bff,fieldorder=tff,");
        case FieldSource::other:
            return fmt::format("bwdif=send_field:{}:all,", conversion.isTopFirst ? "tff" : "bff") +
                   timed(fields, 1);
        case FieldSource::pictures:
            return timed(fields, 1);
        case FieldSource::merged:
            return fmt::format("bwdif=send_frame:{}:all,", conversion.isTopFirst ? "tff" : "auto") +
                   timed(frames, conversion.speed);
    }
    return {};
}

// Makes the frames that players show of those that are stored: of four pictures of cinema one comes
// twice. Theirs is no time in the middle between two frames', which might be rounded up or down.
std::string shownFrames(const Conversion& conversion) {
    if (!conversion.isPulledDown) return {};
    const FrameRate stored = conversion.frameRate(), shown = factsOf(conversion.standard).frameRate;
    return fmt::format("settb=1/90000,setpts=(N+0.1)*{}/({}*TB),fps={}/{},", stored.denominator,
                       stored.numerator, shown.numerator, shown.denominator);
}

// Leaves a part of a picture.
std::string cutOff(const Edges& edges) {
    if (edges == Edges{}) return {};
    return fmt::format("crop=iw-{}:ih-{}:{}:{},", edges.left + edges.right,
                       edges.top + edges.bottom, edges.left, edges.top);
}

std::string_view weavingFilter(FieldSource source) {
    switch (source) {
        case FieldSource::other:
        case FieldSource::pictures:
            return ",interlace=scan=tff:lowpass=complex";
        default:
            return "";
    }
}

}  // namespace

std::string discFrames(const Conversion& conversion) {
    const PixelSize raster{kRasterWidth, factsOf(conversion.standard).rasterHeight};
    const std::string finished = fmt::format(
        "setdar={}{},setparams=field_mode={}:range=unspecified:color_primaries=unknown"
        ":color_trc=unknown:colorspace=unknown",
        conversion.isWide ? "16/9" : "4/3", weavingFilter(conversion.fields),
        conversion.hasFields() ? "tff" : "prog");
    if (conversion.isDrawn) return fmt::format("{},trim=end_frame={}", finished, conversion.frames);
    const Placement& placement = conversion.placement;
    const Rows rows = conversion.fields == FieldSource::kept ? Rows::byFields : Rows::together;
    // What rounding leaves out or puts in at the end is made good, but no more: a film that ends
    // too early is to be noticed.
    return fmt::format("{}{}{}{},{},tpad=stop=2:stop_mode=clone,trim=end_frame={}",
                       cutOff(conversion.cut), motionFilters(conversion),
                       scaled(conversion.colors, {placement.width, placement.height}, rows),
                       padded(placement, raster), finished, conversion.frames);
}

std::string excerptFilters(const std::vector<FrameRange>& ranges, PixelSize size,
                           const Conversion& conversion) {
    std::string frames;
    for (const FrameRange& range : ranges) {
        frames += fmt::format("{}between(n,{},{})", frames.empty() ? "" : "+", range.first,
                              range.first + range.count - 1);
    }
    return fmt::format("{}select='{}',{}{}", shownFrames(conversion), frames,
                       conversion.hasFields() ? "field=top," : "",
                       excerptPicture(size, conversion));
}

std::string excerptFiltersOf(PixelSize size, const Conversion& conversion) {
    return fmt::format("{}bwdif=send_frame:deint=interlaced,{}", shownFrames(conversion),
                       excerptPicture(size, conversion));
}

std::string stillFilters(const VideoTrack& video, const SourceColors& colors,
                         const Raster& raster) {
    // One field of an interlaced picture is one moment of it.
    const bool isFields = video.fields != Fields::progressive;
    const auto inColors = [&](PixelSize to) { return scaled(colors, to, Rows::together); };
    Seen seen;
    seen.aspect = video.aspect;
    return fmt::format("{}{}{},{}", cutOff(video.cut), isFields ? "field=top," : "",
                       filled(seen, raster, inColors), asJpeg(raster.size));
}

bool isCutToFill(double aspect, double shape) {
    return std::min(aspect / shape, shape / aspect) >= 1 - 2 * kMostCut;
}

}  // namespace tkv::disc
