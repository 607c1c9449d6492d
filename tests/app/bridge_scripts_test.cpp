#include "app/core/bridge_scripts.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(BridgeScripts, RenderCall) {
    EXPECT_EQ(renderCall(R"({"state":"idle"})", "count"),
              R"(window.heatC && window.heatC.render({"state":"idle"}, 'count'))");
}

TEST(BridgeScripts, LiveCall) {
    EXPECT_EQ(liveCall("{}"), "window.heatLive && window.heatLive.render({})");
}

TEST(BridgeScripts, ThemeCall) {
    EXPECT_EQ(themeCall("dark"), "window.heatTheme && window.heatTheme.set('dark', true)");
}

TEST(BridgeScripts, DocumentStartScript) {
    EXPECT_EQ(documentStartScript("8A0C5E1B-0000-4000-8000-00000000ABCD", "light"),
              "window.__HEAT_TOKEN__ = '8A0C5E1B-0000-4000-8000-00000000ABCD'; "
              "window.__HEAT_THEME__ = 'light';");
}

TEST(BridgeScripts, StageScriptForDemoNone) {
    const std::string expected =
        "(function(){\n"
        "  window.__HEAT_STAGE__ = 'emergency';\n"
        "  window.__HEAT_DEMO__ = 'none';\n"
        "  if (typeof window.applyHeatStage === 'function') {\n"
        "    window.applyHeatStage(window.__HEAT_DEMO__ !== 'none' ? window.__HEAT_DEMO__ : "
        "window.__HEAT_STAGE__);\n"
        "  }\n"
        "  try {\n"
        "    var u = new URL(location.href);\n"
        "    u.searchParams.set('stage', 'emergency');\n"
        "    if ('none' !== 'none') u.searchParams.set('demo', 'none');\n"
        "    history.replaceState(null,'', u.pathname + u.search + u.hash);\n"
        "  } catch(e) {}\n"
        "})();";
    EXPECT_EQ(stageScript("emergency", "none"), expected);
}

TEST(BridgeScripts, StageScriptForDemoExtremeDuringALiveEmergency) {
    const auto script = stageScript("emergency", "extreme");
    EXPECT_NE(script.find("window.__HEAT_STAGE__ = 'emergency';"), std::string::npos);
    EXPECT_NE(script.find("window.__HEAT_DEMO__ = 'extreme';"), std::string::npos);
    EXPECT_NE(script.find("u.searchParams.set('stage', 'emergency');"), std::string::npos);
    // The page's engine decides: 'extreme' !== 'none', so demo is set and applied.
    EXPECT_NE(script.find("if ('extreme' !== 'none') u.searchParams.set('demo', 'extreme');"),
              std::string::npos);
    EXPECT_NE(script.find("window.applyHeatStage(window.__HEAT_DEMO__ !== 'none' ? "
                          "window.__HEAT_DEMO__ : window.__HEAT_STAGE__);"),
              std::string::npos);
}

}  // namespace
}  // namespace velmora
