#include "disc/page_work.h"

#include <fmt/format.h>

#include <utility>

#include "composer/thumbnail_layout.h"

namespace tkv::disc {

std::vector<PageWork> pagesOf(const DiscPlan& plan) {
    std::vector<PageWork> pages;
    const auto add = [&](const MenuPage& page, std::string name) {
        PageWork work;
        work.page = &page;
        work.name = std::move(name);
        const Size size = thumbnailLayout(page.isMain, page.excerpts.size()).scaledTo;
        work.thumbnailSize = {static_cast<int>(size.width), static_cast<int>(size.height)};
        work.scenes.resize(page.excerpts.size());
        work.excerpts.resize(page.excerpts.size());
        pages.push_back(std::move(work));
    };
    for (std::size_t i = 0; i < plan.pages.size(); ++i)
        add(plan.pages[i], fmt::format("films-{}", i + 1));
    for (std::size_t film = 0; film < plan.sets.size(); ++film) {
        const std::vector<MenuPage>& chapters = plan.sets[film].pages;
        for (std::size_t i = 0; i < chapters.size(); ++i)
            add(chapters[i], fmt::format("film-{}-chapters-{}", film + 1, i + 1));
    }
    return pages;
}

void findScenes(std::vector<PageWork>& pages, std::size_t number, const Film& film,
                Workshop& workshop) {
    for (PageWork& work : pages) {
        for (std::size_t i = 0; i < work.scenes.size(); ++i) {
            const Excerpt& excerpt = work.page->excerpts[i];
            if (excerpt.film == number)
                work.scenes[i] = findScene(film, excerpt, work.thumbnailSize, workshop);
        }
    }
}

}  // namespace tkv::disc
