#include "disc/run/composer_log.h"

#include <fstream>
#include <memory>

#include "system/log.h"

namespace tkv::disc {

ComposerLog::ComposerLog(const std::string& path) {
    const auto file = std::make_shared<std::ofstream>(path);
    setLogSink([file](std::string_view text) { *file << text << std::flush; });
}

ComposerLog::~ComposerLog() {
    setLogSink({});
}

}  // namespace tkv::disc
