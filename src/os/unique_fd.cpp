#include "os/unique_fd.hpp"

#include <unistd.h>

#include <utility>

namespace velmora {

int UniqueFd::close() {
    const int fd = std::exchange(fd_, -1);
    if (fd < 0) return 0;
    // Linux and macOS both release the descriptor even when close reports an error, so a
    // retry could close someone else's descriptor.
    return ::close(fd);
}

}  // namespace velmora
