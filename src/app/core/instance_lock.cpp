#include "app/core/instance_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string>
#include <system_error>

#include "os/whole_file.hpp"

namespace velmora {

namespace {

std::string systemText(int err) {
    return std::error_code(err, std::generic_category()).message();
}

std::optional<pid_t> holderOf(int fd) {
    std::array<char, 32> text{};
    const ssize_t got = ::pread(fd, text.data(), text.size() - 1, 0);
    if (got <= 0) return std::nullopt;
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + got, pid);
    if (error != std::errc{} || pid <= 0) return std::nullopt;
    return pid;
}

// The holder's id replaces whatever an earlier holder wrote; the lock is held, so no one else
// writes meanwhile.
void recordHolder(int fd) {
    const std::string text = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd, 0) == 0) static_cast<void>(::pwrite(fd, text.data(), text.size(), 0));
}

}  // namespace

InstanceLock::Outcome InstanceLock::acquire(const std::filesystem::path& dataDir) {
    std::error_code ignored;
    std::filesystem::create_directories(dataDir, ignored);
    const auto path = dataDir / fileName;
    // No O_TRUNC: a second instance must leave the holder's id in place.
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!fd.valid()) fd = UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!fd.valid()) {
        return Unavailable{"could not open " + path.string() + ": " + systemText(errno)};
    }
    while (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno == EWOULDBLOCK) return Held{holderOf(fd.get())};
        return Unavailable{"could not lock " + path.string() + ": " + systemText(errno)};
    }
    recordHolder(fd.get());
    return InstanceLock(std::move(fd));
}

/// False when another watchdog already guards this data directory.
bool instanceMayRun(const InstanceLock::Outcome& lock, const std::filesystem::path& dataDir) {
    if (const auto* held = std::get_if<InstanceLock::Held>(&lock)) {
        const std::string pid = held->holder ? std::to_string(*held->holder) : "unknown";
        std::fprintf(stderr,
                     "velmora-heat-monitor: already running (pid %s) with the data directory "
                     "%s\n",
                     pid.c_str(), dataDir.c_str());
        return false;
    }
    if (const auto* unavailable = std::get_if<InstanceLock::Unavailable>(&lock)) {
        std::fprintf(stderr,
                     "velmora-heat-monitor: %s; a second watchdog on this data directory would "
                     "go unnoticed\n",
                     unavailable->reason.c_str());
    }
    return true;
}

}  // namespace velmora
