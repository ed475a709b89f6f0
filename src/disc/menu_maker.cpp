#include "disc/menu_maker.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <utility>

#include "composer/dvd_menu_picture.h"
#include "composer/navigation.h"
#include "disc/disc_error.h"
#include "disc/tools.h"
#include "system/log.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Seconds of work for a page.
constexpr double kDrawingWeight = 1.5;
constexpr double kEncodingWeight = 2.5;

// How the composer tells the part of a page's frames that it has drawn.
constexpr std::string_view kPercentLine = "pourcentage    : ";

std::string taskOf(const PageWork& work) {
    return fmt::format("The menu {}", work.name);
}

void expectDrawn(bool isDrawn, const PageWork& work) {
    if (areProgramsStopped()) throw Interrupted();
    if (!isDrawn) {
        throw DiscError(fmt::format(
            "{} could not be drawn. The composer's last lines are in work/composer.log.",
            taskOf(work)));
    }
}

std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::size_t count(const std::string& text, std::string_view part) {
    std::size_t found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++found;
    return found;
}

}  // namespace

MenuMaker::MenuMaker(MenuSetting setting, Workshop& workshop, Progress& progress)
    : setting_(std::move(setting)), workshop_(workshop), progress_(progress) {
    const std::string name = "composer.log";
    const auto log = std::make_shared<std::ofstream>(name);
    workshop.has(name);
    setLogSink([this, log](std::string_view text) {
        *log << text << std::flush;
        double percent = 0;
        if (!text.starts_with(kPercentLine) || drawing_ == nullptr) return;
        text.remove_prefix(kPercentLine.size());
        if (std::from_chars(text.data(), text.data() + text.size(), percent).ec == std::errc())
            drawing_->reach(percent / 100);
    });
}

MenuMaker::~MenuMaker() {
    setLogSink({});
}

std::string MenuMaker::make(const PageWork& work) {
    std::vector<std::string> inputs = work.excerpts;
    inputs.insert(inputs.end(), {work.page->title, work.page->isMain ? "main" : "",
                                 setting_.background, setting_.soundStamp});
    for (const Button& button : work.page->buttons)
        inputs.insert(inputs.end(), {button.name, button.text});
    for (const std::string& word :
         menuClipCommand("", setting_.sound, setting_.standard, setting_.rate, ""))
        inputs.push_back(word);

    const std::string name = Workshop::nameOf("menu", ".mpg", inputs);
    if (workshop_.has(name)) return name;
    return workshop_.result(name, [&](const std::string& path) {
        const std::string frames = path + "-frames";
        const std::string clip = path + "-clip.mpg";
        progress_.expect(kDrawingWeight + kEncodingWeight);
        drawFrames(work, frames);
        encode(work, frames, clip);
        fs::remove_all(frames);
        addButtons(work, clip, path);
        fs::remove(clip);
    });
}

void MenuMaker::drawFrames(const PageWork& work, const std::string& folder) {
    Progress::Task task(progress_, fmt::format("Drawing the menu {}", work.name), kDrawingWeight);
    drawing_ = &task;
    const bool isDrawn =
        dvdMenuPicture(requestOf(work, work.excerpts, MenuMode::definitive, folder));
    drawing_ = nullptr;
    const auto frames = std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    expectDrawn(isDrawn && frames == factsOf(setting_.standard).menuFrames, work);
}

void MenuMaker::encode(const PageWork& work, const std::string& frames, const std::string& clip) {
    Progress::Task task(progress_, fmt::format("Encoding the menu {}", work.name), kEncodingWeight);
    const StandardFacts facts = factsOf(setting_.standard);
    const int written =
        runEncoder(menuClipCommand(frames, setting_.sound, setting_.standard, setting_.rate, clip),
                   fmt::format("{} could not be encoded", taskOf(work)),
                   [&](double seconds) { task.reach(seconds / facts.menuSeconds()); });
    if (written != facts.menuFrames) {
        throw DiscError(fmt::format("{} has {} frames instead of {}.", taskOf(work), written,
                                    facts.menuFrames));
    }
}

// The buttons of wide displays are the first subpicture stream, those of 4:3 displays the second.
void MenuMaker::addButtons(const PageWork& work, const std::string& clip,
                           const std::string& output) {
    const std::string dot = workshop_.result(
        Workshop::nameOf("dot", ".png", dotCommand(setting_.standard, "")),
        [&](const std::string& path) {
            runTool({dotCommand(setting_.standard, path), "", "", {}, {}}, taskOf(work));
        });
    const std::string maps = output + "-maps";
    fs::create_directory(maps);
    const MenuRequest request =
        requestOf(work, work.excerpts, MenuMode::overlay, maps + "/menu.png");
    expectDrawn(dvdMenuPicture(request), work);

    const std::string wide = maps + "/wide.mpg";
    const std::string task = fmt::format("{} could not be given buttons", taskOf(work));
    const auto multiplex = [&](const char* stream, const std::string& map, const std::string& from,
                               const std::string& to) {
        const std::string said = runTool(
            {{"spumux", "-s", stream, buttonMap(work, maps + map, dot)}, from, to, {}, {}}, task);
        if (said.find(" 1 subtitles added") == std::string::npos ||
            fs::file_size(to) <= fs::file_size(from)) {
            throw DiscError(fmt::format("{}: {}.", task, lastWords(said)));
        }
    };
    setenv("VIDEO_FORMAT", setting_.standard == Standard::pal ? "PAL" : "NTSC", 1);
    multiplex("0", "/menu_169.txt", clip, wide);
    multiplex("1", "/menu_43.txt", wide, output);
    fs::remove_all(maps);
}

// The composer's map with the dot in it; where it stands.
std::string MenuMaker::buttonMap(const PageWork& work, const std::string& path,
                                 const std::string& dot) {
    std::string map = readText(path);
    const std::size_t spu = map.find("<spu ");
    if (spu == std::string::npos || count(map, "<button ") != work.page->buttons.size())
        expectDrawn(false, work);
    map.insert(spu + 5, fmt::format("image=\"{}\" ", dot));
    std::ofstream(path) << map;
    return path;
}

void MenuMaker::drawPreview(const PageWork& work, const std::vector<std::string>& thumbnails,
                            const std::string& output) {
    expectDrawn(dvdMenuPicture(requestOf(work, thumbnails, MenuMode::preview, output)), work);
}

void MenuMaker::drawJacket(const std::string& title, const std::string& line,
                           const std::string& background, const std::string& output) {
    MenuRequest request;
    request.mode = MenuMode::jacket;
    if (!background.empty()) request.bkg = background;
    request.title = title;
    request.dvdBt_readAll = line;
    request.output = output;
    if (!dvdMenuPicture(request)) throw DiscError("The jacket could not be drawn.");
}

MenuRequest MenuMaker::requestOf(const PageWork& work, const std::vector<std::string>& thumbnails,
                                 MenuMode mode, const std::string& output) const {
    MenuRequest request;
    request.mode = mode;
    request.isMainMenu = work.page->isMain;
    request.isPal = setting_.standard == Standard::pal;
    request.bkg = setting_.background;
    request.title = work.page->title;
    request.thumbs = thumbnails;
    request.captions.emplace();
    request.output = output;
    for (const Button& button : work.page->buttons) {
        if (request.captions->size() < thumbnails.size()) {
            request.captions->push_back(button.text);
            continue;
        }
        for (const NavigationButton& navigation : kNavigationButtons) {
            if (navigation.name == button.name) request.*navigation.label = button.text;
        }
    }
    return request;
}

}  // namespace tkv::disc
