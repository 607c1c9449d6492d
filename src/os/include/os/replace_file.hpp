#pragma once

#include <sys/types.h>

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

// The one way this program replaces a whole file: the settings, the marker, the autostart
// entry, the metrics file and the desktop preferences all go through replaceFile.
namespace velmora {

/// How replaceFile leaves the new file.
struct ReplaceOptions {
    /// The new file's permission bits before the umask: private to the user unless another
    /// program must read it (a desktop entry, a metrics collector).
    mode_t mode = 0600;
    /// Flushes the file and its folder to the storage device before returning, so that a power
    /// cut leaves the old or the new contents. A file rewritten every second that may be lost
    /// in a power cut (the metrics file) goes without.
    bool durable = true;
};

/// Why replaceFile failed: what it was doing, to which path, and the errno.
struct ReplaceFailure {
    std::string action;
    std::filesystem::path path;
    int code = 0;

    /// "<action> <path>: <the system's text for code>".
    [[nodiscard]] std::string message() const;
};

/// Writes a fresh sibling temporary file named ".<name>.tmp-<pid>-<n>", renames it over
/// `target` and (when durable) flushes both, so that a crash, a kill or a power cut at any
/// moment leaves either the old or the new contents, never an empty or partial file, and a
/// reader never sees a half-written one. A symbolic link planted at `target` is replaced,
/// never followed. The temporary file never outlives a failure; one left by a killed process
/// is removed by removeStrayTemporariesOf.
std::optional<ReplaceFailure> replaceFile(const std::filesystem::path& target,
                                          std::string_view bytes, ReplaceOptions options = {});

/// The process that wrote `name`, when it is a temporary file name replaceFile makes.
std::optional<pid_t> temporaryFileWriter(std::string_view name);

/// Removes from `dir` the temporary files that replaceFile left for one of `fileNames` when
/// its process was killed mid-write; those of a process still running are left alone.
/// Returns how many were removed.
int removeStrayTemporariesOf(const std::filesystem::path& dir,
                             std::initializer_list<std::string_view> fileNames);

}  // namespace velmora
