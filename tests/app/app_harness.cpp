#include "app/app_harness.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

#include "app/core/file_preferences.hpp"
#include "store/settings_store.hpp"

namespace velmora::testing {

namespace {

/// Lets the harness keep the preferences it hands to the controller.
class SharedPreferences final : public PreferenceStore {
  public:
    explicit SharedPreferences(std::shared_ptr<MemoryPreferences> store)
        : store_(std::move(store)) {}
    std::optional<std::string> text(std::string_view key) const override {
        return store_->text(key);
    }
    std::optional<std::string> setText(std::string_view key, const std::string& value) override {
        return store_->setText(key, value);
    }

  private:
    std::shared_ptr<MemoryPreferences> store_;
};

constexpr std::size_t timestampWidth = 24;  // "yyyy-MM-dd HH:mm:ss.SSS "

}  // namespace

std::shared_ptr<ScriptedState> scriptedReadings() {
    auto state = std::make_shared<ScriptedState>();
    state->summary = "scripted sensors: 0 found";
    state->sources = {};
    state->repeat.cores = 4;
    return state;
}

void RecordingShutdowner::shutdown(ShutdownCompletion completion) {
    ++shutdownCalls;
    completion(shutdownAnswer);
}

void RecordingShutdowner::probe(ProbeCompletion completion) {
    ++probeCalls;
    completion(probeAnswer);
}

AppHarness::AppHarness() = default;

// The controller goes first: it still writes into the directory as it stops.
AppHarness::~AppHarness() {
    app.reset();
}

AppController& AppHarness::build(std::vector<std::string> args, const PlatformEnvironment& env) {
    args.insert(args.begin(), "velmora-heat-monitor");
    auto opts = LaunchOptions::parse(args, env);
    if (!opts) throw std::runtime_error("no data directory");
    AppServices services;
    services.collector = std::make_unique<HeatCollector>(
        std::make_unique<ScriptedBackend>(readings), loop.wallNow());
    services.preferences = std::make_unique<SharedPreferences>(preferences);
    services.realShutdowner = [this](LogSink, Post) { return realShutdowner; };
    services.systemSounder = [this] { return systemSounder; };
    services.connectLog = [this](LogSink log) { earlyPartsLog = std::move(log); };
    services.connectCountdownCancel = [this](std::function<void()> cancel) {
        countdownCancel = std::move(cancel);
    };
    services.token = "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9";
    services.logMirror = logMirror;
    app = std::make_unique<AppController>(std::move(*opts), shell, loop, std::move(services));
    return *app;
}

AppController& AppHarness::launch(std::vector<std::string> args) {
    args.emplace_back("--data-dir");
    args.push_back(dir.string());
    PlatformEnvironment env;
    env.home = dir.string();
    env.workingDir = dir;
    build(std::move(args), env).start();
    return *app;
}

void AppHarness::recordConsent(bool autoShutdown) const {
    const auto saved =
        SettingsStore(dir).save(Settings{autoShutdown, true, "2026-01-02T03:04:05Z"});
    if (saved) throw std::runtime_error(saved->message);
}

std::vector<std::string> AppHarness::logLines() const {
    if (app) app->drainLog();
    std::vector<std::string> lines;
    std::ifstream in(dir / "heat.log");
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line.size() >= timestampWidth ? line.substr(timestampWidth) : line);
    }
    return lines;
}

int AppHarness::countLines(const std::string& prefix) const {
    const auto lines = logLines();
    return static_cast<int>(std::count_if(
        lines.begin(), lines.end(), [&](const auto& line) { return line.starts_with(prefix); }));
}

bool AppHarness::logged(const std::string& message) const {
    const auto lines = logLines();
    return std::find(lines.begin(), lines.end(), message) != lines.end();
}

void AppHarness::awaitHistory() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!app->history()->loaded() && std::chrono::steady_clock::now() < deadline) {
        loop.runDue();
        std::this_thread::yield();
    }
    if (!app->history()->loaded()) throw std::runtime_error("the history file was not read");
}

void AppHarness::send(const std::string& name, nlohmann::json body) {
    app->receive(PageMessage{WebView::main, name, std::move(body), true,
                             "file:///opt/velmora/resources/stagec.html"});
    loop.runDue();
}

nlohmann::json AppHarness::withToken(const std::string& action) const {
    return nlohmann::json{{"action", action}, {"token", app->token()}};
}

std::vector<std::string> AppHarness::renders() const {
    std::vector<std::string> found;
    for (const auto& script : shell.scripts(WebView::main)) {
        if (script.starts_with("window.heatC && window.heatC.render(")) found.push_back(script);
    }
    return found;
}

}  // namespace velmora::testing
