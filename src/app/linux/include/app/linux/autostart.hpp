#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "app/core/platform_dirs.hpp"

namespace velmora {

/// The XDG autostart entry that starts the application at login:
/// $XDG_CONFIG_HOME (else ~/.config) + "/autostart/" + the application id + ".desktop".
/// Nothing when neither base exists.
std::optional<std::filesystem::path> autostartEntryPath(const PlatformEnvironment& env);

/// True when the entry exists and is not switched off ("Hidden=true" or
/// "X-GNOME-Autostart-enabled=false", as desktop settings tools write it).
bool autostartEnabled(const std::filesystem::path& entry);

/// The entry's text for starting `executable` at login.
std::string autostartEntryText(const std::filesystem::path& executable);

/// Writes the entry (temporary file, then rename). Nothing on success, else why not.
std::optional<std::string> enableAutostart(const std::filesystem::path& entry,
                                           const std::filesystem::path& executable);

/// Removes the entry; a missing entry is success. Nothing on success, else why not.
std::optional<std::string> disableAutostart(const std::filesystem::path& entry);

/// One argument of an Exec key, quoted when it needs to be and escaped for a desktop file.
std::string desktopExecArgument(std::string_view argument);

}  // namespace velmora
