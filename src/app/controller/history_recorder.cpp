#include "app/controller/history_recorder.hpp"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace velmora {

namespace {

constexpr std::size_t kEarlyLimit = 600;

std::optional<double> celsiusOf(const std::optional<TempReading>& reading) {
    return reading ? std::optional(reading->celsius) : std::nullopt;
}

std::optional<double> hottestOf(const LiveInputs& inputs) {
    if (!inputs.sensors.empty()) return inputs.sensors.front().celsius;
    const auto cpu = celsiusOf(inputs.cpuTemp);
    const auto gpu = celsiusOf(inputs.gpuTemp);
    if (cpu && gpu) return std::max(*cpu, *gpu);
    return cpu ? cpu : gpu;
}

std::optional<double> fastestFan(const std::vector<FanReading>& fans) {
    std::optional<double> fastest;
    for (const auto& fan : fans)
        fastest = std::max(fastest.value_or(fan.rpm), fan.rpm);
    return fastest;
}

}  // namespace

/// What the worker owns: the open file and the last write problem, said once.
struct HistoryRecorder::Disk {
    std::unique_ptr<HistoryFile> file;
    std::string lastProblem;
};

HistorySample historySample(const LiveInputs& inputs, Timestamp now, std::optional<Level> level) {
    HistorySample sample;
    sample.time = static_cast<std::int64_t>(std::floor(now.secondsSinceEpoch));
    sample.level = level;
    sample.thermal = inputs.thermal;
    sample.cpuTempC = celsiusOf(inputs.cpuTemp);
    sample.gpuTempC = celsiusOf(inputs.gpuTemp);
    sample.hottestC = hottestOf(inputs);
    sample.cpuPercent = inputs.cpuBusy;
    if (inputs.power) sample.powerW = inputs.power->watts;
    sample.fanRpm = fastestFan(inputs.fans);
    if (inputs.battery && inputs.battery->percent) sample.batteryPercent = *inputs.battery->percent;
    return sample;
}

HistoryRecorder::HistoryRecorder(std::filesystem::path dir, std::string machineRoot, Post post,
                                 LogSink log)
    : post_(std::move(post)), log_(std::move(log)), disk_(std::make_shared<Disk>()) {
    std::weak_ptr<HistoryRecorder*> weak = self_;
    worker_.post(
        [disk = disk_, dir = std::move(dir), root = std::move(machineRoot), post = post_, weak] {
            auto opened = HistoryFile::open(dir, machineIdentity(root));
            disk->file = std::move(opened.file);
            auto store = std::make_shared<std::unique_ptr<HistoryStore>>(std::move(opened.store));
            post([weak, store, notes = std::move(opened.notes)] {
                if (const auto self = weak.lock()) (*self)->adopt(std::move(*store), notes);
            });
        });
}

HistoryRecorder::~HistoryRecorder() {
    if (loaded_) write(true);
}

void HistoryRecorder::adopt(std::unique_ptr<HistoryStore> loaded,
                            const std::vector<std::string>& notes) {
    for (const auto& note : notes) {
        if (log_) log_(note);
    }
    for (const auto& [sample, busiest] : early_)
        loaded->add(sample, busiest);
    early_.clear();
    early_.shrink_to_fit();
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t)
        written_.at(t) = loaded->tier(t).pushed();
    store_ = std::move(loaded);
    loaded_ = true;
    write(false);
}

void HistoryRecorder::ticked(const nlohmann::json& view) {
    // A rehearsal shows an emergency that this machine does not have: history keeps the real one.
    if (view.value("sim", false)) return;
    const auto level = levelFromRaw(view.value("level", -1));
    const bool rise = level && (!level_ || rawValue(*level) > rawValue(*level_));
    const bool countdown = view.value("state", std::string()) == "countdown";
    const bool countdownStarts = countdown && !inCountdown_;
    level_ = level;
    inCountdown_ = countdown;
    if ((rise && rawValue(*level) > rawValue(Level::ok)) || countdownStarts) write(true);
}

void HistoryRecorder::sampled(const LiveInputs& inputs, Timestamp now) {
    // The heat cause is measured only above NORMAL, so a calm minute keeps no name.
    std::optional<std::string_view> busiest;
    if (inputs.heatCause && !inputs.heatCause->processes.empty()) {
        busiest = inputs.heatCause->processes.front().name;
    }
    record(historySample(inputs, now, level_), busiest);
}

void HistoryRecorder::record(const HistorySample& sample, std::optional<std::string_view> busiest) {
    if (!loaded_) {
        if (early_.size() < kEarlyLimit) {
            early_.emplace_back(sample,
                                busiest ? std::optional<std::string>(*busiest) : std::nullopt);
        }
        return;
    }
    store_->add(sample, busiest);
    // A clock set back writes at once too, rather than waiting for the old time to come round.
    if (!lastWrite_ || sample.time < *lastWrite_ ||
        sample.time - *lastWrite_ >= writeEvery.count()) {
        lastWrite_ = sample.time;
        write(false);
    }
}

void HistoryRecorder::write(bool sync) {
    if (!loaded_) return;
    auto records = history_file::changedRecords(*store_, written_);
    std::weak_ptr<HistoryRecorder*> weak = self_;
    worker_.post([disk = disk_, records = std::move(records), sync, post = post_, weak] {
        if (!disk->file) return;
        const auto error = disk->file->write(records, sync);
        const std::string problem = error ? error->message : std::string();
        if (problem == disk->lastProblem) return;
        disk->lastProblem = problem;
        // Said once per change, and on the loop, where the log belongs.
        const std::string line = error
                                     ? "history: " + problem + "; the points stay in memory"
                                     : "history: writing " + disk->file->path().string() + " again";
        post([weak, line] {
            if (const auto self = weak.lock(); self && (*self)->log_) (*self)->log_(line);
        });
    });
}

}  // namespace velmora
