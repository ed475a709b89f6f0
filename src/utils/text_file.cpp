#include "utils/text_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <string_view>

#include "platform/descriptor.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/unicode.h"
#include "platform/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

bool writeAll(const Descriptor& file, std::string_view bytes) {
    return bytes.size() == transferAll(bytes.size(), [&](std::size_t done) {
               return write(file.number(), bytes.data() + done, bytes.size() - done);
           });
}

}  // namespace

bool ecritureFichier(const std::optional<std::string>& path, const std::optional<std::string>& text,
                     bool withBOM) {
    if (!path || path->empty() || !text || text->empty()) return false;
    const std::string target = expandTilde(*path);
    if (!fileExists(target)) {
        if (isVerbose()) logLine("a creer…");
        // A file that may not be read is not there for `fileExists`, but cannot be opened here.
        if (Descriptor(open(target.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)).number() < 0) {
            writeStandardError("Impossible to create destination file !\n");
            return false;
        }
        if (withBOM) fixBOM(target);
    }
    Descriptor file(open(target.c_str(), O_RDWR | O_CLOEXEC));
    // There is no end to go to in a FIFO.
    if (file.number() < 0 || lseek(file.number(), 0, SEEK_END) < 0) return false;
    const bool written = writeAll(file, validUtf8(*text));
    if (!file.close() || !written) return false;
    if (isVerbose()) logLine("ecrit               :-) {}", target);
    return true;
}

bool fixBOM(const std::optional<std::string>& path) {
    if (!path) return false;
    // Without O_NONBLOCK the opening of a FIFO would wait for somebody to read from it.
    const Descriptor file(open(path->c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.number() >= 0) writeAll(file, "\xEF\xBB\xBF");
    if (isVerbose()) logLine("Fixed BOM           :-) {}", *path);
    return true;
}

}  // namespace tkv
