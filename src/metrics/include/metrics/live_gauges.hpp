#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "metrics/live_inputs.hpp"

namespace velmora::LiveModel {

/// A dashboard gauge: value text, fill fraction (clamped to 0…1), stage word and "ok"; or, with
/// no value, "n/a", 0, "none" and false. Extra entries are added afterwards.
nlohmann::json gauge(const std::optional<std::string>& value, double fill, std::string_view stage,
                     const nlohmann::json& extras = nlohmann::json::object());

nlohmann::json percentGauge(const std::optional<double>& percent);
nlohmann::json tempGauge(const std::optional<TempReading>& reading);
nlohmann::json loadGauge(const std::optional<double>& load, int cores);
nlohmann::json pressureGauge(const std::optional<std::string>& pressure);
nlohmann::json fanGauge(const std::vector<FanReading>& fans);
nlohmann::json powerGauge(const std::optional<PowerReading>& power);
nlohmann::json batteryGauge(const std::optional<BatteryInfo>& battery);

}  // namespace velmora::LiveModel
