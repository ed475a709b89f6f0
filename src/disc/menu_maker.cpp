#include "disc/menu_maker.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "composer/dvd_menu_picture.h"
#include "composer/navigation.h"
#include "disc/disc_error.h"
#include "disc/tools.h"
#include "graphics/text.h"
#include "system/log.h"
#include "system/pipe.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// With less than this many bytes the disk counts as full.
constexpr std::uintmax_t kLeastSpace = 1 << 20;

// Less than a frame, but so much that the composer and the encoder seldom wait for each other.
constexpr int kPipeBytes = 1 << 20;

// The composer's button maps, and where one names the pictures of a subpicture.
constexpr const char* kWideMap = "/menu_169.txt";
constexpr const char* kPanScanMap = "/menu_43.txt";
constexpr std::string_view kSubpicture = "<spu ";

std::string taskOf(const PageWork& work) {
    return fmt::format("The menu {}", work.name);
}

void expectDrawn(bool isDrawn, const PageWork& work) {
    if (areProgramsStopped()) throw Interrupted();
    if (isDrawn) return;
    std::error_code error;
    const bool isFull = fs::space(".", error).available < kLeastSpace && !error;
    throw DiscError(fmt::format(
        "{} could not be drawn: {}.", taskOf(work),
        isFull ? "the disk is full" : "the composer's last lines are in work/composer.log"));
}

std::size_t count(const std::string& text, std::string_view part) {
    std::size_t found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++found;
    return found;
}

}  // namespace

MenuMaker::MenuMaker(MenuSetting setting, Workshop& workshop, Progress& progress)
    : setting_(std::move(setting)),
      faces_(fallbackFaces()),
      workshop_(workshop),
      progress_(progress) {
    const std::string name = "composer.log";
    const auto log = std::make_shared<std::ofstream>(name);
    workshop.has(name);
    setLogSink([log](std::string_view text) { *log << text << std::flush; });
}

MenuMaker::~MenuMaker() {
    if (finishing_.valid()) finishing_.wait();
    setLogSink({});
}

std::string MenuMaker::make(const PageWork& work) {
    std::vector<std::string> inputs = work.excerpts;
    inputs.insert(inputs.end(), {work.page->title, work.page->isMain ? "main" : "",
                                 setting_.background, setting_.soundStamp, faces_});
    for (const Button& button : work.page->buttons)
        inputs.insert(inputs.end(), {button.name, button.text});
    for (const std::string& word :
         menuClipCommand(setting_.sound, setting_.standard, setting_.rate, ""))
        inputs.push_back(word);

    std::string name = Workshop::nameOf("menu", ".mpg", inputs);
    if (workshop_.has(name)) {
        progress_.expect(-kMenuWeight);
        return name;
    }
    const std::string path = Workshop::unfinished(name);
    const std::string maps = path + "-maps", clip = path + "-clip.mpg";
    drawMaps(work, maps);
    std::optional<Pipe> frames = makePipe(kPipeBytes);
    if (!frames) throw DiscError(fmt::format("{}: too many open files.", taskOf(work)));
    // The buttons of the menu before are added meanwhile.
    std::future<void> before = std::exchange(
        finishing_, std::async(std::launch::async, [this, &work, name, path, maps, clip,
                                                    input = std::move(frames->readEnd)]() mutable {
            encode(work, std::move(input), clip);
            addButtons(work, maps, clip, path);
            fs::remove_all(maps);
            fs::remove(clip);
            workshop_.finish(name);
        }));
    drawFrames(work, std::move(frames->writeEnd));
    if (before.valid()) before.get();
    return name;
}

void MenuMaker::finish() {
    if (finishing_.valid()) finishing_.get();
}

// Hands each frame to the encoder as soon as it is drawn, and at last the end of them.
void MenuMaker::drawFrames(const PageWork& work, Descriptor encoder) {
    bool isTaken = true;
    const MenuRequest request = requestOf(work, work.excerpts, MenuMode::definitive, "menu");
    const bool isDrawn = drawMenuFrames(request, [&](const Bitmap& frame) {
        const std::size_t bytes = frame.rowBytes() * static_cast<std::size_t>(frame.height());
        isTaken = writeWhole(encoder, std::as_bytes(std::span(frame.row(0), bytes / 4)));
        return isTaken;
    });
    if (!isTaken) finish();  // The encoder is gone, and says why.
    expectDrawn(isDrawn, work);
}

void MenuMaker::encode(const PageWork& work, Descriptor frames, const std::string& clip) {
    Progress::Task task(progress_, fmt::format("Making the menu {}", work.name), kMenuWeight);
    const StandardFacts facts = factsOf(setting_.standard);
    const int written = runEncoder(
        menuClipCommand(setting_.sound, setting_.standard, setting_.rate, clip),
        fmt::format("{} could not be encoded", taskOf(work)),
        [&](double seconds) { task.reach(seconds / facts.menuSeconds()); }, std::move(frames));
    if (written != facts.menuFrames) {
        throw DiscError(fmt::format("{} has {} frames instead of {}.", taskOf(work), written,
                                    facts.menuFrames));
    }
}

// The composer's button maps, with the dot in them.
void MenuMaker::drawMaps(const PageWork& work, const std::string& folder) {
    fs::create_directory(folder);
    const MenuRequest request =
        requestOf(work, work.excerpts, MenuMode::overlay, folder + "/menu.png");
    expectDrawn(dvdMenuPicture(request), work);
    for (const char* name : {kWideMap, kPanScanMap}) {
        std::string map = readText(folder + name);
        const std::size_t spu = map.find(kSubpicture);
        expectDrawn(spu != std::string::npos && count(map, "<button ") == work.page->buttons.size(),
                    work);
        map.insert(spu + kSubpicture.size(), fmt::format("image=\"{}\" ", dot()));
        writeText(folder + name, map);
    }
}

// The buttons of wide displays are the first subpicture stream, those of 4:3 displays the second.
void MenuMaker::addButtons(const PageWork& work, const std::string& maps, const std::string& clip,
                           const std::string& output) {
    const std::string wide = maps + "/wide.mpg";
    const std::string task = fmt::format("{} could not be given buttons", taskOf(work));
    const auto multiplex = [&](const char* stream, const std::string& map, const std::string& from,
                               const std::string& to) {
        const std::string said = runTool({{"spumux", "-s", stream, map}, from, to, {}, {}}, task);
        if (said.find(" 1 subtitles added") == std::string::npos ||
            fs::file_size(to) <= fs::file_size(from)) {
            const std::string why = lastWords(said);
            throw DiscError(fmt::format("{}: {}.", task, why.empty() ? "spumux adds none" : why));
        }
    };
    multiplex("0", maps + kWideMap, clip, wide);
    multiplex("1", maps + kPanScanMap, wide, output);
}

std::string MenuMaker::dot() {
    return workshop_.result(Workshop::nameOf("dot", ".png", dotCommand(setting_.standard, "")),
                            [&](const std::string& path) {
                                runTool({dotCommand(setting_.standard, path), "", "", {}, {}},
                                        "The menus' overlay could not be made");
                            });
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
    if (!setting_.background.empty()) request.bkg = setting_.background;
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
