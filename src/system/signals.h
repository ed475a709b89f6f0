#pragma once

namespace tkv {

/// Ignores SIGPIPE and SIGXFSZ: writing to a broken pipe, or beyond the file size limit, is an
/// error like others.
/// Installs `handler` for SIGTERM, SIGINT and SIGHUP, except for those that the process has
/// inherited as ignored. `flags`: those of sigaction.
void handleEndingSignals(void (*handler)(int signal), int flags);

/// Installs `handler` for a signal, unless the process has inherited it as ignored.
void handleSignal(int signal, void (*handler)(int signal), int flags);

}  // namespace tkv
