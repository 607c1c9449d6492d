#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "os/safe_read.hpp"
#include "store/history_file.hpp"

namespace velmora {

namespace {

std::string errorText(int err) {
    return std::generic_category().message(err);
}

int writeAt(int fd, const std::byte* data, std::size_t size, std::uint64_t offset) {
    while (size > 0) {
        const ssize_t put = ::pwrite(fd, data, size, static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return errno;
        if (put == 0) return EIO;
        data += put;  // NOLINT(*-pointer-arithmetic)
        size -= static_cast<std::size_t>(put);
        offset += static_cast<std::uint64_t>(put);
    }
    return 0;
}

void syncDirectory(const std::filesystem::path& dir) {
    const UniqueFd fd(::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.valid()) static_cast<void>(::fsync(fd.get()));
}

/// A new, empty history file: header written and flushed, every slot zero.
std::optional<UniqueFd> createFresh(const std::filesystem::path& path, std::uint64_t machine,
                                    std::string& problem) {
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!fd.valid()) {
        problem = "could not create " + path.string() + ": " + errorText(errno);
        return std::nullopt;
    }
    const auto size = static_cast<off_t>(history_file::fileBytes());
    const auto head = history_file::header(machine);
    int err = ::ftruncate(fd.get(), size) == 0 ? 0 : errno;
#if !defined(__APPLE__)
    // Reserving the blocks now means a full disk later cannot fail a write of a slot.
    if (err == 0) static_cast<void>(::posix_fallocate(fd.get(), 0, size));
#endif
    if (err == 0) err = writeAt(fd.get(), head.data(), head.size(), 0);
    if (err == 0 && ::fsync(fd.get()) != 0) err = errno;
    if (err != 0) {
        problem = "could not create " + path.string() + ": " + errorText(err);
        static_cast<void>(::unlink(path.c_str()));
        return std::nullopt;
    }
    syncDirectory(path.parent_path());
    return fd;
}

/// Opens a file that was just read and found good, for writing; refuses anything that is not
/// that same regular file of the right size.
std::optional<UniqueFd> openExisting(const std::filesystem::path& path, std::string& problem) {
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!fd.valid() || ::fstat(fd.get(), &info) != 0) {
        problem = "could not be opened for writing: " + errorText(errno);
        return std::nullopt;
    }
    if (!S_ISREG(info.st_mode) ||
        static_cast<std::size_t>(info.st_size) != history_file::fileBytes()) {
        problem = "changed while it was read";
        return std::nullopt;
    }
    if ((info.st_mode & 0777U) != 0600U) static_cast<void>(::fchmod(fd.get(), 0600));
    return fd;
}

int flushData(int fd) {
#if defined(__APPLE__)
    return ::fsync(fd);
#else
    return ::fdatasync(fd);
#endif
}

std::uint64_t fnv1a(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3ULL;
    }
    return hash;
}

}  // namespace

HistoryFile::HistoryFile(std::filesystem::path path, UniqueFd fd)
    : path_(std::move(path)), fd_(std::move(fd)) {}

HistoryFile::Opened HistoryFile::open(const std::filesystem::path& dir, std::uint64_t machine) {
    Opened out;
    const auto path = dir / history_file::fileName;
    const auto read = readCappedRegularFile(path, history_file::fileBytes());
    std::string problem;
    if (read.kind == CappedRead::Kind::ok) {
        auto decoded = history_file::decode(read.text, machine);
        problem = std::move(decoded.problem);
        if (problem.empty()) {
            if (auto fd = openExisting(path, problem)) {
                out.file.reset(new HistoryFile(path, std::move(*fd)));
                out.store = std::move(decoded.store);
                return out;
            }
        }
    } else if (read.kind != CappedRead::Kind::missing) {
        problem = read.problem;
    }
    if (!problem.empty()) {
        const auto aside = dir / history_file::setAsideName;
        if (::rename(path.c_str(), aside.c_str()) != 0) {
            out.notes.push_back("history: " + path.string() + " " + problem +
                                " and could not be set aside: " + errorText(errno) +
                                "; keeping history in memory only");
            out.store = std::make_unique<HistoryStore>();
            return out;
        }
        out.notes.push_back("history: " + path.string() + " " + problem + "; set aside as " +
                            aside.string() + ", starting a new history");
    }
    out.store = std::make_unique<HistoryStore>();
    std::string createProblem;
    if (auto fd = createFresh(path, machine, createProblem)) {
        out.file.reset(new HistoryFile(path, std::move(*fd)));
    } else {
        out.notes.push_back("history: " + createProblem + "; keeping history in memory only");
    }
    return out;
}

WriteError HistoryFile::write(const std::vector<history_file::Record>& records, bool sync) {
    for (const auto& record : records) {
        if (const int err =
                writeAt(fd_.get(), record.bytes.data(), record.bytes.size(), record.offset)) {
            return StoreError::fromErrno("could not write", path_, err);
        }
    }
    if (sync && flushData(fd_.get()) != 0) {
        return StoreError::fromErrno("could not flush", path_, errno);
    }
    return std::nullopt;
}

HistoryReading readHistory(const std::filesystem::path& dir) {
    const auto path = dir / history_file::fileName;
    const auto read = readCappedRegularFile(path, history_file::fileBytes());
    if (read.kind == CappedRead::Kind::missing) return {std::make_unique<HistoryStore>(), {}};
    if (read.kind != CappedRead::Kind::ok) return {nullptr, path.string() + " " + read.problem};
    auto decoded = history_file::decode(read.text, std::nullopt);
    if (!decoded.problem.empty()) return {nullptr, path.string() + " " + decoded.problem};
    return {std::move(decoded.store), {}};
}

std::uint64_t machineIdentity(const std::string& root) {
    const auto read = readCappedRegularFile(root + "/etc/machine-id", 4096);
    std::string id = read.kind == CappedRead::Kind::ok ? read.text : std::string();
    id.erase(std::remove_if(id.begin(), id.end(), [](char c) { return c == '\n' || c == ' '; }),
             id.end());
    if (id.empty()) {
        std::array<char, 256> host{};
        if (::gethostname(host.data(), host.size() - 1) == 0) id = host.data();
    }
    return fnv1a(id);
}

}  // namespace velmora
