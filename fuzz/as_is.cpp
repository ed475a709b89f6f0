#include "fuzzing.h"

// Of targets without a maker.

tkv::Bytes tkv::fuzz::fileFrom(ByteView input) {
    return {input.begin(), input.end()};
}
