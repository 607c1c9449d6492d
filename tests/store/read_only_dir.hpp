#pragma once

#include <filesystem>

namespace velmora::testing {

/// Makes a directory refuse new entries for this process, by the strongest means available,
/// and undoes it when destroyed.
///
/// Permission bits (0555) are enough for an ordinary user, but the tests also run as root,
/// whom permission bits never stop. For root the directory is additionally given the file
/// system's immutable flag (what `chattr +i` sets), which does stop root; that needs
/// CAP_LINUX_IMMUTABLE and a file system that supports the flag (ext4, xfs, btrfs; not tmpfs
/// or overlayfs). Where neither works, `holds()` is false and the caller skips: no machine
/// setting is changed to force it. The failures of a path under a regular file and of a
/// directory standing where the file should be are real on every machine and are tested
/// separately.
class ReadOnlyDir {
  public:
    explicit ReadOnlyDir(std::filesystem::path dir);
    ~ReadOnlyDir();
    ReadOnlyDir(const ReadOnlyDir&) = delete;
    ReadOnlyDir& operator=(const ReadOnlyDir&) = delete;

    /// True when creating a file in the directory really fails.
    [[nodiscard]] bool holds() const { return refusal_ != 0; }
    /// The errno with which a probe file was refused (EACCES or EPERM), 0 when not refused.
    [[nodiscard]] int refusal() const { return refusal_; }

  private:
    std::filesystem::path dir_;
    bool immutable_ = false;
    int refusal_ = 0;
};

}  // namespace velmora::testing
