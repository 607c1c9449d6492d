#include "metrics/linux/linux_cause_reader.hpp"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kGpuRows = 3;

}  // namespace

LinuxCauseReader::LinuxCauseReader(const std::string& root, LoadGpu loadGpu,
                                   ProcessScanner::OpenAt openAt)
    : processes_(root, std::move(openAt)), services_(root), loadGpu_(std::move(loadGpu)) {}

HeatCause LinuxCauseReader::scan(MonoTime windowStart, MonoTime now) {
    HeatCause cause;
    cause.processes = processes_.scan(windowStart, now);
    services_.keep(now, true);
    cause.services = services_.shares(windowStart);
    cause.gpu = gpuRows();
    return cause;
}

// Named from the process scan just made, so that no file is opened for them.
std::vector<ProcessShare> LinuxCauseReader::gpuRows() {
    if (loadGpu_) {
        gpu_ = loadGpu_();
        loadGpu_ = nullptr;  // tried once; a machine without the library stays without it
    }
    std::vector<ProcessShare> rows;
    if (!gpu_) return rows;
    for (const GpuProcessUse& use : gpu_->processes()) {
        if (!use.percent) continue;
        const int pid = static_cast<int>(use.pid);
        rows.push_back(ProcessShare{processes_.nameOf(pid).value_or("pid " + std::to_string(pid)),
                                    pid, *use.percent});
    }
    std::sort(rows.begin(), rows.end(), [](const ProcessShare& a, const ProcessShare& b) {
        return a.percent != b.percent ? a.percent > b.percent : a.pid < b.pid;
    });
    if (rows.size() > kGpuRows) rows.resize(kGpuRows);
    return rows;
}

}  // namespace velmora
