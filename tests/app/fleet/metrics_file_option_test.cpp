#include <gtest/gtest.h>

#include "app/launch_options.hpp"

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

TEST(MetricsFileOption, WithoutAPathItIsRefusedWithAWarning) {
    for (const auto& args : {std::vector<std::string>{"--metrics-file"},
                             std::vector<std::string>{"--metrics-file", "--headless"}}) {
        const auto opts = parsed(args);
        EXPECT_TRUE(opts.metricsFile.empty());
        ASSERT_EQ(opts.warnings.size(), 1U);
        EXPECT_EQ(opts.warnings[0], "--metrics-file needs a file path; no metrics file is written");
    }
}

}  // namespace
}  // namespace velmora
