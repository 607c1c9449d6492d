#include "os/file_change_watch.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <system_error>

#ifdef __linux__
#include <sys/inotify.h>
#endif

namespace velmora {

namespace {

int pollMilliseconds(std::chrono::duration<double> span) {
    return static_cast<int>(std::lround(std::chrono::duration<double, std::milli>(span).count()));
}

#ifdef __linux__
// Everything that can put another settings file in place or take it away, and the loss of the
// directory itself. Closing a written file is not among them: the log is written, and closed,
// line by line in the same directory, and each line would wake the thread for nothing.
constexpr std::uint32_t kDirectoryEvents = IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE |
                                           IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// A settings file rewritten in place (an editor that keeps the file) is seen on the file
// itself; a watch never follows a link planted under its name.
constexpr std::uint32_t kFileEvents = IN_CLOSE_WRITE | IN_ATTRIB | IN_DONT_FOLLOW;
#endif

}  // namespace

FileChangeWatch::FileChangeWatch(std::filesystem::path file,
                                 std::function<void(bool notified)> changed, Intervals intervals)
    : file_(std::move(file)), changed_(std::move(changed)), intervals_(intervals) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe(ends.data()) != 0) return;  // no way to stop a thread: run without one
    stopRead_ = UniqueFd(ends[0]);
    stopWrite_ = UniqueFd(ends[1]);
    for (const int end : ends)
        static_cast<void>(::fcntl(end, F_SETFD, FD_CLOEXEC));
#ifdef __linux__
    notify_ = UniqueFd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    addWatch();
#endif
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // Without the thread nothing tells of changes; the file is still read at start.
    }
}

FileChangeWatch::~FileChangeWatch() {
    if (thread_.joinable()) {
        const char stop = 'q';
        static_cast<void>(::write(stopWrite_.get(), &stop, 1));
        thread_.join();
    }
}

bool FileChangeWatch::addWatch() {
#ifdef __linux__
    if (!notify_.valid()) return false;
    watch_ = ::inotify_add_watch(notify_.get(), file_.parent_path().c_str(), kDirectoryEvents);
    watching_ = watch_ >= 0;
    if (watching_) watchFile();
    return watching_;
#else
    return false;
#endif
}

// The file's own watch, (re)placed whenever a file of that name appears; absent while there is
// no file.
void FileChangeWatch::watchFile() {
#ifdef __linux__
    fileWatch_ = ::inotify_add_watch(notify_.get(), file_.c_str(), kFileEvents);
#endif
}

// True when an event concerns the file or the directory went away.
bool FileChangeWatch::readEvents() {
#ifdef __linux__
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool relevant = false;
    for (;;) {
        const ssize_t got = ::read(notify_.get(), buffer.data(), buffer.size());
        if (got <= 0) return relevant;
        for (ssize_t at = 0; at < got;) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* name = buffer.data() + at + sizeof(inotify_event);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event.len);
            if (event.wd == fileWatch_ && event.wd != watch_) {
                if ((event.mask & IN_IGNORED) != 0) fileWatch_ = -1;
                relevant = relevant || (event.mask & (IN_CLOSE_WRITE | IN_ATTRIB)) != 0;
                continue;
            }
            if (event.wd != watch_) continue;
            if ((event.mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF)) != 0) {
                if ((event.mask & IN_IGNORED) != 0) {
                    watch_ = -1;
                    watching_ = false;
                }
                relevant = true;
            } else if (event.len > 0 && file_.filename() == name) {
                relevant = true;
                if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0) watchFile();
            }
        }
    }
#else
    return false;
#endif
}

void FileChangeWatch::run() {
    using Clock = std::chrono::steady_clock;
    // Measured from the last look at the file, so that events for other files of the
    // directory (every log line) do not postpone the fallback for ever.
    auto lastLook = Clock::now();
    for (;;) {
        const bool watched = watch_ >= 0;
        const std::chrono::duration<double> interval =
            watched ? intervals_.watched : intervals_.unwatched;
        const std::chrono::duration<double> left = lastLook + interval - Clock::now();
        std::array<pollfd, 2> fds{pollfd{stopRead_.get(), POLLIN, 0},
                                  pollfd{notify_.get(), POLLIN, 0}};
        const nfds_t count = watched ? 2 : 1;
        const int ready = ::poll(fds.data(), count, std::max(0, pollMilliseconds(left)));
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) std::this_thread::sleep_for(left);
        if ((fds[0].revents & POLLIN) != 0) return;
        ++wakeups_;
        if (ready <= 0) {
            lastLook = Clock::now();
            // The fallback; also the moment to watch a directory that has come back.
            changed_(!watched && addWatch());
            continue;
        }
        if ((fds[1].revents & POLLIN) != 0 && readEvents()) {
            lastLook = Clock::now();
            changed_(true);
        }
    }
}

}  // namespace velmora
