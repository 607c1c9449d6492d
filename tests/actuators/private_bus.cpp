#include "actuators/private_bus.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <system_error>
#include <vector>

extern char** environ;

namespace velmora::testing {
namespace {

// Reads the first line the daemon prints: its address, once it is listening.
std::string readLine(int fd) {
    std::string line;
    pollfd waiting{fd, POLLIN, 0};
    while (line.find('\n') == std::string::npos && ::poll(&waiting, 1, 10000) > 0) {
        std::array<char, 256> buffer{};
        const ssize_t count = ::read(fd, buffer.data(), buffer.size());
        if (count <= 0) break;
        line.append(buffer.data(), static_cast<std::size_t>(count));
    }
    const auto end = line.find('\n');
    return end == std::string::npos ? std::string() : line.substr(0, end);
}

}  // namespace

PrivateBus::PrivateBus() {
    std::array<int, 2> out{-1, -1};
    if (::pipe2(out.data(), O_CLOEXEC) != 0) {
        problem_ = "pipe failed";
        return;
    }
    std::vector<std::string> args{VELMORA_DBUS_DAEMON, "--config-file=" VELMORA_PRIVATE_BUS_CONF,
                                  "--nofork", "--print-address"};
    std::vector<char*> argv;
    argv.reserve(args.size() + 1);
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    // Its complaints about resource limits it may not raise here are noise.
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const int error = ::posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (error != 0) {
        pid_ = -1;
        problem_ =
            "could not start " VELMORA_DBUS_DAEMON ": " + std::generic_category().message(error);
    } else {
        address_ = readLine(out[0]);
        if (address_.empty()) problem_ = "dbus-daemon printed no address";
    }
    ::close(out[0]);
}

PrivateBus::~PrivateBus() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
}

}  // namespace velmora::testing
