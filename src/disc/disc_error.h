#pragma once

#include <stdexcept>

namespace tkv::disc {

/// Why there will be no disc: a sentence or two that name the file or program, the cause, and what
/// to do about it. Ends the run; main writes it.
class DiscError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Thrown where a run that is asked to stop notices it.
class Interrupted {};

}  // namespace tkv::disc
