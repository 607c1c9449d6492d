#include "tray/tray_support.hpp"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace velmora::test {

void pumpFor(std::chrono::milliseconds span) {
    const auto end = std::chrono::steady_clock::now() + span;
    while (std::chrono::steady_clock::now() < end) {
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

bool pumpUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (done()) return true;
        pumpFor(std::chrono::milliseconds(50));
    }
    return done();
}

StandinWatcher::StandinWatcher(std::filesystem::path record) : record_(std::move(record)) {
    int out[2];
    if (::pipe(out) != 0) return;
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::close(out[0]);
        ::close(out[1]);
        ::execl(VELMORA_STANDIN_WATCHER, VELMORA_STANDIN_WATCHER, record_.c_str(),
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(out[1]);
    pollfd wait{out[0], POLLIN, 0};
    char line[16] = {};
    if (pid_ > 0 && ::poll(&wait, 1, 10000) == 1 && ::read(out[0], line, sizeof line - 1) > 0) {
        ready_ = std::string(line).rfind("ready", 0) == 0;
    }
    ::close(out[0]);
}

StandinWatcher::~StandinWatcher() {
    stop();
}

void StandinWatcher::stop() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
}

std::string StandinWatcher::record() const {
    std::ifstream in(record_);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace velmora::test
