#include "store/file_logger.hpp"

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"
#include "policy/timestamp.hpp"
#include "store/disk_writes.hpp"
#include "store/log_escape.hpp"
#include "store/log_time.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velmora {

namespace {

// Never through a symbolic link, never waiting on a FIFO; private to the user when created.
UniqueFd openForAppend(const std::filesystem::path& url) {
    return UniqueFd(::open(
        url.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
}

// 0 when `fd` is open on a regular file, whose size is then in `info`; else the errno that
// keeps the entry out.
int openProblem(const UniqueFd& fd, struct stat& info) {
    if (!fd.valid()) return errno;
    if (::fstat(fd.get(), &info) != 0) return errno;
    return S_ISREG(info.st_mode) ? 0 : EINVAL;
}

// At the limit already: the next line would pass it.
bool isFull(off_t size) {
    return size >= FileLogger::sizeLimit;
}

bool isFull(const std::filesystem::path& url) {
    struct stat info {};
    return ::lstat(url.c_str(), &info) == 0 && S_ISREG(info.st_mode) && isFull(info.st_size);
}

// The first line of a log begun during a run, so that a reader of the new file knows where its
// story starts.
std::string continuationNotice(const std::filesystem::path& previous) {
    return formatLogTime(Timestamp::now()) + " log: continues " +
           escapeForLog(previous.filename().string()) + ", which reached " +
           std::to_string(FileLogger::sizeLimit) + " bytes\n";
}

std::string droppedNotice(std::uint64_t count, int err) {
    std::string notice = formatLogTime(Timestamp::now());
    notice += " log: ";
    notice += std::to_string(count);
    notice += count == 1 ? " line" : " lines";
    notice += " could not be written (";
    notice += std::generic_category().message(err);
    notice += ")\n";
    return notice;
}

// A symbolic link in the log's place is removed, never followed, so that appending to the log
// can never append to the file it points at; the link's target is named in the new log.
std::string replaceLink(const std::filesystem::path& url) {
    std::error_code ec;
    const auto target = std::filesystem::read_symlink(url, ec);
    if (ec || ::unlink(url.c_str()) != 0) return {};
    return formatLogTime(Timestamp::now()) + " log: " + escapeForLog(url.string()) +
           " was a symbolic link to " + escapeForLog(target.string()) +
           "; it was removed and a new log begun\n";
}

}  // namespace

FileLogger::FileLogger(const std::filesystem::path& dir)
    : dir_(dir), url_(dir / "heat.log"), previousUrl_(dir / "heat.log.1") {
    static_cast<void>(createDirectories(dir_));
    if (isFull(url_)) static_cast<void>(::rename(url_.c_str(), previousUrl_.c_str()));
    try {
        writer_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // No writer thread: log() then writes on the caller's thread rather than losing lines.
    }
}

FileLogger::~FileLogger() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    if (writer_.joinable()) writer_.join();
}

void FileLogger::log(std::string_view line) {
    if (mirror_) mirror_(std::string(line));
    std::string entry = formatLogTime(Timestamp::now());
    entry.reserve(entry.size() + line.size() + 2);
    entry += ' ';
    entry += escapeForLog(line);
    entry += '\n';
    if (!writer_.joinable()) {
        const std::lock_guard lock(writeMutex_);
        write(entry);
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(entry));
        ++queued_;
    }
    wake_.notify_one();
}

void FileLogger::drain() {
    std::unique_lock lock(mutex_);
    const auto target = queued_;
    written_cv_.wait(lock, [&] { return written_ >= target; });
}

void FileLogger::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (queue_.empty()) return;  // stopping, and everything is written
        const std::string entry = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        write(entry);
        lock.lock();
        ++written_;
        written_cv_.notify_all();
    }
}

void FileLogger::write(const std::string& entry) {
    auto fd = openForAppend(url_);
    if (!fd.valid() && errno == ENOENT && !createDirectories(dir_)) fd = openForAppend(url_);
    std::string notice;
    if (!fd.valid() && errno == ELOOP) {
        notice = replaceLink(url_);
        fd = openForAppend(url_);
    }
    struct stat info {};
    int err = openProblem(fd, info);
    if (err == 0 && isFull(info.st_size)) {
        static_cast<void>(::rename(url_.c_str(), previousUrl_.c_str()));
        fd = openForAppend(url_);
        err = openProblem(fd, info);
        if (err == 0 && info.st_size == 0) notice = continuationNotice(previousUrl_) + notice;
    }
    if (err == 0) {
        if (dropped_ > 0) notice += droppedNotice(dropped_, lastDropError_);
        const std::string text = notice + entry;
        err = writeAll(fd.get(), text);
        // A line cut short by a full disk is taken back, so that the next one starts clean.
        if (err != 0) static_cast<void>(::ftruncate(fd.get(), info.st_size));
    }
    if (err == 0) {
        dropped_ = 0;
    } else {
        ++dropped_;
        lastDropError_ = err;
    }
}

}  // namespace velmora
