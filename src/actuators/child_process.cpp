#include "actuators/child_process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>

#include "actuators/child_watch.hpp"
#include "os/unique_fd.hpp"
#include "os/utf8.hpp"

extern char** environ;  // NOLINT(readability-redundant-declaration): not declared on every OS

namespace velmora {
namespace {

struct Pipe {
    UniqueFd read;
    UniqueFd write;
};

std::string systemText(int error) {
    return std::generic_category().message(error);
}

// Both ends close on exec, so children started by other threads never hold them open.
std::optional<Pipe> makePipe(int& error) {
    std::array<int, 2> fds{-1, -1};
#if defined(__linux__)
    const int result = ::pipe2(fds.data(), O_CLOEXEC);
#else
    const int result = ::pipe(fds.data());
    if (result == 0) {
        ::fcntl(fds[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(fds[1], F_SETFD, FD_CLOEXEC);
    }
#endif
    if (result != 0) {
        error = errno;
        return std::nullopt;
    }
    return Pipe{UniqueFd(fds[0]), UniqueFd(fds[1])};
}

// Everything the ended child wrote is already in the pipe; reading without blocking also
// copes with a grandchild that still holds the write end.
std::string drain(const UniqueFd& fd) {
    ::fcntl(fd.get(), F_SETFL, ::fcntl(fd.get(), F_GETFL) | O_NONBLOCK);
    std::string bytes;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t count = ::read(fd.get(), buffer.data(), buffer.size());
        if (count > 0) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            return bytes;
        }
    }
}

int spawn(const std::string& executable, const std::vector<std::string>& arguments, const Pipe& err,
          const Pipe& out, pid_t& pid) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 2);
    argv.push_back(const_cast<char*>(executable.c_str()));  // NOLINT: posix_spawn's signature
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: posix_spawn's signature
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, err.write.get(), STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.write.get(), STDOUT_FILENO);
    const int result =
        ::posix_spawn(&pid, executable.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return result;
}

}  // namespace

ChildResult runChild(const std::string& executable, const std::vector<std::string>& arguments,
                     std::chrono::duration<double> timeout) {
    int error = 0;
    std::optional<Pipe> err = makePipe(error);
    std::optional<Pipe> out = err ? makePipe(error) : std::nullopt;
    if (!err || !out) return ChildNotStarted{systemText(error)};
    pid_t pid = 0;
    error = spawn(executable, arguments, *err, *out, pid);
    err->write.reset();
    out->write.reset();
    if (error != 0) return ChildNotStarted{systemText(error)};

    const std::optional<int> status = waitForChild(pid, timeout);
    if (!status) return ChildTimedOut{};
    std::string standardError = drain(err->read);
    static_cast<void>(drain(out->read));
    return ChildExit{*status, utf8OrEmpty(std::move(standardError))};
}

}  // namespace velmora
