#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// The scripts the native side evaluates in a page. Every call is guarded by an existence
/// test on the page side, so a page without the hook simply ignores it.
std::string renderCall(std::string_view viewJson, std::string_view modeName);
std::string liveCall(std::string_view liveJson);
std::string themeCall(std::string_view themeRaw);

/// Tells a freshly loaded page its stage and demo stage: sets the two globals, calls
/// `applyHeatStage` with the demo stage when one is set, and writes both into the page's own
/// address so that a page that reloads itself keeps its stage.
std::string stageScript(std::string_view stage, std::string_view demo);

/// Runs before any page script: the per-launch token and the theme.
std::string documentStartScript(std::string_view token, std::string_view themeRaw);

}  // namespace velmora
