#include "os/whole_file.hpp"

#include "os/unique_fd.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace velmora {

namespace {

constexpr std::size_t chunkSize = 4096;

// Reads until end of file; false on any read error.
bool readToEnd(int fd, std::string& out) {
    std::size_t used = 0;
    for (;;) {
        out.resize(used + chunkSize);
        const ssize_t got = ::read(fd, out.data() + used, chunkSize);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    out.resize(used);
    return true;
}

}  // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid()) return std::nullopt;
    std::string contents;
    if (!readToEnd(fd.get(), contents)) return std::nullopt;
    return contents;
}

int writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(fd, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return errno;
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return 0;
}

}  // namespace velmora
