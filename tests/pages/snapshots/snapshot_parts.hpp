#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "actuators/shutdowner.hpp"
#include "actuators/sounder.hpp"
#include "engine/engine.hpp"
#include "policy/temp_sensor.hpp"

namespace velmora::pages {

/// A sensor whose reading the scenario sets.
class SetSensor final : public TempSensor {
  public:
    std::optional<double> readC() override { return celsius; }
    std::optional<double> celsius;
};

/// Answers probes at once; a shutdown either never answers (the machine is going down) or
/// fails at once with the error the scenario chose.
class ChosenShutdowner final : public Shutdowner {
  public:
    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;
    AutomationOutcome probeAnswer = AutomationOutcome::granted();
    std::optional<ShutdownError> shutdownError;

  private:
    ShutdownCompletion held_;
};

class QuietSounder final : public Sounder {
  public:
    void alarm() override {}
    void urgent() override {}
    void tick() override {}
};

/// One engine over stores in `dir`, with the parts above, at virtual time `t` seconds.
struct EngineRig {
    EngineRig(const std::filesystem::path& dir, double t);
    /// Ticks every quarter second from the last tick up to `t`; returns the last view.
    nlohmann::json tickTo(double t);
    static MonoTime at(double t);
    static Timestamp wallAt(double t);

    std::shared_ptr<SetSensor> sensor = std::make_shared<SetSensor>();
    std::shared_ptr<ChosenShutdowner> shutdowner = std::make_shared<ChosenShutdowner>();
    std::unique_ptr<Engine> engine;
    double now = 0;
};

/// Every stage page state the engine can reach, as {"name", "mode", "view"} records.
nlohmann::json engineViews(const std::filesystem::path& scratch);
/// Live snapshots of a busy laptop, a bare machine and a forced state, as {"name", "live"}.
nlohmann::json liveSnapshots();

}  // namespace velmora::pages
