#include "utils/text_file.h"

#include "system/files.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/unfinished_file.h"
#include "system/unicode.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

bool ecritureFichier(const std::optional<std::string>& path, const std::optional<std::string>& text,
                     bool withBOM) {
    if (!path || path->empty() || !text || text->empty()) return false;
    const std::optional<std::string> target = expandTilde(*path);
    // No allocation once the file exists: a failed one would leave it empty.
    const std::string bytes = validUtf8(*text);
    std::optional<UnfinishedFile> unfinished;
    if (!fileExists(*target)) {
        verboseLine("a creer…");
        const SignalsHeld held;
        // An unreadable file does not exist for `fileExists`, but cannot be opened here.
        if (!createFile(*target)) {
            writeStandardError("Impossible to create destination file !\n");
            return false;
        }
        unfinished.emplace(*target);
        if (withBOM) fixBOM(target);
    }
    if (!appendToFile(*target, bytes)) return false;
    verboseLine("ecrit               :-) {}", *target);
    return true;
}

bool fixBOM(const std::optional<std::string>& path) {
    if (!path) return false;
    overwriteStart(*path, "\xEF\xBB\xBF");
    verboseLine("Fixed BOM           :-) {}", *path);
    return true;
}

}  // namespace tkv
