#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "app/core/desktop_module.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

namespace fs = std::filesystem;

/// An executable's folder holding `module` under the desktop module's name, as a build tree
/// does; the result of loading it from there.
class DesktopModuleLoader : public ::testing::Test {
  protected:
    std::variant<int, DesktopUnavailable> runWith(const std::string& module) {
        if (!module.empty()) fs::copy_file(module, tmp.path() / desktopModuleName);
        LaunchOptions opts;
        opts.mute = true;
        return runDesktopModule(opts, PlatformEnvironment{}, "/resources",
                                tmp.path() / "velmora-heat-monitor");
    }

    static std::string reason(const std::variant<int, DesktopUnavailable>& outcome) {
        const auto* unavailable = std::get_if<DesktopUnavailable>(&outcome);
        return unavailable != nullptr ? unavailable->reason
                                      : "ran with status " + std::to_string(std::get<int>(outcome));
    }

    testing::TempDir tmp{"module"};
};

TEST_F(DesktopModuleLoader, AModuleOfThisProgramRunsWithTheRequest) {
    const auto outcome = runWith(VELMORA_FAKE_MODULE_MATCHING);
    ASSERT_TRUE(std::holds_alternative<int>(outcome)) << reason(outcome);
    EXPECT_EQ(std::get<int>(outcome), 42);
}

TEST_F(DesktopModuleLoader, AModuleOfAnotherInterfaceIsRefusedBeforeItRuns) {
    const auto why = reason(runWith(VELMORA_FAKE_MODULE_OTHER_ABI));
    EXPECT_NE(why.find("does not belong to this program"), std::string::npos) << why;
    EXPECT_NE(why.find("interface " + std::to_string(desktopModuleAbi + 1)), std::string::npos)
        << why;
}

TEST_F(DesktopModuleLoader, AModuleOfAnotherVersionIsRefusedBeforeItRuns) {
    const auto why = reason(runWith(VELMORA_FAKE_MODULE_OTHER_VERSION));
    EXPECT_NE(why.find("of version 0.9"), std::string::npos) << why;
}

TEST_F(DesktopModuleLoader, AModuleWithTheOldUnversionedEntryIsRefused) {
    const auto why = reason(runWith(VELMORA_FAKE_MODULE_NO_ENTRY));
    EXPECT_NE(why.find("has no entry point"), std::string::npos) << why;
}

TEST_F(DesktopModuleLoader, NoModuleAtAllIsSaidSo) {
    const auto why = reason(runWith(""));
    EXPECT_NE(why.find("the desktop window cannot be loaded"), std::string::npos) << why;
}

TEST(DesktopModuleMismatch, OnlyTheSameInterfaceAndVersionMatch) {
    const auto run = [](const DesktopRequest*) { return 0; };
    EXPECT_FALSE(desktopModuleMismatch(DesktopModule{desktopModuleAbi, "1.1", run}));
    EXPECT_TRUE(desktopModuleMismatch(DesktopModule{desktopModuleAbi, "1.10", run}));
    EXPECT_TRUE(desktopModuleMismatch(DesktopModule{desktopModuleAbi, nullptr, run}));
    EXPECT_TRUE(desktopModuleMismatch(DesktopModule{desktopModuleAbi - 1, "1.1", run}));
}

}  // namespace
}  // namespace velmora
