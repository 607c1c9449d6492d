#include "metrics/live_model.hpp"

#include <algorithm>
#include <cmath>

#include "metrics/live_cause.hpp"
#include "metrics/live_forecast.hpp"
#include "metrics/live_gauges.hpp"
#include "metrics/live_lists.hpp"
#include "metrics/live_names.hpp"
#include "metrics/number_text.hpp"

namespace velmora::LiveModel {

std::string_view usageStage(double percent) {
    if (percent < 75) return "normal";
    if (percent < 90) return "warm";
    return "hot";
}

std::string_view tempStage(double celsius) {
    return usageStage(celsius);
}

std::string_view loadStage(double load, int cores) {
    const double perCore = load / std::max(cores, 1);
    if (perCore < 0.7) return "normal";
    if (perCore < 1.0) return "warm";
    return "hot";
}

double thermalFill(Level level) {
    switch (level) {
        case Level::ok:
            return 0.25;
        case Level::warm:
            return 0.5;
        // Hot and extreme deliberately share a fill.
        case Level::hot:
        case Level::extreme:
            return 0.75;
        case Level::blowout:
            return 1.0;
    }
    return 1.0;
}

namespace {

nlohmann::json statusEntry(Level level) {
    return {{"label", label(level)}, {"stage", stageKey(level)}, {"level", rawValue(level)}};
}

nlohmann::json thermalEntry(ThermalState thermal, Level level) {
    return {{"value", thermalName(thermal)},
            {"fill", thermalFill(level)},
            {"stage", stageKey(level)},
            {"ok", true},
            {"label", label(level)}};
}

std::string ramDetail(const std::optional<MemoryInfo>& memory) {
    if (!memory) return std::string(na);
    return fixedText(memory->usedGB, 1) + " of " + fixedText(memory->totalGB, 0) + " GB";
}

nlohmann::json coreLoadList(const std::optional<std::vector<double>>& loads) {
    nlohmann::json list = nlohmann::json::array();
    if (!loads) return list;
    for (const double load : *loads)
        list.push_back(std::llround(std::clamp(load, -1e15, 1e15)));
    return list;
}

nlohmann::json sensorList(const std::vector<NamedTemp>& sensors) {
    nlohmann::json list = nlohmann::json::array();
    for (const NamedTemp& s : sensors) {
        list.push_back(
            {{"name", s.name}, {"value", wholeText(s.celsius) + "°C"}, {"source", s.source}});
    }
    return list;
}

std::string sourceOf(const std::optional<TempReading>& reading) {
    return reading ? reading->source : std::string(na);
}

nlohmann::json sourcesEntry(const LiveInputs& in, Platform platform) {
    return {{"thermal", textsFor(platform).thermalSource},
            {"cpuTemp", sourceOf(in.cpuTemp)},
            {"gpuTemp", sourceOf(in.gpuTemp)},
            {"batteryTemp", sourceOf(in.batteryTemp)}};
}

nlohmann::json peakEntries(const LiveInputs& in) {
    const auto& peak = in.peakCpuTemp;
    return {{"peakState", stateName(in.peakLevel)},
            {"peakLabel", label(in.peakLevel)},
            {"peakTemp", peak ? wholeText(*peak) + "°C" : std::string(na)},
            {"peakTag", peak ? "Peak " + wholeText(*peak) + "°C" : "Peak temp: n/a"}};
}

}  // namespace

nlohmann::json dictionary(const LiveInputs& in, Platform platform) {
    const Level level = liveLevel(in.thermal);
    nlohmann::json d = {
        {"status", statusEntry(level)},
        {"thermal", thermalEntry(in.thermal, level)},
        {"cpuTemp", tempGauge(in.cpuTemp)},
        {"gpuTemp", tempGauge(in.gpuTemp)},
        {"batteryTemp", tempGauge(in.batteryTemp)},
        {"cpu", percentGauge(in.cpuBusy)},
        {"ram", percentGauge(in.ramUsed)},
        {"load", loadGauge(in.load, in.cores)},
        {"cores", in.cores},
        {"gpu", percentGauge(in.gpuLoad)},
        {"memPressure", pressureGauge(in.memPressure)},
        {"ramDetail", ramDetail(in.memory)},
        {"fan", fanGauge(in.fans)},
        {"power", powerGauge(in.power)},
        {"battery", batteryGauge(in.battery)},
        {"coreLoads", coreLoadList(in.coreLoads)},
        {"sensorList", sensorList(in.sensors)},
        {"powerList", powerList(in.powerSources)},
        {"batteryList", batteryList(in.batteries)},
        {"spark", in.cpuHistory},
        {"lowPower", in.lowPower},
        {"live",
         in.forced ? "TEST · thermal state forced (debug build)" : "Live · updates every second"},
        {"foot", footLine(in)},
        {"forced", in.forced},
        {"sources", sourcesEntry(in, platform)},
    };
    d.update(peakEntries(in));
    if (in.forecast) d["forecast"] = forecastEntry(*in.forecast);
    // Nothing is said of the cause while the machine is calm.
    if (in.heatCause && level != Level::ok) d["heatCause"] = heatCauseEntry(*in.heatCause);
    return d;
}

std::string footLine(const LiveInputs& in) {
    std::string line = in.forced ? "TEST · thermal state forced" : "Live · 1 s";
    const auto& reading = in.cpuTemp ? in.cpuTemp : in.gpuTemp;
    const std::string word =
        reading ? reading->source.substr(0, reading->source.find(' ')) : std::string(na);
    line += " · Temps: " + word;
    if (in.lowPower) line += " · Low Power Mode on";
    return line;
}

}  // namespace velmora::LiveModel
