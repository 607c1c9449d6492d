#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/controller/app_controller.hpp"
#include "app/controller/platform_services.hpp"
#include "app/core/launch_options.hpp"
#include "app/gtk/desktop_run.hpp"
#include "gui/desktop_driver.hpp"
#include "support/temp_dir.hpp"

namespace velmora::testing {

/// One run of the real desktop application in this process, in a fresh data directory, on
/// the live readings of a fixture machine, with a dry-run shutdown and muted sounds.
class DesktopCase : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!openDesktopDisplay()) GTEST_SKIP() << "no display: run under xvfb-run";
        data = dir / "data";
        setenv("HOME", dir.c_str(), 1);
        setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
        setenv("VELMORA_ROOT", fixture("intel_laptop").c_str(), 1);
    }

    void TearDown() override {
        if (HasFailure()) std::fprintf(stderr, "---- heat.log\n%s", dataFile("heat.log").c_str());
    }

    static std::filesystem::path fixture(const std::string& machine) {
        return std::filesystem::path(VELMORA_TEST_SOURCE_DIR) / "tests/fixtures/linux" / machine;
    }

    /// Starts the application with the shared switches plus `args`, runs `body` once its
    /// window is up, then quits it (unless the body ended the run itself). Returns the
    /// application's exit status.
    int run(std::vector<std::string> args, const std::function<void(DesktopDriver&)>& body) {
        std::vector<std::string> all{"velmora-heat-monitor", "--data-dir", data.string(),
                                     "--dry-run-shutdown", "--mute"};
        all.insert(all.end(), args.begin(), args.end());
        const auto env = PlatformEnvironment::current();
        auto opts = LaunchOptions::parse(all, env);
        EXPECT_TRUE(opts.has_value());
        if (!opts) return -1;
        auto parts = makePlatformParts(*opts, env, resources);
        DesktopHooks hooks;
        hooks.applicationId = "org.velmora.heat-monitor.test" + std::to_string(::getpid());
        hooks.started = [&body](DesktopSession& session) {
            DesktopDriver driver(session);
            body(driver);
            g_application_quit(G_APPLICATION(session.application));
        };
        return runDesktop(std::move(*opts), std::move(parts), resources, hooks);
    }

    /// Reads from a copy of the laptop fixture, so that a test can change its readings.
    void useMachineCopy() {
        std::filesystem::copy(fixture("intel_laptop"), machine,
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
        setenv("VELMORA_ROOT", machine.c_str(), 1);
    }

    /// Rewrites the package sensor of the copy in place, as the kernel would: same file, new
    /// value. The CPU temperature comes from it.
    void setCpuTemperature(int celsius) const {
        std::ofstream(machine / "sys/class/hwmon/hwmon3/temp1_input", std::ios::trunc)
            << celsius * 1000 << "\n";
    }

    std::string dataFile(const std::string& name) const {
        std::ifstream in(data / name);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    TempDir tmp{"gui"};
    std::filesystem::path dir = tmp.path();
    std::filesystem::path data;
    std::filesystem::path machine = dir / "machine";
    /// The pages and sounds the run uses: the build's own unless a test changes them.
    std::filesystem::path resources{VELMORA_TEST_RESOURCES};
};

}  // namespace velmora::testing
