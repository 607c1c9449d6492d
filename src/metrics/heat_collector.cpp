#include "metrics/heat_collector.hpp"

#include <algorithm>
#include <utility>

#include "metrics/live_names.hpp"

namespace velmora {

namespace {

// The temperature whose climb marks the start of the heat: the hottest one read.
std::optional<double> hottestC(const LiveInputs& inputs) {
    std::optional<double> hottest;
    const auto consider = [&hottest](double celsius) {
        hottest = hottest ? std::max(*hottest, celsius) : celsius;
    };
    if (inputs.cpuTemp) consider(inputs.cpuTemp->celsius);
    if (inputs.gpuTemp) consider(inputs.gpuTemp->celsius);
    if (!inputs.sensors.empty()) consider(inputs.sensors.front().celsius);
    return hottest;
}

}  // namespace

HeatCollector::HeatCollector(std::unique_ptr<MetricsBackend> backend, Timestamp now)
    : backend_(std::move(backend)) {
    backend_->prime(now);
}

LiveInputs HeatCollector::sample(Timestamp now) {
    LiveInputs inputs = backend_->sample(now);
    if (forcedThermal) inputs.thermal = *forcedThermal;
    const Level level = liveLevel(inputs.thermal);
    if (peak_ < level) peak_ = level;
    rememberCpuLoad(inputs.cpuBusy);
    rememberCpuTemp(inputs.cpuTemp);

    inputs.ramUsed = inputs.memory ? std::optional(inputs.memory->usedPercent) : std::nullopt;
    inputs.memPressure = inputs.memory ? inputs.memory->pressure : std::nullopt;
    inputs.peakLevel = peak_;
    inputs.peakCpuTemp = peakCpuTemp_;
    inputs.cpuHistory = cpuHistory_;
    inputs.forced = forcedThermal.has_value();
    inputs.forecast = forecast_.sample(backend_->limitReadings(), monoClock());
    if (cause_) inputs.heatCause = cause_->observe(level, hottestC(inputs), MonoTime::now());

    last_ = inputs;
    lastAt_ = now;
    return inputs;
}

void HeatCollector::rememberCpuLoad(std::optional<double> cpuBusy) {
    if (!cpuBusy) return;
    cpuHistory_.push_back(*cpuBusy);
    if (cpuHistory_.size() > historyLength) {
        cpuHistory_.erase(cpuHistory_.begin(),
                          cpuHistory_.end() - static_cast<std::ptrdiff_t>(historyLength));
    }
}

void HeatCollector::rememberCpuTemp(const std::optional<TempReading>& cpuTemp) {
    if (!cpuTemp) return;
    const double celsius = cpuTemp->celsius;
    // A first reading of 0 or below is a sensor's "no value", not a temperature worth keeping.
    if (!peakCpuTemp_) {
        if (celsius > 0) peakCpuTemp_ = celsius;
    } else if (celsius > *peakCpuTemp_) {
        peakCpuTemp_ = celsius;
    }
}

std::optional<ThermalState> HeatCollector::currentThermal(Timestamp now) const {
    if (!last_ || !lastAt_) return std::nullopt;
    if (now - *lastAt_ < staleAfter) return last_->thermal;
    return std::nullopt;
}

std::vector<std::string> HeatCollector::takeNotices() {
    auto notices = backend_->takeNotices();
    for (std::string& line : forecast_.takeNotices())
        notices.push_back(std::move(line));
    return notices;
}

void HeatCollector::assumeThermal(ThermalState previous) {
    backend_->assumeThermal(previous);
    if (cause_) cause_->assumeLevel(liveLevel(previous));
}

std::string HeatCollector::sensorSummary() {
    return backend_->sensorSummary();
}

std::vector<SourceRow> HeatCollector::sourceTable() const {
    return buildSourceTable(last_, backend_->sources());
}

}  // namespace velmora
