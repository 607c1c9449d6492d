#include "store/disk_writes.hpp"

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <string>
#include <system_error>

namespace velmora {

namespace {

constexpr int maxNameAttempts = 100;
constexpr std::string_view temporaryMark = ".tmp-";

std::filesystem::path directoryOf(const std::filesystem::path& target) {
    return target.parent_path().empty() ? std::filesystem::path(".") : target.parent_path();
}

std::filesystem::path temporarySibling(const std::filesystem::path& target) {
    static std::atomic<unsigned> counter{0};
    // Appended piece by piece: GCC 12 gives a false -Wrestrict for `"." + std::string` at -O3.
    std::string name(1, '.');
    name += target.filename().string();
    name += temporaryMark;
    name += std::to_string(::getpid());
    name += '-';
    name += std::to_string(counter.fetch_add(1));
    return target.parent_path() / name;
}

// A fresh private temporary file beside `target`, or the error of the last attempt.
StoreResult<std::filesystem::path> createTemporary(const std::filesystem::path& target,
                                                   UniqueFd& fd) {
    int err = EEXIST;
    for (int attempt = 0; attempt < maxNameAttempts && err == EEXIST; ++attempt) {
        auto path = temporarySibling(target);
        fd = UniqueFd(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (fd.valid()) return path;
        err = errno;
    }
    return StoreError::fromErrno("could not create a temporary file in", directoryOf(target), err);
}

// Makes a renamed directory entry survive a power cut.
WriteError syncDirectoryOf(const std::filesystem::path& target) {
    const auto dir = directoryOf(target);
    const UniqueFd fd(::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.valid()) return StoreError::fromErrno("could not open", dir, errno);
    if (::fsync(fd.get()) != 0) return StoreError::fromErrno("could not flush", dir, errno);
    return std::nullopt;
}

WriteError writeFlushAndRename(UniqueFd& fd, const std::filesystem::path& temporary,
                               const std::filesystem::path& target, std::string_view bytes) {
    if (const int err = writeAll(fd.get(), bytes)) {
        return StoreError::fromErrno("could not write", target, err);
    }
    if (::fsync(fd.get()) != 0) return StoreError::fromErrno("could not flush", target, errno);
    if (fd.close() != 0) return StoreError::fromErrno("could not write", target, errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        return StoreError::fromErrno("could not replace", target, errno);
    }
    return std::nullopt;
}

// The process id in ".<name>.tmp-<pid>-<n>", when the name has that form.
std::optional<pid_t> writerOf(std::string_view name) {
    if (!name.starts_with('.')) return std::nullopt;
    const auto mark = name.rfind(temporaryMark);
    if (mark == std::string_view::npos || mark < 2) return std::nullopt;
    const auto digits = name.substr(mark + temporaryMark.size());
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    if (error != std::errc{} || end == digits.data() || *end != '-' || pid <= 0) {
        return std::nullopt;
    }
    return pid;
}

bool isStoreFile(std::string_view name) {
    return name.starts_with(".settings.json.tmp-") ||
           name.starts_with(".auto-shutdown.marker.tmp-");
}

bool processIsGone(pid_t pid) {
    return pid != ::getpid() && ::kill(pid, 0) != 0 && errno == ESRCH;
}

}  // namespace

WriteError createDirectories(const std::filesystem::path& dir) {
    if (dir.empty()) return std::nullopt;
    std::error_code ec;
    if (std::filesystem::is_directory(dir, ec)) return std::nullopt;
    if (dir.has_parent_path() && dir.parent_path() != dir) {
        std::filesystem::create_directories(dir.parent_path(), ec);
        if (ec) return StoreError::fromErrno("could not create folder", dir, ec.value());
    }
    if (::mkdir(dir.c_str(), 0700) != 0 &&
        !(errno == EEXIST && std::filesystem::is_directory(dir, ec))) {
        return StoreError::fromErrno("could not create folder", dir, errno);
    }
    return std::nullopt;
}

WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes) {
    UniqueFd fd;
    const auto temporary = createTemporary(target, fd);
    if (!temporary) return temporary.error();
    if (auto error = writeFlushAndRename(fd, *temporary, target, bytes)) {
        static_cast<void>(::unlink(temporary->c_str()));
        return error;
    }
    return syncDirectoryOf(target);
}

int removeStrayTemporaries(const std::filesystem::path& dir) {
    std::error_code ec;
    std::filesystem::directory_iterator listing(dir, ec);
    int removed = 0;
    for (; !ec && listing != std::filesystem::directory_iterator(); listing.increment(ec)) {
        const auto name = listing->path().filename().string();
        if (!isStoreFile(name)) continue;
        const auto pid = writerOf(name);
        if (!pid || !processIsGone(*pid)) continue;
        if (::unlink(listing->path().c_str()) == 0) ++removed;
    }
    return removed;
}

}  // namespace velmora
