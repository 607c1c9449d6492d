#include <algorithm>

#include "metrics/linux/linux_backend.hpp"
#include "metrics/linux/meminfo.hpp"

namespace velmora {

namespace {

std::optional<std::vector<double>> coreLoads(const std::vector<CpuTimes>& previous,
                                             const std::vector<CpuTimes>& current) {
    std::vector<double> loads;
    loads.reserve(current.size());
    for (std::size_t i = 0; i < current.size(); ++i) {
        const auto load = busyPercent(previous[i], current[i]);
        if (!load) return std::nullopt;
        loads.push_back(*load);
    }
    return loads;
}

}  // namespace

void LinuxBackend::sampleCpu(LiveInputs& in, Timestamp now) {
    if (!inv_.procStat) return;
    const auto text = readText(*inv_.procStat, procBuffer_);
    if (!text) return;
    // Too soon after the counters last read (the start-up sample right after priming): keep
    // the earlier counters as the baseline and report no load rather than noise.
    const Seconds span = lastStatAt_ ? now - *lastStatAt_ : Seconds::zero();
    if (lastStat_ && span >= Seconds::zero() && span < minimumCpuSpan) return;
    parseProcStat(*text, stat_);
    if (lastStat_ && lastStat_->total && stat_.total) {
        in.cpuBusy = busyPercent(*lastStat_->total, *stat_.total);
    }
    // A CPU going on- or offline changes the lines; that sample has no per-core figures, and
    // neither has one where any core's figure cannot be had.
    if (lastStat_ && !stat_.perCpu.empty() && lastStat_->perCpu.size() == stat_.perCpu.size()) {
        in.coreLoads = coreLoads(lastStat_->perCpu, stat_.perCpu);
    }
    if (!lastStat_) lastStat_.emplace();
    std::swap(*lastStat_, stat_);
    lastStatAt_ = now;
}

void LinuxBackend::sampleMemory(LiveInputs& in) {
    if (!inv_.meminfo) return;
    const auto text = readText(*inv_.meminfo, smallBuffer_);
    if (!text) return;
    in.memory = parseMeminfo(*text);
    if (!in.memory || !inv_.pressure) return;
    if (const auto psi = readText(*inv_.pressure, smallBuffer_)) {
        in.memory->pressure = memoryPressureFromPsi(*psi);
    }
}

void LinuxBackend::sampleLoad(LiveInputs& in) {
    if (inv_.loadavg) {
        if (const auto text = readText(*inv_.loadavg, smallBuffer_)) {
            in.load = parseLoadAverage(*text);
        }
    }
    std::optional<int> online;
    if (inv_.cpuOnline) {
        if (const auto text = readText(*inv_.cpuOnline, smallBuffer_)) online = countCpuList(*text);
    }
    const auto counted = lastStat_ ? static_cast<int>(lastStat_->perCpu.size()) : 0;
    in.cores = online.value_or(std::max(counted, 1));
}

void LinuxBackend::sampleFans(LiveInputs& in) {
    int index = 0;
    for (const HwmonFan& fan : inv_.hwmon.fans) {
        const int position = index++;
        const auto rpm = readInteger(fan.input);
        if (!rpm || !plausibleRPM(static_cast<double>(*rpm))) continue;
        auto limit = [](std::optional<double> v) {
            return v && plausibleRPM(*v) ? v : std::nullopt;
        };
        in.fans.push_back(
            {position, static_cast<double>(*rpm), limit(fan.minRPM), limit(fan.maxRPM)});
    }
}

void LinuxBackend::sampleGpuLoad(LiveInputs& in) {
    auto consider = [&](double percent) {
        if (percent < 0.0 || percent > 100.0) return;
        if (!in.gpuLoad || percent > *in.gpuLoad) in.gpuLoad = percent;
    };
    for (const SysfsFile& file : inv_.gpuBusy) {
        if (const auto busy = readInteger(file)) consider(static_cast<double>(*busy));
    }
    for (const VendorGpu& gpu : vendorGpus_) {
        if (gpu.busyPercent) consider(*gpu.busyPercent);
    }
}

bool LinuxBackend::lowPowerMode() {
    if (inv_.platformProfile) {
        if (const auto text = readText(*inv_.platformProfile, smallBuffer_)) {
            if (trimmed(*text) == "low-power") return true;
        }
    }
    // The daemon's public property, never its private state file.
    if (profiles_) {
        if (const auto profile = profiles_->activeProfile()) return *profile == "power-saver";
    }
    return false;
}

}  // namespace velmora
