#include "disc/project_writer.h"

#include <fmt/format.h>

#include <filesystem>

#include "disc/film/film_list.h"
#include "disc/film/probe.h"
#include "disc/film/suggestion.h"
#include "disc/plan/report.h"
#include "disc/project/project_text.h"
#include "disc/run/text_file.h"
#include "disc/run/tools.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

Outcome writeProjectFile(const Options& options, ProgressReceiver& receiver, ProgramStop& stop) {
    return outcomeOf([&] {
        requirePrograms({"ffprobe"});
        const Tools tools("", stop);
        FilmList films(options.project, options.output, options.keepsGoing, stop);
        const auto probe = [&](const FilmSource& source) {
            return filmOf(source, [&](const FilmSource& each) {
                return probedFilm(each, probeAnswer(each, tools), tools);
            });
        };
        const auto passedOver = films.probe(stop, probe);
        if (!passedOver.empty()) receiver.say(passedOverLine(passedOver));
        for (const std::string& line : films.joinClips(probe))
            receiver.say(line);
        // All that a person may want to change of what the films say.
        Project project = films.project();
        addSuggestions(project, films.films());
        const std::string text = projectFileText(project, parentFolder(options.projectFile));
        if (fs::exists(options.projectFile)) {
            throw DiscError(fmt::format("{} is there already. Name another file with --write.",
                                        options.projectFile),
                            options.projectFile);
        }
        writeText(options.projectFile, text);
        for (const std::string& line : writtenLines(options))
            receiver.tellResult(line);
        return films.leftOut();
    });
}

}  // namespace tkv::disc
