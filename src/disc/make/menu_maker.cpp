#include "disc/make/menu_maker.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <span>
#include <utility>

#include "composer/dvd_menu_picture.h"
#include "disc/make/button_map.h"
#include "disc/make/highlight.h"
#include "disc/make/page_request.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "graphics/text.h"
#include "imaging/export.h"
#include "system/pipe.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// With less than this many bytes the disk counts as full.
constexpr std::uintmax_t kLeastSpace = 1 << 20;

// Less than a frame, but so much that the composer and the encoder seldom wait for each other.
constexpr int kPipeBytes = 1 << 20;

// The composer's button maps.
constexpr const char* kWideMap = "/menu_169.txt";
constexpr const char* kPanScanMap = "/menu_43.txt";

std::string taskOf(const MenuPage& page) {
    return fmt::format("The menu {}", page.name);
}

// Absolute paths of names in the workshop.
std::vector<std::string> pathsOf(const std::vector<std::string>& names, const Workshop& workshop) {
    std::vector<std::string> paths;
    paths.reserve(names.size());
    for (const std::string& name : names)
        paths.push_back(workshop.path(name));
    return paths;
}

}  // namespace

MenuMaker::MenuMaker(MenuSetting setting, std::string background, Workshop& workshop,
                     Progress& progress)
    : setting_(std::move(setting)),
      background_(std::move(background)),
      faces_(fallbackFaces()),
      workshop_(workshop),
      progress_(progress),
      log_(workshop.path(Workshop::kLog)) {}

MenuMaker::~MenuMaker() {
    if (finishing_.valid()) finishing_.wait();
}

std::string MenuMaker::nameOf(const MenuPage& page,
                              const std::vector<std::string>& excerpts) const {
    Arguments inputs = excerpts;
    append(inputs,
           {page.title, page.isMain ? "main" : "", background_, setting_.sound.stamp, faces_});
    for (const Button& button : page.buttons) {
        const Arrows& arrows = button.arrows;
        append(inputs,
               {button.name, button.text,
                fmt::format("{} {} {} {}", arrows.up, arrows.down, arrows.left, arrows.right)});
    }
    append(inputs, menuClipCommand(setting_.sound, setting_.standard, setting_.rate, ""));
    append(inputs, {highlightStyle()});
    return Workshop::nameOf("menu", ".mpg", inputs);
}

std::string MenuMaker::make(const MenuPage& page, const std::vector<std::string>& excerpts) {
    std::string name = nameOf(page, excerpts);
    // A film may be there twice, and its chapter menu with it.
    if (name == finishingName_) finish();
    if (workshop_.has(name)) {
        progress_.expect(-kMenuWeight);
        return name;
    }
    const std::string made = Workshop::unfinished(name);
    const std::string clip = made + "-clip.mpg";
    const std::string maps = workshop_.newFolder(name + "-maps");
    drawMaps(page, excerpts, maps);
    std::optional<Pipe> frames = makePipe(kPipeBytes);
    if (!frames) throw DiscError(fmt::format("{}: too many open files.", taskOf(page)));
    // The buttons of the menu before are added meanwhile.
    std::future<void> before = std::exchange(
        finishing_, std::async(std::launch::async, [this, &page, name, made, maps, clip,
                                                    input = std::move(frames->readEnd)]() mutable {
            encode(page, std::move(input), clip);
            addButtons(page, maps, clip, made);
            fs::remove_all(workshop_.path(maps));
            fs::remove(workshop_.path(clip));
            workshop_.finish(name);
        }));
    finishingName_ = name;
    drawFrames(page, excerpts, std::move(frames->writeEnd));
    if (before.valid()) before.get();
    return name;
}

void MenuMaker::finish() {
    if (finishing_.valid()) finishing_.get();
}

// Hands each frame to the encoder as soon as it is drawn, and at last the end of them.
void MenuMaker::drawFrames(const MenuPage& page, const std::vector<std::string>& excerpts,
                           Descriptor encoder) {
    bool isTaken = true;
    const MenuRequest request =
        requestOf(page, excerpts, MenuMode::definitive, Workshop::unfinished("menu"));
    const bool isDrawn = drawMenuFrames(request, [&](const Bitmap& frame) {
        const std::size_t bytes = frame.rowBytes() * static_cast<std::size_t>(frame.height());
        isTaken = writeWhole(encoder, std::as_bytes(std::span(frame.row(0), bytes / 4)));
        return isTaken;
    });
    if (!isTaken) finish();  // The encoder is gone, and says why.
    expectDrawn(isDrawn, page);
}

