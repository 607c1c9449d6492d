// The live dashboard's JSON built from whatever the sensors reported: any numbers (NaN, infinities,
// huge values), any counts and any sensor names and sources, valid UTF-8 or not. The text is either
// "{}" or a JSON object with all 29 keys; with finite numbers and valid texts it is never "{}".

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

#include "fuzz_support.hpp"
#include "metrics/live_model.hpp"
#include "utf8_reference.hpp"

namespace {

using velmora::LiveInputs;
using velmora::fuzz::require;

/// Builds a snapshot from the input and remembers whether everything in it was well-behaved.
class SnapshotReader {
  public:
    explicit SnapshotReader(velmora::fuzz::ByteReader input) : in_(input) {}

    [[nodiscard]] bool tame() const { return tame_; }

    double number() {
        const double value = in_.takeDouble();
        tame_ = tame_ && std::isfinite(value);
        return value;
    }
    std::optional<double> maybeNumber() {
        if (!in_.takeBool()) return std::nullopt;
        return number();
    }
    std::string text() {
        std::string value(in_.takeBytes(in_.take<std::uint8_t>() % 24U));
        tame_ = tame_ && velmora::fuzz::wellFormedUtf8(value);
        return value;
    }
    std::optional<velmora::TempReading> maybeReading() {
        if (!in_.takeBool()) return std::nullopt;
        return velmora::TempReading{number(), text()};
    }
    std::size_t count(std::size_t most) { return in_.take<std::uint8_t>() % (most + 1); }
    bool flag() { return in_.takeBool(); }
    template <typename T>
    T raw() {
        return in_.take<T>();
    }

  private:
    velmora::fuzz::ByteReader in_;
    bool tame_ = true;
};

void readSystemRecords(SnapshotReader& r, LiveInputs& in) {
    if (r.flag()) in.memory = velmora::MemoryInfo{r.number(), r.number(), r.number(), r.text()};
    if (r.flag()) in.memPressure = r.text();
    for (std::size_t n = r.count(4); n > 0; --n) {
        in.fans.push_back({r.raw<int>(), r.number(), r.maybeNumber(), r.maybeNumber()});
    }
    if (r.flag()) in.power = velmora::PowerReading{r.number(), r.text(), r.text()};
    if (r.flag()) {
        in.battery = velmora::BatteryInfo{};
        if (r.flag()) in.battery->percent = r.raw<int>();
        if (r.flag()) in.battery->charging = r.flag();
        if (r.flag()) in.battery->onAC = r.flag();
        in.battery->amperageMA = r.maybeNumber();
        in.battery->voltageMV = r.maybeNumber();
    }
    for (std::size_t n = r.count(8); n > 0; --n)
        in.sensors.push_back({r.text(), r.number(), r.text()});
    for (std::size_t n = r.count(4); n > 0; --n)
        in.powerSources.push_back({r.number(), r.text(), r.text()});
    for (std::size_t n = r.count(3); n > 0; --n) {
        velmora::BatteryPack pack{.name = r.text(), .source = r.text()};
        if (r.flag()) pack.status = r.text();
        if (r.flag()) pack.info.percent = r.raw<int>();
        in.batteries.push_back(std::move(pack));
    }
}

LiveInputs readSnapshot(SnapshotReader& r) {
    LiveInputs in;
    in.thermal = static_cast<velmora::ThermalState>(r.raw<std::uint8_t>() % 6U);
    in.cpuBusy = r.maybeNumber();
    in.load = r.maybeNumber();
    in.cores = r.raw<int>();
    in.ramUsed = r.maybeNumber();
    in.cpuTemp = r.maybeReading();
    in.gpuTemp = r.maybeReading();
    in.batteryTemp = r.maybeReading();
    in.peakLevel = static_cast<velmora::Level>(r.raw<std::uint8_t>() % 5U);
    in.peakCpuTemp = r.maybeNumber();
    for (std::size_t n = r.count(60); n > 0; --n)
        in.cpuHistory.push_back(r.number());
    in.lowPower = r.flag();
    in.forced = r.flag();
    if (r.flag()) {
        in.coreLoads.emplace();
        for (std::size_t n = r.count(16); n > 0; --n)
            in.coreLoads->push_back(r.number());
    }
    in.gpuLoad = r.maybeNumber();
    readSystemRecords(r, in);
    return in;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SnapshotReader reader{velmora::fuzz::ByteReader(data, size)};
    const LiveInputs inputs = readSnapshot(reader);
    for (const auto platform : {velmora::Platform::gnuLinux, velmora::Platform::macos}) {
        const std::string text = velmora::LiveModel::json(inputs, platform);
        require(velmora::fuzz::wellFormedUtf8(text), "the live JSON is UTF-8 text");
        if (text == "{}") {
            require(!reader.tame(), "finite numbers and valid texts always make a document");
            continue;
        }
        const auto document = nlohmann::json::parse(text, nullptr, false);
        require(document.is_object() && document.size() == 29, "the document has all 29 keys");
        require(document.dump() == text, "the document is written with sorted keys, compactly");
    }
    return 0;
}
