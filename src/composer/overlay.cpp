#include "composer/overlay.h"

#include <fmt/format.h>

#include "composer/page_geometry.h"
#include "imaging/export.h"
#include "system/files.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/guarded_removal.h"
#include "utils/text_file.h"
#include "utils/version_probe.h"

namespace tkv {

namespace {

/// From this version on the multiplexer needs to know the video format; it reads a version a.b.c as
/// 0.0b0c.
constexpr float kNamesFormatFrom = 0.07F;

constexpr std::string_view kTail = "</spu>\n</stream>\n</subpictures>";

/// The beginning of the map, which is XML. Paths are not escaped: one with an ampersand or a
/// quotation mark makes a map that the multiplexer rejects.
std::string headOf(const std::string& highlight, const std::string& select, bool isPal) {
    return fmt::format(
        "<subpictures {}>\n"
        "<stream>\n"
        "<spu start=\"00:00:00.0\"\n"
        "highlight=\"{}\"\n"
        "select=\"{}\"\n"
        "transparent=\"FFFFFF\"\n"
        "force=\"yes\"\n"
        "xoffset=\"0\" yoffset=\"0\"\n"
        "autoorder=\"rows\"\n"
        ">\n",
        formatAttribute(versionSpumux(true), isPal), highlight, select);
}

bool writeColor(const std::string& path, float opacity, bool isPal) {
    const PixelSize raster = canvasSize(MenuMode::overlay, isPal);
    return imgColorPNG(kOrange, path, raster.width, raster.height, opacity);
}

/// Writes a map where the earlier one has been removed. A map that cannot be written completely is
/// removed, but an earlier one that could not be removed stays.
void writeMap(const std::string& map, const std::string& text) {
    const std::string path = expandTilde(map);
    const bool isNew = !fileStamp(path);
    if (!ecritureFichier(path, text, true) && isNew) removePartOfFile(path);
}

}  // namespace

std::string formatAttribute(float spumuxVersion, bool isPal) {
    if (spumuxVersion < kNamesFormatFrom) return "";
    return fmt::format("format=\"{}\"", isPal ? "PAL" : "NTSC");
}

void writeOverlayFiles(const std::string& output, const ButtonMap& buttons, bool isPal) {
    const std::string base = withoutExtension(output);
    const std::string highlight = joinPath(parentFolder(base), "overlayHighlight.png");
    const std::string select = joinPath(parentFolder(base), "overlaySelect.png");
    logLine("overlay Highlight   ? {:d}", writeColor(highlight, 0.3F, isPal));
    logLine("overlay Select      ? {:d}", writeColor(select, 0.6F, isPal));
    const std::string head = headOf(highlight, select, isPal);

    const std::string wideMap = base + "_169.txt";
    rmCocoa(wideMap);
    if (isVerbose()) {
        logLine("deb : {}", head);
        logLine("mid : {}", buttons.wide);
        logLine("end : {}", kTail);
    }
    writeMap(wideMap, fmt::format("{}{}{}", head, buttons.wide, kTail));

    const std::string panScanMap = base + "_43.txt";
    rmCocoa(panScanMap);
    writeMap(panScanMap, fmt::format("{}{}{}", head, buttons.panScan, kTail));
}

}  // namespace tkv
