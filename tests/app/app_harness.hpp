#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/controller/app_controller.hpp"
#include "app/core/file_preferences.hpp"
#include "app/fake_shell.hpp"
#include "app/manual_loop.hpp"
#include "support/recording_sounder.hpp"
#include "support/scripted_backend.hpp"
#include "support/temp_dir.hpp"

namespace velmora::testing {

/// The fake backend's readings as the controller tests start them: nothing hot, four cores.
std::shared_ptr<ScriptedState> scriptedReadings();

/// A shutdowner that records its calls and answers as the test says, at once.
class RecordingShutdowner final : public Shutdowner {
  public:
    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;

    int shutdownCalls = 0;
    int probeCalls = 0;
    std::optional<ShutdownError> shutdownAnswer;
    AutomationOutcome probeAnswer = AutomationOutcome::granted();
};

/// A controller on a fake shell, a manual loop, a fake backend and a fresh data directory.
class AppHarness {
  public:
    AppHarness();
    ~AppHarness();
    AppHarness(const AppHarness&) = delete;
    AppHarness& operator=(const AppHarness&) = delete;
    AppHarness(AppHarness&&) = delete;
    AppHarness& operator=(AppHarness&&) = delete;

    /// Builds the controller from these switches (the data directory is added) and starts it.
    AppController& launch(std::vector<std::string> args = {});
    /// Builds the controller without starting it.
    AppController& build(std::vector<std::string> args, const PlatformEnvironment& env);

    /// Writes a settings file as the consent page would have.
    void recordConsent(bool autoShutdown = true) const;
    /// The log's messages without their timestamps, once every queued line is written.
    std::vector<std::string> logLines() const;
    /// How many messages start with `prefix`.
    int countLines(const std::string& prefix) const;
    bool logged(const std::string& message) const;
    /// Runs the loop until the history file was read on its worker and taken over.
    void awaitHistory();
    /// A page message from the main window's bundled page.
    void send(const std::string& name, nlohmann::json body);
    /// The same body with the right token and the given action.
    nlohmann::json withToken(const std::string& action) const;
    std::vector<std::string> renders() const;

    FakeShell shell;
    ManualLoop loop;
    TempDir tmp{"app"};
    std::filesystem::path dir = tmp.path();
    /// What the fake backend reports: `readings->repeat`, which a test changes between samples.
    std::shared_ptr<ScriptedState> readings = scriptedReadings();
    std::shared_ptr<RecordingShutdowner> realShutdowner = std::make_shared<RecordingShutdowner>();
    std::shared_ptr<RecordingSounder> systemSounder = std::make_shared<RecordingSounder>();
    std::shared_ptr<MemoryPreferences> preferences = std::make_shared<MemoryPreferences>();
    /// Given every log line, as the journal is, when set before `build`.
    std::function<void(const std::string&)> logMirror;
    std::unique_ptr<AppController> app;
    /// The log handed to parts made before the controller (the sound player).
    LogSink earlyPartsLog;
    /// The countdown's cancel handed to parts made before the engine (the notifications).
    std::function<void()> countdownCancel;
};

}  // namespace velmora::testing
