#pragma once

#include <optional>

#include "metrics/macos/registry.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

/// The smart battery's "Temperature" (hundredths of a degree), when plausible.
std::optional<TempReading> batteryTemperature(IORegistry& registry);

}  // namespace velmora
