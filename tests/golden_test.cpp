#include <ctime>

#include "composer/background.h"
#include "composer/jacket.h"
#include "composer/page_composer.h"
#include "composer/page_renderer.h"
#include "support.h"

// Finished pages of the example media, beside those that somebody has looked at.

namespace tkv::test::golden {

Strings media(const Strings& names) {
    Strings paths;
    for (const std::string& name : names)
        paths.push_back(checkoutPath("examples/media/" + name));
    return paths;
}

struct Golden : testing::Test {
    Golden() {
        request.bkg = media({"background.jpg"})[0];
        request.title = "Un été au bord de l'eau";
        request.dvdBt_readAll = "Tout lire";
        request.output = folder.file("page.png");
    }
    void expectPage(const std::string& name) const {
        PageComposer composer(request, prepareBackground(request));
        expectGolden(PageRenderer().render(composer.composePass(0)->page).value(), name);
    }

    TempFolder folder;
    MenuRequest request;
};

TEST_F(Golden, GridOfNine) {
    request.thumbs = media({"sailing", "harbour.jpg", "lighthouse", "forest.jpg", "wheel",
                            "city.jpg", "train", "desert.jpg", "snow.jpg"});
    request.captions = {"la traversée",     "le port",        "le phare",
                        "la forêt",         "la grande roue", "la ville",
                        "le train de nuit", "le désert",      "la neige"};
    request.dvdBt_menuPrev = "Retour";
    request.dvdBt_menuMain = "Menu principal";
    request.dvdBt_menuNext = "Suite";
    expectPage("grid.png");
}

TEST_F(Golden, BigThumbnails) {
    request.isMainMenu = true;
    const Strings thumbs = media({"city.jpg", "wheel", "snow.jpg", "lighthouse"});
    for (const std::size_t count : {2U, 3U, 4U}) {
        request.thumbs = Strings(thumbs.begin(), thumbs.begin() + static_cast<int>(count));
        request.captions = {"la ville", "la grande roue", "la neige", "le phare"};
        expectPage(fmt::format("big-{}.png", count));
    }
}

TEST_F(Golden, OneBigThumbnailOverItsZoomedSelf) {
    request.isMainMenu = true;
    request.thumbs = media({"harbour.jpg"});
    request.captions = {"le port"};
    request.bkg = request.thumbs->front();
    expectPage("zoomed.png");
}

TEST_F(Golden, Jacket) {
    const ScopedVariable language("LC_ALL", "fr_FR.UTF-8");
    request.mode = MenuMode::jacket;
    request.bkg = media({"cover.jpg"})[0];
    request.icon = media({"icon.jpg"})[0];
    request.dvdBt_readAll = "Film de famille, 52 minutes";
    constexpr std::time_t kMidsummer = 1782043200;  // 21 June 2026, noon UTC.
    const Page page = composeJacket(request, prepareBackground(request), kMidsummer);
    expectGolden(PageRenderer().render(page).value(), "jacket.png");
}

}  // namespace tkv::test::golden
