#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "policy/thermal_state.hpp"

namespace velmora {

/// The engine's temperature source: one optional Celsius reading per call.
class TempSensor {
  public:
    virtual ~TempSensor() = default;
    virtual std::optional<double> readC() = 0;
};

/// Reads the OS thermal state through a replaceable closure and maps it to synthetic Celsius.
class ThermalSensor final : public TempSensor {
  public:
    using StateSource = std::function<std::optional<ThermalState>()>;

    explicit ThermalSensor(StateSource source) : state(std::move(source)) {}

    std::optional<double> readC() override {
        if (!state) return std::nullopt;
        const auto current = state();
        if (!current) return std::nullopt;
        return thermalStateToC(*current);
    }

    StateSource state;
};

}  // namespace velmora
