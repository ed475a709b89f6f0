#include "utils/version_probe.h"

#include "platform/description.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/verbose.h"
#include "utils/existence.h"
#include "utils/numbers.h"
#include "utils/tool_runner.h"

namespace tkv {

float versionSpumux(bool requireSpumux, const std::string& resources) {
    if (resources.empty()) return 0.0F;
    const std::string tools = joinPath(resources, "tools");
    const std::string spumux = joinPath(tools, "spumux");
    if (!fileExists(requireSpumux ? spumux : joinPath(tools, "dvdauthor"))) return 0.0F;
    const auto output = taskArrayPipes({spumux, "-h"});
    if (isVerbose()) logLine("versionSpumux       : {}", describe(output));
    if (!output) return 0.0F;
    float version = 0.0F;
    for (const std::string& line : linesOfText(output)) {
        const std::size_t start = line.find("version ");
        if (start == std::string::npos) continue;
        // With the word before it the major number reads as 0, which is the scale of the answer.
        version = floatFromString(line.substr(start));
        if (version > 0.0F) break;
    }
    if (isVerbose()) logLine("versionSpumuxDvdauth: {:f}", version);
    return version;
}

}  // namespace tkv
