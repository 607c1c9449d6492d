// The application's two timer bodies with a shell that draws nothing: the 0.25 s presentation
// tick on a stage page (engine tick, page mode, render JSON) and the 1 s live sample (collector,
// live JSON, summary, heat item). Both run on the main thread, so both must stay cheap.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "app/controller/app_controller.hpp"
#include "metrics/backend_factory.hpp"

namespace {

using namespace velmora;

class NullShell final : public Shell {
  public:
    void createMainWindow(const std::string&, Size) override {}
    std::string windowTitle() const override { return title; }
    void setWindowTitle(const std::string& text) override { title = text; }
    Rect windowFrame() const override { return {}; }
    Size frameSizeForContent(Size content) const override { return content; }
    std::optional<Rect> visibleScreenFrame() const override { return std::nullopt; }
    void setWindowFrame(const Rect&, bool) override {}
    void showMainWindow(Size) override {}
    bool windowVisible() const override { return true; }
    std::optional<std::filesystem::path> pageFile(std::string_view name) const override {
        return std::filesystem::path("/nonexistent") / name;
    }
    void loadPage(WebView, const std::filesystem::path&, const std::filesystem::path&) override {}
    void setDocumentStartScript(WebView, const std::string&) override {}
    void evaluate(WebView, const std::string& script) override { bytes += script.size(); }
    void installMainMenu(const std::vector<Submenu>&) override {}
    void setMenuItemChecked(MenuAction, bool) override {}
    void createHeatItem(const std::string&, const std::string&, Size) override {}
    void setHeatItemTitle(const std::string& text, HeatColor) override { bytes += text.size(); }
    bool popoverShown() const override { return true; }
    void showPopover() override {}
    void closePopover() override {}
    void showCountdownItem(const std::string&, Rgb) override {}
    void removeCountdownItem() override {}
    void playSound(std::string_view) override {}
    void showSheet(const AlertSpec&) override {}
    void announce(const std::string&) override {}
    bool openURL(const std::string&) override { return false; }
    void applyAppearance(AppearancePref) override {}
    void terminate() override {}

    std::string title;
    std::size_t bytes = 0;
};

/// Timers are accepted and never fired: the benchmark calls the bodies itself.
class IdleLoop final : public MainLoop {
  public:
    void post(std::function<void()>) override {}
    TimerId postAfter(Seconds, std::function<void()>) override { return ++ids; }
    TimerId startRepeating(Seconds, std::function<void()>) override { return ++ids; }
    void stop(TimerId) override {}
    MonoTime now() const override { return MonoTime::now(); }
    Timestamp wallNow() const override { return Timestamp::now(); }
    TimerId ids = 0;
};

struct Running {
    Running() {
        dir = std::filesystem::temp_directory_path() / "velmora-app-bench";
        std::filesystem::remove_all(dir);
        auto opts = LaunchOptions::parse(
            {"bench", "--dry-run-shutdown", "--mute", "--data-dir", dir.string()},
            PlatformEnvironment::current());
        AppServices services;
        services.collector =
            std::make_unique<HeatCollector>(makePlatformBackend(metricsRootFromEnvironment()));
        app = std::make_unique<AppController>(std::move(*opts), shell, loop, std::move(services));
        app->start();  // a fresh directory: the consent page, rendered on every tick
    }
    ~Running() {
        app.reset();
        std::filesystem::remove_all(dir);
    }
    std::filesystem::path dir;
    NullShell shell;
    IdleLoop loop;
    std::unique_ptr<AppController> app;
};

void BM_PresentationTickOnAStagePage(benchmark::State& state) {
    Running running;
    for (auto _ : state)
        running.app->tick();
    benchmark::DoNotOptimize(running.shell.bytes);
}
BENCHMARK(BM_PresentationTickOnAStagePage);

void BM_LiveSample(benchmark::State& state) {
    Running running;
    for (auto _ : state)
        running.app->sampleLive();
    benchmark::DoNotOptimize(running.shell.bytes);
}
BENCHMARK(BM_LiveSample);

}  // namespace
