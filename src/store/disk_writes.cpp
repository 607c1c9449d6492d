#include "store/disk_writes.hpp"

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>

namespace velmora {

namespace {

constexpr int maxNameAttempts = 100;

std::filesystem::path temporarySibling(const std::filesystem::path& target) {
    static std::atomic<unsigned> counter{0};
    // Appended piece by piece: GCC 12 gives a false -Wrestrict for `"." + std::string` at -O3.
    std::string name(1, '.');
    name += target.filename().string();
    name += ".tmp-";
    name += std::to_string(::getpid());
    name += '-';
    name += std::to_string(counter.fetch_add(1));
    return target.parent_path() / name;
}

// A fresh temporary file beside `target`, or the error of the last attempt.
StoreResult<std::filesystem::path> createTemporary(const std::filesystem::path& target,
                                                   UniqueFd& fd) {
    int err = EEXIST;
    for (int attempt = 0; attempt < maxNameAttempts && err == EEXIST; ++attempt) {
        auto path = temporarySibling(target);
        fd = UniqueFd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (fd.valid()) return path;
        err = errno;
    }
    const auto dir = target.parent_path().empty() ? "." : target.parent_path();
    return StoreError::fromErrno("could not create a temporary file in", dir, err);
}

WriteError writeAndRename(UniqueFd& fd, const std::filesystem::path& temporary,
                          const std::filesystem::path& target, std::string_view bytes) {
    if (const int err = writeAll(fd.get(), bytes)) {
        return StoreError::fromErrno("could not write", target, err);
    }
    if (fd.close() != 0) return StoreError::fromErrno("could not write", target, errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        return StoreError::fromErrno("could not replace", target, errno);
    }
    return std::nullopt;
}

// Makes a new directory entry survive a power cut; best effort.
void syncDirectoryOf(const std::filesystem::path& target) {
    const auto dir = target.parent_path().empty() ? "." : target.parent_path();
    const UniqueFd fd(::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.valid()) static_cast<void>(::fsync(fd.get()));
}

}  // namespace

WriteError createDirectories(const std::filesystem::path& dir) {
    if (dir.empty()) return std::nullopt;
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec) return StoreError::fromErrno("could not create folder", dir, ec.value());
    return std::nullopt;
}

WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes) {
    UniqueFd fd;
    const auto temporary = createTemporary(target, fd);
    if (!temporary) return temporary.error();
    auto error = writeAndRename(fd, *temporary, target, bytes);
    if (error) static_cast<void>(::unlink(temporary->c_str()));
    return error;
}

WriteError writeDurably(const std::filesystem::path& target, std::string_view bytes) {
    // The descriptor is closed on every path; a failing close is not reported because the
    // data already reached the device with fsync.
    const UniqueFd fd(::open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    if (!fd.valid()) return StoreError::fromErrno("could not open", target, errno);
    if (::ftruncate(fd.get(), 0) != 0) {
        return StoreError::fromErrno("could not truncate", target, errno);
    }
    if (const int err = writeAll(fd.get(), bytes)) {
        return StoreError::fromErrno("could not write", target, err);
    }
    if (::fsync(fd.get()) != 0) return StoreError::fromErrno("could not flush", target, errno);
    syncDirectoryOf(target);
    return std::nullopt;
}

}  // namespace velmora
