#pragma once

#include <optional>
#include <string>

namespace velmora {

/// Makes the process hard to stop by accident: a reader of its output that goes away
/// (SIGPIPE) or a file-size limit on the log (SIGXFSZ) no longer kills it, since the failing
/// write returns an error instead; and the soft limit on open descriptors is raised to the
/// hard one, so that many sensors never run the watchdog out of descriptors. Returns a note
/// for the user when the limit could not be raised.
std::optional<std::string> prepareProcess();

}  // namespace velmora
