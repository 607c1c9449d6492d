#include "read_only_dir.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#if defined(__linux__)
#include <linux/fs.h>
#endif

#include <cerrno>

namespace velmora::testing {

namespace {

// errno of a refused probe file, or 0 when the file could be created (and was removed).
int probeRefusal(const std::filesystem::path& dir) {
    const auto probe = dir / ".write-probe";
    const int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd < 0) return errno;
    ::close(fd);
    ::unlink(probe.c_str());
    return 0;
}

#if defined(__linux__)
bool setImmutable(const std::filesystem::path& dir, bool on) {
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0) return false;
    int flags = 0;
    bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (done) {
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    ::close(fd);
    return done;
}
#else
bool setImmutable(const std::filesystem::path&, bool) {
    return false;
}
#endif

}  // namespace

ReadOnlyDir::ReadOnlyDir(std::filesystem::path dir) : dir_(std::move(dir)) {
    std::filesystem::permissions(
        dir_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec |
                  std::filesystem::perms::group_read | std::filesystem::perms::group_exec);
    refusal_ = probeRefusal(dir_);
    if (refusal_ != 0) return;
    immutable_ = setImmutable(dir_, true);
    if (immutable_) refusal_ = probeRefusal(dir_);
}

ReadOnlyDir::~ReadOnlyDir() {
    if (immutable_) setImmutable(dir_, false);
    std::error_code ignored;
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
}

}  // namespace velmora::testing
