#include <gtest/gtest.h>

#include "app/core/command_line.hpp"
#include "app/core/launch_options.hpp"

namespace velmora {
namespace {

LaunchOptions parsed(std::vector<std::string> args) {
    PlatformEnvironment env;
    env.home = "/home/ada";
    env.workingDir = "/srv/work";
    args.insert(args.begin(), "/usr/bin/velmora-heat-monitor");
    return LaunchOptions::parse(args, env).value_or(LaunchOptions{});
}

TEST(MetricsFileOption, IsOffUnlessGiven) {
    EXPECT_TRUE(parsed({"--headless"}).metricsFile.empty());
}

TEST(MetricsFileOption, TakesAnAbsoluteOrRelativePath) {
    EXPECT_EQ(
        parsed({"--metrics-file", "/var/lib/prometheus/node-exporter/velmora.prom"}).metricsFile,
        "/var/lib/prometheus/node-exporter/velmora.prom");
    EXPECT_EQ(parsed({"--metrics-file", "out/velmora.prom", "--mute"}).metricsFile,
              "/srv/work/out/velmora.prom");
    EXPECT_EQ(parsed({"--metrics-file", "~/velmora.prom"}).metricsFile, "/home/ada/velmora.prom");
}

// A metrics file switch without its path refuses the whole command line, like every
// switch that lacks its value.
TEST(MetricsFileOption, WithoutAPathTheCommandLineIsRefused) {
    for (const auto& args :
         {std::vector<std::string>{"velmora-heat-monitor", "--metrics-file"},
          std::vector<std::string>{"velmora-heat-monitor", "--metrics-file", "--headless"}}) {
        const auto problem = commandLineProblem(args);
        ASSERT_TRUE(problem.has_value());
        EXPECT_NE(problem->find("--metrics-file"), std::string::npos) << *problem;
    }
}

}  // namespace
}  // namespace velmora
