#include "metrics/source_table.hpp"

#include <algorithm>
#include <array>

#include "metrics/live_names.hpp"
#include "metrics/number_text.hpp"

namespace velmora {

namespace {

constexpr std::string_view kLive = "REAL live";
constexpr std::string_view kAbsent = "REAL absent";

SourceRow row(std::string label, const std::optional<std::string>& value, std::string source) {
    return SourceRow{
        .label = std::move(label),
        .value = value.value_or("n/a"),
        .status = std::string(value ? kLive : kAbsent),
        .source = std::move(source),
    };
}

template <typename T, typename Format>
std::optional<std::string> textOf(const std::optional<T>& value, Format format) {
    if (!value) return std::nullopt;
    return format(*value);
}

std::string percentText(double percent) {
    return wholeText(percent) + "%";
}

std::string tempText(const TempReading& reading) {
    return fixedText(reading.celsius, 1) + " °C";
}

std::optional<std::string> fansText(const std::vector<FanReading>& fans) {
    if (fans.empty()) return std::nullopt;
    std::string text;
    for (const FanReading& fan : fans) {
        if (!text.empty()) text += "/";
        text += wholeText(fan.rpm);
    }
    return text + " rpm";
}

std::string memoryText(const MemoryInfo& memory) {
    return fixedText(memory.usedGB, 1) + " of " + fixedText(memory.totalGB, 0) + " GB (" +
           percentText(memory.usedPercent) + ")";
}

SourceRow thermalRow(const std::optional<LiveInputs>& last, const MetricSources& sources) {
    SourceRow thermal =
        row("Thermal state",
            textOf(last, [](const LiveInputs& in) { return std::string(thermalName(in.thermal)); }),
            sources.thermal);
    if (last && last->forced) thermal.status = "TEST forced";
    return thermal;
}

// Every power figure found, not only the headline one, so a GPU's draw is never hidden behind
// the CPU package's.
void appendPowerSourceRows(std::vector<SourceRow>& rows, const LiveInputs& in,
                           const MetricSources& sources) {
    for (std::size_t i = 0; i < in.powerSources.size(); ++i) {
        const PowerReading& p = in.powerSources[i];
        std::string source = p.source;
        if (i < sources.powerFiles.size() && !sources.powerFiles[i].empty()) {
            source += ": " + sources.powerFiles[i];
        }
        rows.push_back(row("Power source", fixedText(p.watts, 1) + " W " + p.label, source));
    }
}

void appendBatteryRows(std::vector<SourceRow>& rows, const LiveInputs& in) {
    for (const BatteryPack& pack : in.batteries) {
        std::string value = pack.info.percent ? percentText(*pack.info.percent) : "n/a";
        if (pack.status) value += " " + *pack.status;
        rows.push_back(row("Battery " + pack.name, value, pack.source));
    }
}

}  // namespace

std::vector<SourceRow> buildSourceTable(const std::optional<LiveInputs>& last,
                                        const MetricSources& sources) {
    const LiveInputs empty{};
    const LiveInputs& in = last ? *last : empty;
    auto loads = [&](const std::vector<double>& cores) {
        return std::to_string(cores.size()) + " cores";
    };
    auto power = [](const PowerReading& p) { return fixedText(p.watts, 1) + " W " + p.label; };
    std::vector<SourceRow> rows{
        thermalRow(last, sources),
        row("CPU busy", textOf(in.cpuBusy, percentText), sources.cpuBusy),
        row("Per-core CPU", textOf(in.coreLoads, loads), sources.perCore),
        row("Load average", textOf(in.load, [](double v) { return fixedText(v, 2); }),
            sources.load),
        row("Memory used", textOf(in.memory, memoryText), sources.memory),
        row("Memory pressure", in.memPressure, sources.memPressure),
        row("CPU temperature", textOf(in.cpuTemp, tempText), sources.cpuTemp),
        row("GPU temperature", textOf(in.gpuTemp, tempText), sources.gpuTemp),
        row("Battery temperature", textOf(in.batteryTemp, tempText), sources.batteryTemp),
        row("GPU load", textOf(in.gpuLoad, percentText), sources.gpuLoad),
        row("Fan RPM", fansText(in.fans), sources.fans),
        row("Power", textOf(in.power, power), sources.power),
    };
    for (const DeviceSource& device : sources.devices)
        rows.push_back(row(device.label, last ? device.value : std::nullopt, device.source));
    appendPowerSourceRows(rows, in, sources);
    appendBatteryRows(rows, in);
    return rows;
}

namespace {

// Column widths count code points, so "°C" lines up with plain ASCII values.
std::size_t displayWidth(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

void appendPadded(std::string& out, const std::string& text, std::size_t width) {
    out += text;
    out.append(width - displayWidth(text) + 2, ' ');
}

}  // namespace

std::string renderSourceTable(const std::vector<SourceRow>& rows) {
    std::vector<SourceRow> all{{"Metric", "Value", "Status", "Source"}};
    all.insert(all.end(), rows.begin(), rows.end());
    std::array<std::size_t, 3> widths{};
    for (const SourceRow& r : all) {
        widths[0] = std::max(widths[0], displayWidth(r.label));
        widths[1] = std::max(widths[1], displayWidth(r.value));
        widths[2] = std::max(widths[2], displayWidth(r.status));
    }
    std::string out;
    for (const SourceRow& r : all) {
        appendPadded(out, r.label, widths[0]);
        appendPadded(out, r.value, widths[1]);
        appendPadded(out, r.status, widths[2]);
        out += r.source + "\n";
    }
    return out;
}

}  // namespace velmora
