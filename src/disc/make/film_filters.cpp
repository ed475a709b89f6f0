#include "disc/make/film_filters.h"

#include <fmt/format.h>

#include <string_view>

namespace tkv::disc {

namespace {

// Brings HDR down to what a television shows.
std::string toneMapped(const SourceColors& colors, PixelSize size) {
    return fmt::format(
        "zscale=w={}:h={}:filter=bicubic:tin={}:pin=2020:min={}:rin={}:transfer=linear"
        ":primaries=2020:npl=100,"
        "format=gbrpf32le,zscale=primaries=709,tonemap=hable:desat=0,"
        "zscale=transfer=601:matrix=170m:range=limited,format=yuv420p",
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

// A disc's frame, brought to the height of an excerpt. A frame of 4:3 gets bars.
std::string excerptPicture(PixelSize size, bool isWide) {
    const Placement placement =
        placedIn(size, kWideAspect, isWide ? kWideAspect : kNarrowAspect, {2, 2});
    return asJpeg({placement.width, placement.height}) + padded(placement, size);
}

// Times from 0 on, at a rate. Were the first picture's time between two frames', times that
// tremble by a millisecond would lose some pictures and double others.
std::string timed(FrameRate rate, double speed) {
    return fmt::format("settb=1/90000,setpts=(PTS-STARTPTS)/{:.9f},fps={}/{}:start_time=0,", speed,
                       rate.numerator, rate.denominator);
}

// The film's pictures at the rate that its frames or fields are to have.
std::string motionFilters(const Conversion& conversion) {
    const FrameRate frames = factsOf(conversion.standard).frameRate;
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
        case FieldSource::pulldown:
            return timed({24000, 1001}, 1);
    }
    return {};
}

std::string_view weavingFilter(FieldSource source) {
    switch (source) {
        case FieldSource::other:
        case FieldSource::pictures:
            return ",interlace=scan=tff:lowpass=complex";
        case FieldSource::pulldown:
            return ",telecine=first_field=top:pattern=23";
        default:
            return "";
    }
}

}  // namespace

std::string discFrames(const Conversion& conversion) {
    const PixelSize raster{kRasterWidth, factsOf(conversion.standard).rasterHeight};
    const Placement& placement = conversion.placement;
    const Rows rows = conversion.fields == FieldSource::kept ? Rows::byFields : Rows::together;
    // What rounding leaves out or puts in at the end is made good, but no more: a film that ends
    // too early is to be noticed.
    return fmt::format(
        "{}{}{},setdar={}{},setparams=field_mode={}:range=unspecified:color_primaries=unknown"
        ":color_trc=unknown:colorspace=unknown,tpad=stop=2:stop_mode=clone,trim=end_frame={}",
        motionFilters(conversion),
        scaled(conversion.colors, {placement.width, placement.height}, rows),
        padded(placement, raster), conversion.isWide ? "16/9" : "4/3",
        weavingFilter(conversion.fields), conversion.hasFields() ? "tff" : "prog",
        conversion.frames);
}

std::string excerptFilters(const std::vector<FrameRange>& ranges, PixelSize size,
                           const Conversion& conversion) {
    std::string frames;
    for (const FrameRange& range : ranges) {
        frames += fmt::format("{}between(n,{},{})", frames.empty() ? "" : "+", range.first,
                              range.first + range.count - 1);
    }
    return fmt::format("select='{}',{}{}", frames, conversion.hasFields() ? "field=top," : "",
                       excerptPicture(size, conversion.isWide));
}

std::string excerptFiltersOf(PixelSize size, bool isWide) {
    return "bwdif=send_frame:deint=interlaced," + excerptPicture(size, isWide);
}

std::string stillFilters(const VideoTrack& video, const SourceColors& colors, PixelSize size) {
    const Placement placement = placedIn(size, kWideAspect, video.aspect, {2, 2});
    // One field of an interlaced picture is one moment of it.
    const bool isFields = video.fields != Fields::progressive;
    return fmt::format("{}{}{},{}", isFields ? "field=top," : "",
                       scaled(colors, {placement.width, placement.height}, Rows::together),
                       padded(placement, size), asJpeg(size));
}

}  // namespace tkv::disc
