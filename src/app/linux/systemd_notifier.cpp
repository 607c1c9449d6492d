#include "app/linux/systemd_notifier.hpp"

#include <systemd/sd-daemon.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

#include "metrics/live_names.hpp"

namespace velmora {

namespace {

// Pinged at a quarter of the interval: late ticks or a busy machine still leave margin.
constexpr int kPingsPerInterval = 4;

std::string temperatureText(const LiveInputs& inputs) {
    const auto& reading = inputs.cpuTemp ? inputs.cpuTemp : inputs.gpuTemp;
    if (reading) {
        return std::string(inputs.cpuTemp ? "CPU " : "GPU ") +
               std::to_string(std::lround(reading->celsius)) + " °C";
    }
    if (!inputs.sensors.empty()) {
        return inputs.sensors.front().name + " " +
               std::to_string(std::lround(inputs.sensors.front().celsius)) + " °C";
    }
    return "no temperature";
}

}  // namespace

std::string serviceStatusText(const std::string& stage, const LiveInputs& inputs) {
    return stage + " · " + temperatureText(inputs) + " · thermal " +
           std::string(thermalName(inputs.thermal));
}

std::shared_ptr<SystemdNotifier> SystemdNotifier::fromEnvironment() {
    if (!std::getenv("NOTIFY_SOCKET")) return nullptr;  // NOLINT(concurrency-mt-unsafe)
    std::uint64_t usec = 0;
    std::optional<std::chrono::microseconds> interval;
    if (sd_watchdog_enabled(0, &usec) > 0 && usec > 0) {
        interval = std::chrono::microseconds(static_cast<std::int64_t>(usec));
    }
    return std::make_shared<SystemdNotifier>(interval);
}

SystemdNotifier::SystemdNotifier(std::optional<std::chrono::microseconds> watchdogInterval,
                                 Clock clock)
    : watchdogInterval_(watchdogInterval), clock_(std::move(clock)) {}

SystemdNotifier::~SystemdNotifier() {
    static_cast<void>(sd_notify(0, "STOPPING=1"));
}

void SystemdNotifier::ticked(const nlohmann::json& view) {
    const auto stage = view.find("stage");
    if (stage != view.end() && stage->is_string()) stage_ = stage->get<std::string>();
    if (!watchdogInterval_ || !ready_) return;
    const auto now = clock_();
    if (lastPing_ && now - *lastPing_ < *watchdogInterval_ / kPingsPerInterval) return;
    lastPing_ = now;
    static_cast<void>(sd_notify(0, "WATCHDOG=1"));
}

void SystemdNotifier::sampled(const LiveInputs& inputs, Timestamp /*now*/) {
    const std::string status = serviceStatusText(stage_, inputs);
    if (ready_ && status == status_) return;
    status_ = status;
    const std::string message = (ready_ ? "" : "READY=1\n") + std::string("STATUS=") + status;
    ready_ = true;
    static_cast<void>(sd_notify(0, message.c_str()));
}

}  // namespace velmora
