#include "os/safe_read.hpp"

#include "os/unique_fd.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velmora {

namespace {

std::string kindOfFile(mode_t mode) {
    if (S_ISDIR(mode)) return "is a directory";
    if (S_ISFIFO(mode)) return "is a FIFO";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "is a device";
    if (S_ISSOCK(mode)) return "is a socket";
    return "is not a regular file";
}

CappedRead refused(std::string problem) {
    return CappedRead{CappedRead::Kind::refused, {}, std::move(problem)};
}

CappedRead unreadable(int err) {
    return CappedRead{CappedRead::Kind::unreadable,
                      {},
                      "could not be read: " + std::generic_category().message(err)};
}

std::string tooLarge(std::size_t cap) {
    return "is larger than " + std::to_string(cap) + " bytes";
}

// Reads up to cap + 1 bytes: one more than allowed is enough to know the file is too large.
CappedRead readUpTo(int fd, std::size_t cap) {
    std::string text(cap + 1, '\0');
    std::size_t used = 0;
    while (used < text.size()) {
        const ssize_t got = ::read(fd, text.data() + used, text.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return unreadable(errno);
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    if (used > cap) return refused(tooLarge(cap));
    text.resize(used);
    return CappedRead{CappedRead::Kind::ok, std::move(text), {}};
}

}  // namespace

CappedRead readCappedRegularFile(const std::filesystem::path& path, std::size_t cap) {
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!fd.valid()) {
        const int err = errno;
        if (err == ENOENT) return CappedRead{};
        struct stat link {};
        if (err == ELOOP && ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
            return refused("is a symbolic link");
        }
        // A FIFO or device that refuses a non-blocking open ends here too.
        if (::lstat(path.c_str(), &link) == 0 && !S_ISREG(link.st_mode)) {
            return refused(kindOfFile(link.st_mode));
        }
        return unreadable(err);
    }
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) return unreadable(errno);
    if (!S_ISREG(info.st_mode)) return refused(kindOfFile(info.st_mode));
    if (info.st_size < 0 || static_cast<std::size_t>(info.st_size) > cap) {
        return refused(tooLarge(cap));
    }
    return readUpTo(fd.get(), cap);
}

}  // namespace velmora
