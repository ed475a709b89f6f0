#include "system/verbose.h"

#include <cstdint>

namespace tkv {

namespace {
std::int8_t verboseFlag = 0;
}

int isVerbose() {
    return verboseFlag;
}

void setVerbose(int value) {
    verboseFlag = static_cast<std::int8_t>(value);
}

}  // namespace tkv
