#pragma once

namespace tkv {

/// Ignores SIGPIPE and SIGXFSZ: what is written to a reader that is gone, or beyond the size that a
/// file may have, is an error like others.
/// Gives SIGTERM, SIGINT and SIGHUP to `handler`, but for those that whoever started this process
/// has it ignore. `flags`: those of sigaction.
void handleEndingSignals(void (*handler)(int signal), int flags);

}  // namespace tkv
