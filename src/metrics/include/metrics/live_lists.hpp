#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "metrics/system_records.hpp"

namespace velmora::LiveModel {

/// One entry per power figure: "label", "value" ("32.0 W"), "source".
nlohmann::json powerList(const std::vector<PowerReading>& sources);

/// One entry per battery: "name", "value" ("80%" or "n/a"), "fill", "state" (the kernel's
/// status word or "n/a"), "source".
nlohmann::json batteryList(const std::vector<BatteryPack>& batteries);

}  // namespace velmora::LiveModel