void MenuMaker::encode(const MenuPage& page, Descriptor frames, const std::string& clip) {
    Progress::Task task(progress_, fmt::format("Making the menu {}", page.name), kMenuWeight);
    const StandardFacts facts = factsOf(setting_.standard);
    const int written = workshop_.tools().encode(
        menuClipCommand(setting_.sound, setting_.standard, setting_.rate, clip),
        {"", fmt::format("{} could not be encoded", taskOf(page)), ""},
        [&](double seconds) { task.reach(seconds / facts.menuSeconds()); }, std::move(frames));
    if (written != facts.menuFrames) {
        throw DiscError(fmt::format("{} has {} frames instead of {}.", taskOf(page), written,
                                    facts.menuFrames));
    }
}

void MenuMaker::drawMaps(const MenuPage& page, const std::vector<std::string>& excerpts,
                         const std::string& folder) {
    expectDrawn(dvdMenuPicture(requestOf(page, excerpts, MenuMode::overlay, folder + "/menu.png")),
                page);
    const std::string wideMap = readText(workshop_.path(folder + kWideMap));
    const std::string panScanMap = readText(workshop_.path(folder + kPanScanMap));
    const auto buttons = pageButtons(wideMap, panScanMap, page, workshop_.path(""));
    expectDrawn(buttons.has_value(), page);
    finishMap(page, wideMap, buttons->wide, folder + kWideMap);
    finishMap(page, panScanMap, buttons->panScan, folder + kPanScanMap);
}

void MenuMaker::finishMap(const MenuPage& page, const std::string& map,
                          const std::vector<ButtonRect>& buttons, const std::string& output) {
    const SubpictureNames names{dot(), output + "-highlight.png", output + "-select.png"};
    for (const auto& [state, name] : {std::pair(ButtonState::highlighted, names.highlight),
                                      {ButtonState::selected, names.select}}) {
        bool isWritten = false;
        imgExport(highlightPicture(buttons, page.thumbnails.size(), setting_.standard, state),
                  workshop_.path(name), 0, &isWritten);
        expectDrawn(isWritten, page);
    }
    const auto finished = finishedMap(map, page, buttons, names, workshop_.path(""));
    expectDrawn(finished.has_value(), page);
    writeText(workshop_.path(output), *finished);
}

// The buttons of wide displays are the first subpicture stream, those of 4:3 displays the second.
void MenuMaker::addButtons(const MenuPage& page, const std::string& maps, const std::string& clip,
                           const std::string& output) {
    const std::string wide = maps + "/wide.mpg";
    const std::string task = fmt::format("{} could not be given buttons", taskOf(page));
    const auto multiplex = [&](const char* stream, const std::string& map, const std::string& from,
                               const std::string& to) {
        Program spumux;
        spumux.command = {"spumux", "-s", stream, map};
        spumux.input = from;
        spumux.output = to;
        const std::string said = workshop_.tools().run(std::move(spumux), {"", task, ""});
        if (said.find(" 1 subtitles added") == std::string::npos ||
            fs::file_size(workshop_.path(to)) <= fs::file_size(workshop_.path(from))) {
            const std::string why = lastWords(said);
            throw DiscError(fmt::format("{}: {}.", task, why.empty() ? "spumux adds none" : why));
        }
    };
    multiplex("0", maps + kWideMap, clip, wide);
    multiplex("1", maps + kPanScanMap, wide, output);
}

std::string MenuMaker::dot() {
    return workshop_.result(Workshop::nameOf("dot", ".png", dotCommand(setting_.standard, "")),
                            [&](const std::string& made) {
                                workshop_.tools().run(
                                    dotCommand(setting_.standard, made),
                                    {"", "The menus' overlay could not be made", ""});
                            });
}

void MenuMaker::drawPreview(const MenuPage& page, const std::vector<std::string>& thumbnails,
                            const std::string& output) {
    expectDrawn(dvdMenuPicture(requestOf(page, thumbnails, MenuMode::preview, output)), page);
}

void MenuMaker::drawJacket(const std::string& title, const std::string& line,
                           const std::string& background, const std::string& output) {
    const std::string behind = background.empty() ? "" : workshop_.path(background);
    if (!dvdMenuPicture(jacketRequest(title, line, behind, workshop_.path(output))))
        throw DiscError("The jacket could not be drawn.");
}

void MenuMaker::expectDrawn(bool isDrawn, const MenuPage& page) const {
    if (workshop_.tools().stop().isStopped()) throw Interrupted();
    if (isDrawn) return;
    std::error_code error;
    const bool isFull = fs::space(workshop_.path(""), error).available < kLeastSpace && !error;
    throw DiscError(fmt::format(
        "{} could not be drawn: {}.", taskOf(page),
        isFull ? "the disk is full" : "the composer's last lines are in work/composer.log"));
}

MenuRequest MenuMaker::requestOf(const MenuPage& page, const std::vector<std::string>& thumbnails,
                                 MenuMode mode, const std::string& output) const {
    return pageRequest(page, setting_.standard,
                       background_.empty() ? "" : workshop_.path(background_),
                       pathsOf(thumbnails, workshop_), mode, workshop_.path(output));
}

}  // namespace tkv::disc
