#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "os/unique_fd.hpp"

namespace velmora {

/// One watchdog per data directory: an advisory lock on a file in it, held for the life of the
/// process and released by the kernel however the process ends. The file holds the holder's
/// process id so that a second instance can name it.
class InstanceLock {
  public:
    /// Another process holds the lock.
    struct Held {
        std::optional<pid_t> holder;  // absent when the file does not say
    };
    /// No lock could be taken (a directory that cannot be written); the caller runs unguarded.
    struct Unavailable {
        std::string reason;
    };
    using Outcome = std::variant<InstanceLock, Held, Unavailable>;

    /// Takes the lock of `dataDir` without waiting. A second instance touches nothing but the
    /// lock file's descriptor.
    static Outcome acquire(const std::filesystem::path& dataDir);

    static constexpr const char* fileName = "instance.lock";

  private:
    explicit InstanceLock(UniqueFd fd) : fd_(std::move(fd)) {}
    UniqueFd fd_;
};

/// False, after saying so on stderr, when another watchdog already guards `dataDir`; a lock that
/// could not be taken is reported and the run goes on unguarded.
bool instanceMayRun(const InstanceLock::Outcome& lock, const std::filesystem::path& dataDir);

}  // namespace velmora
