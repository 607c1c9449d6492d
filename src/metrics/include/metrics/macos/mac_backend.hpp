#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "metrics/macos/hid_temps.hpp"
#include "metrics/macos/host_counters.hpp"
#include "metrics/macos/registry.hpp"
#include "metrics/macos/smc.hpp"
#include "metrics/macos/system_metrics.hpp"
#include "metrics/metrics_backend.hpp"

namespace velmora {

/// Everything the Mac backend talks to; the SMC transport is null when AppleSMC cannot be
/// opened.
struct MacPorts {
    std::unique_ptr<HostCounters> host;
    std::unique_ptr<ProcessInfo> process;
    std::unique_ptr<IORegistry> registry;
    std::unique_ptr<HIDEventSystem> hid;
    std::unique_ptr<SMCTransport> smc;
};

/// The Mac's live metrics: SMC keys first, HID sensors as fallback, Mach counters, registry.
class MacBackend final : public MetricsBackend {
  public:
    explicit MacBackend(MacPorts ports);

    void prime(Timestamp now) override;
    LiveInputs sample(Timestamp now) override;
    std::string sensorSummary() override;
    MetricSources sources() const override;

    const SMC* smc() const { return smc_.get(); }

  private:
    void readTemperatures(LiveInputs& inputs, const std::vector<NamedTemp>& hidTemps);
    std::vector<NamedTemp> sensorList(const std::vector<NamedTemp>& hidTemps);

    MacPorts ports_;
    SystemMetrics metrics_;
    PerCoreCPU perCore_;
    std::unique_ptr<SMC> smc_;
    HIDTemps hid_;
    std::optional<LiveInputs> latest_;
};

/// The hottest entry of the HID list with the label; ties keep the earlier entry.
std::optional<NamedTemp> hottestLabelled(const std::vector<NamedTemp>& temps,
                                         std::string_view label);

/// The first entry of the HID list with the label.
std::optional<NamedTemp> firstLabelled(const std::vector<NamedTemp>& temps, std::string_view label);

/// Hottest first; equal temperatures keep their order.
void sortHottestFirst(std::vector<NamedTemp>& sensors);

}  // namespace velmora
