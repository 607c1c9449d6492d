#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// Writes the kept history of `dataDir` as CSV to `target` ("-": standard output). Reads the
/// file without the instance lock and changes nothing in the data directory, so it works
/// beside a running watchdog and shows its points up to its last write. Nothing on success,
/// else the message for the person at the terminal.
std::optional<std::string> exportHistory(const std::filesystem::path& dataDir,
                                         const std::string& target);

}  // namespace velmora
