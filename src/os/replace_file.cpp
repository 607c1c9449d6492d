#include "os/replace_file.hpp"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"

namespace velmora {

namespace {

constexpr int maxNameAttempts = 100;
constexpr std::string_view temporaryMark = ".tmp-";

using Failure = std::optional<ReplaceFailure>;

Failure failure(std::string_view action, const std::filesystem::path& path, int code) {
    return ReplaceFailure{std::string(action), path, code};
}

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

// A fresh temporary file beside `target`, or the failure of the last attempt.
Failure createTemporary(const std::filesystem::path& target, mode_t mode, UniqueFd& fd,
                        std::filesystem::path& path) {
    int err = EEXIST;
    for (int attempt = 0; attempt < maxNameAttempts && err == EEXIST; ++attempt) {
        path = temporarySibling(target);
        fd = UniqueFd(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
        if (fd.valid()) return std::nullopt;
        err = errno;
    }
    return failure("could not create a temporary file in", directoryOf(target), err);
}

// Makes a renamed directory entry survive a power cut.
Failure syncDirectoryOf(const std::filesystem::path& target) {
    const auto dir = directoryOf(target);
    const UniqueFd fd(::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.valid()) return failure("could not open", dir, errno);
    if (::fsync(fd.get()) != 0) return failure("could not flush", dir, errno);
    return std::nullopt;
}

Failure writeFlushAndRename(UniqueFd& fd, const std::filesystem::path& temporary,
                            const std::filesystem::path& target, std::string_view bytes,
                            bool durable) {
    if (const int err = writeAll(fd.get(), bytes)) return failure("could not write", target, err);
    if (durable && ::fsync(fd.get()) != 0) return failure("could not flush", target, errno);
    if (fd.close() != 0) return failure("could not write", target, errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        return failure("could not replace", target, errno);
    }
    return std::nullopt;
}

bool processIsGone(pid_t pid) {
    return pid != ::getpid() && ::kill(pid, 0) != 0 && errno == ESRCH;
}

bool isTemporaryOfOne(std::string_view name, std::initializer_list<std::string_view> fileNames) {
    for (const auto file : fileNames) {
        if (name.size() > file.size() + 1 && name.front() == '.' &&
            name.substr(1, file.size()) == file &&
            name.substr(1 + file.size()).starts_with(temporaryMark)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string ReplaceFailure::message() const {
    std::string text(action);
    text += ' ';
    text += path.string();
    text += ": ";
    text += std::generic_category().message(code);
    return text;
}

std::optional<ReplaceFailure> replaceFile(const std::filesystem::path& target,
                                          std::string_view bytes, ReplaceOptions options) {
    UniqueFd fd;
    std::filesystem::path temporary;
    if (auto failed = createTemporary(target, options.mode, fd, temporary)) return failed;
    if (auto failed = writeFlushAndRename(fd, temporary, target, bytes, options.durable)) {
        static_cast<void>(::unlink(temporary.c_str()));
        return failed;
    }
    return options.durable ? syncDirectoryOf(target) : std::nullopt;
}

std::optional<pid_t> temporaryFileWriter(std::string_view name) {
    if (!name.starts_with('.')) return std::nullopt;
    const auto mark = name.rfind(temporaryMark);
    if (mark == std::string_view::npos || mark < 2) return std::nullopt;
    const auto digits = name.substr(mark + temporaryMark.size());
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    if (error != std::errc{} || end == digits.data() || end == digits.data() + digits.size() ||
        *end != '-' || pid <= 0) {
        return std::nullopt;
    }
    return pid;
}

int removeStrayTemporariesOf(const std::filesystem::path& dir,
                             std::initializer_list<std::string_view> fileNames) {
    std::error_code ec;
    std::filesystem::directory_iterator listing(dir.empty() ? std::filesystem::path(".") : dir, ec);
    int removed = 0;
    for (; !ec && listing != std::filesystem::directory_iterator(); listing.increment(ec)) {
        const auto name = listing->path().filename().string();
        if (!isTemporaryOfOne(name, fileNames)) continue;
        const auto pid = temporaryFileWriter(name);
        if (!pid || !processIsGone(*pid)) continue;
        if (::unlink(listing->path().c_str()) == 0) ++removed;
    }
    return removed;
}

}  // namespace velmora
