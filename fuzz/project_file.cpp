#include "disc/project/project_file.h"

#include <optional>

#include "disc/project/project_text.h"
#include "disc/run/fault.h"
#include "fuzzing.h"

// Any bytes as a project file. What can be read can be written, and then read as the same.

using namespace tkv;
using namespace tkv::disc;
using namespace tkv::fuzz;

namespace {

std::optional<Project> projectOf(const std::uint8_t* data, std::size_t size) {
    const std::string path = scratchFile("project.toml", data, size);
    Project project;
    project.labels = labelsOf("en");
    try {
        readProjectFile(path, "/", project);
    } catch (const DiscError& error) {
        require(std::string_view(error.what()).starts_with(path), "an error names its file");
        return std::nullopt;
    }
    return project;
}

std::optional<Project> readBack(const std::string& text) {
    return projectOf(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::optional<Project> read = projectOf(data, size);
    if (!read) return 0;
    const std::string text = projectFileText(*read, scratchFolder());
    // The first writing rounds times to hundredths and makes captions of names; then all is said.
    const std::optional<Project> second = readBack(text);
    require(second.has_value(), "what is written is read");
    require(projectFileText(*second, scratchFolder()) == text, "what is read is written");
    require(readBack(text) == second, "what is written is read as the same");
    require(second->films.size() == read->films.size() && second->title == read->title &&
                second->labels == read->labels,
            "the project stays");
    return 0;
}
