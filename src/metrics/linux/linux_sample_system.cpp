#include <algorithm>

#include "metrics/linux/linux_backend.hpp"
#include "metrics/linux/meminfo.hpp"

namespace velmora {

namespace {

bool hasLine(std::string_view text, std::string_view wanted) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (trimmed(text.substr(0, end)) == wanted) return true;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return false;
}

}  // namespace

void LinuxBackend::sampleCpu(LiveInputs& in) {
    if (!inv_.procStat) return;
    const auto text = readText(*inv_.procStat, procBuffer_);
    if (!text) return;
    parseProcStat(*text, stat_);
    if (lastStat_ && lastStat_->total && stat_.total) {
        in.cpuBusy = busyPercent(*lastStat_->total, *stat_.total);
    }
    // A CPU going on- or offline changes the lines; that sample has no per-core figures.
    if (lastStat_ && !stat_.perCpu.empty() && lastStat_->perCpu.size() == stat_.perCpu.size()) {
        std::vector<double> loads;
        loads.reserve(stat_.perCpu.size());
        for (std::size_t i = 0; i < stat_.perCpu.size(); ++i) {
            loads.push_back(busyPercent(lastStat_->perCpu[i], stat_.perCpu[i]).value_or(0.0));
        }
        in.coreLoads = std::move(loads);
    }
    if (!lastStat_) lastStat_.emplace();
    std::swap(*lastStat_, stat_);
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
    if (inv_.powerProfilesState) {
        if (const auto text = readText(*inv_.powerProfilesState, smallBuffer_)) {
            return hasLine(*text, "Profile=power-saver");
        }
    }
    return false;
}

}  // namespace velmora
