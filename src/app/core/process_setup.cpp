#include "app/core/process_setup.hpp"

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace velmora {

std::optional<std::string> prepareProcess() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) {
        return std::nullopt;
    }
    limit.rlim_cur = limit.rlim_max;
    if (::setrlimit(RLIMIT_NOFILE, &limit) == 0) return std::nullopt;
    return "could not raise the open-file limit to " + std::to_string(limit.rlim_max) + ": " +
           std::error_code(errno, std::generic_category()).message();
}

}  // namespace velmora
