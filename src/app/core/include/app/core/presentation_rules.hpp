#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

namespace velmora {

/// The presentation stage: what the window and the cues follow.
enum class AlertStage { none, extreme, emergency };

/// The page mode; its name is what pages receive with every render.
enum class UIMode { home, count, lead, consent, relief, settings, simdone, perm, manual };

std::string_view rawValue(AlertStage stage);
std::string_view modeName(UIMode mode);

/// Typed reads of the engine's view: a missing key or one of another type counts as false,
/// 0 or absent; "state" defaults to "idle" and "level" to -1.
bool viewFlag(const nlohmann::json& view, std::string_view key);
std::int64_t viewInteger(const nlohmann::json& view, std::string_view key, std::int64_t fallback);
std::string viewText(const nlohmann::json& view, std::string_view key, std::string_view fallback);
bool viewHas(const nlohmann::json& view, std::string_view key);

/// The page mode for a view, first match wins. A running simulation only ever shows its own
/// screens; otherwise the countdown, notices and consent come before the settings request.
UIMode pickMode(const nlohmann::json& view, bool wantSettings);

/// The real stage a view stands for: a simulation never drives it.
AlertStage liveStageOf(const nlohmann::json& view);

}  // namespace velmora
