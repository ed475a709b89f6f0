#pragma once

namespace tkv {

/// Ignores SIGPIPE: what is written to a reader that is gone is an error like others.
/// Gives SIGTERM, SIGINT and SIGHUP to `handler`, but for those that whoever started this process
/// has it ignore. `flags`: those of sigaction.
void handleEndingSignals(void (*handler)(int signal), int flags);

}  // namespace tkv
