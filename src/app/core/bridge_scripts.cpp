#include "app/core/bridge_scripts.hpp"

#include <initializer_list>

namespace velmora {

namespace {

std::string joined(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const auto piece : pieces)
        text += piece;
    return text;
}

}  // namespace

std::string renderCall(std::string_view viewJson, std::string_view modeName) {
    return joined({"window.heatC && window.heatC.render(", viewJson, ", '", modeName, "')"});
}

std::string liveCall(std::string_view liveJson) {
    return joined({"window.heatLive && window.heatLive.render(", liveJson, ")"});
}

std::string themeCall(std::string_view themeRaw) {
    return joined({"window.heatTheme && window.heatTheme.set('", themeRaw, "', true)"});
}

std::string stageScript(std::string_view stage, std::string_view demo) {
    // The demo test against 'none' is left to the page's script engine on purpose.
    static constexpr std::string_view applyAndAddress =
        "';\n  if (typeof window.applyHeatStage === 'function') {\n"
        "    window.applyHeatStage(window.__HEAT_DEMO__ !== 'none' ? window.__HEAT_DEMO__ : "
        "window.__HEAT_STAGE__);\n  }\n  try {\n    var u = new URL(location.href);\n"
        "    u.searchParams.set('stage', '";
    static constexpr std::string_view replaceAndClose =
        "');\n    history.replaceState(null,'', u.pathname + u.search + u.hash);\n"
        "  } catch(e) {}\n})();";
    return joined({"(function(){\n  window.__HEAT_STAGE__ = '", stage,
                   "';\n  window.__HEAT_DEMO__ = '", demo, applyAndAddress, stage, "');\n    if ('",
                   demo, "' !== 'none') u.searchParams.set('demo', '", demo, replaceAndClose});
}

std::string documentStartScript(std::string_view token, std::string_view themeRaw) {
    return joined(
        {"window.__HEAT_TOKEN__ = '", token, "'; window.__HEAT_THEME__ = '", themeRaw, "';"});
}

}  // namespace velmora
