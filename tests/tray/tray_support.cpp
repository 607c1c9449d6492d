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

namespace {

/// Starts `program` with `args`, its output on a pipe; true in `ready` once it says "ready".
pid_t spawnUntilReady(const char* program, const std::vector<std::string>& args, bool& ready) {
    int out[2];
    if (::pipe(out) != 0) return -1;
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::close(out[0]);
        ::close(out[1]);
        std::vector<char*> argv{const_cast<char*>(program)};
        for (const auto& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        ::execv(program, argv.data());
        ::_exit(127);
    }
    ::close(out[1]);
    pollfd wait{out[0], POLLIN, 0};
    char line[16] = {};
    if (pid > 0 && ::poll(&wait, 1, 10000) == 1 && ::read(out[0], line, sizeof line - 1) > 0) {
        ready = std::string(line).rfind("ready", 0) == 0;
    }
    ::close(out[0]);
    return pid;
}

bool callUser(const char* method, GVariant* args) {
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) {
        g_variant_unref(g_variant_ref_sink(args));
        return false;
    }
    GVariant* reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.velmora.test.NotificationUser", method, args, nullptr, G_DBUS_CALL_FLAGS_NONE, 5000,
        nullptr, nullptr);
    g_object_unref(bus);
    if (reply == nullptr) return false;
    g_variant_unref(reply);
    return true;
}

}  // namespace

StandinNotifications::StandinNotifications(std::filesystem::path record,
                                           const std::vector<std::string>& options)
    : record_(std::move(record)) {
    std::vector<std::string> args{record_.string()};
    args.insert(args.end(), options.begin(), options.end());
    pid_ = spawnUntilReady(VELMORA_STANDIN_NOTIFICATIONS, args, ready_);
}

StandinNotifications::~StandinNotifications() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
}

std::vector<nlohmann::json> StandinNotifications::calls() const {
    std::vector<nlohmann::json> lines;
    std::ifstream in(record_);
    for (std::string line; std::getline(in, line);) {
        auto parsed = nlohmann::json::parse(line, nullptr, false);
        if (!parsed.is_discarded()) lines.push_back(std::move(parsed));
    }
    return lines;
}

std::vector<nlohmann::json> StandinNotifications::notifies() const {
    std::vector<nlohmann::json> found;
    for (auto& line : calls()) {
        if (line.value("call", "") == "Notify") found.push_back(std::move(line));
    }
    return found;
}

bool StandinNotifications::invokeAction(std::uint32_t id, const std::string& key) const {
    return callUser("InvokeAction", g_variant_new("(us)", id, key.c_str()));
}

bool StandinNotifications::dismiss(std::uint32_t id) const {
    return callUser("Dismiss", g_variant_new("(u)", id));
}

}  // namespace velmora::test
