#pragma once

namespace tkv {

/// The process-wide verbose flag, zero until the front end sets it: while it is not zero, routines
/// write their diagnostic lines.
int isVerbose();

/// Keeps the low byte of `value`, as a signed number.
void setVerbose(int value);

/// Whether the most detailed diagnostics of a level (1 or 2) are enabled: they are not, at either
/// level.
constexpr bool debugAlertsEnabled(int /*level*/) {
    return false;
}

}  // namespace tkv
