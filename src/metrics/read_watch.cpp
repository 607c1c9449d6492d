#include "metrics/read_watch.hpp"

#include <set>

namespace velmora {

namespace {

thread_local ReadWatch* boundWatch = nullptr;

struct Quarantine {
    std::mutex mutex;
    std::set<std::string> paths;
};

// Never destroyed: a thread abandoned in a hung read may still ask at exit.
Quarantine& quarantine() {
    static auto* const instance = new Quarantine();
    return *instance;
}

}  // namespace

ReadWatch::Scope::Scope(const std::string& path) : watch_(boundWatch) {
    if (watch_ != nullptr) watch_->begin(path);
}

ReadWatch::Scope::~Scope() {
    if (watch_ != nullptr) watch_->end();
}

void ReadWatch::bind(ReadWatch* watch) {
    boundWatch = watch;
}

std::string ReadWatch::current() const {
    std::lock_guard lock(mutex_);
    return path_ != nullptr ? *path_ : std::string();
}

// The path outlives the scope: only the reading thread can close the file it names, and it
// ends the scope first.
void ReadWatch::begin(const std::string& path) {
    const MonoTime now = MonoTime::now();
    std::lock_guard lock(mutex_);
    path_ = &path;
    since_ = now;
}

std::optional<Seconds> ReadWatch::currentFor(MonoTime now) const {
    std::lock_guard lock(mutex_);
    if (path_ == nullptr) return std::nullopt;
    return now - since_;
}

void ReadWatch::end() {
    std::lock_guard lock(mutex_);
    path_ = nullptr;
}

void quarantineRead(const std::string& path) {
    auto& q = quarantine();
    std::lock_guard lock(q.mutex);
    q.paths.insert(path);
}

bool readQuarantined(const std::string& path) {
    auto& q = quarantine();
    std::lock_guard lock(q.mutex);
    return q.paths.count(path) > 0;
}

}  // namespace velmora
