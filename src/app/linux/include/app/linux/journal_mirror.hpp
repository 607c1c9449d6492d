#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// The journal priority of a log line: warning (4) for one naming the EMERGENCY stage and for
/// anything that failed, was denied, could not be done or reports an error; info (6) otherwise.
int journalPriority(std::string_view line);

/// When the process's output goes to the journal (JOURNAL_STREAM is set, as systemd does for a
/// service), a function that sends each log line to the journal with its priority; otherwise
/// an empty function.
std::function<void(const std::string&)> journalMirrorFromEnvironment();

}  // namespace velmora
