// The whole Linux backend on a /proc and /sys tree whose files say anything at all: a driver's
// odd label, a firmware's broken battery figures, a hand-edited power-profiles state.ini. The
// input is the text of each file in kFiles, NUL-separated (a missing piece is a missing file),
// then a second round of texts written in place before the next sample (an empty piece leaves the
// file as it was). Every figure of the samples stays finite and within its range, every text is
// valid UTF-8, and the dashboard's JSON is always a full document.

#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "fuzz_support.hpp"
#include "linux_sample_checks.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/live_model.hpp"

namespace {

namespace fs = std::filesystem;
using velmora::fuzz::ByteReader;

constexpr std::array<std::string_view, 45> kFiles{
    "proc/stat",
    "proc/meminfo",
    "proc/pressure/memory",
    "proc/loadavg",
    "sys/devices/system/cpu/online",
    "sys/class/hwmon/hwmon0/name",
    "sys/class/hwmon/hwmon0/temp1_input",
    "sys/class/hwmon/hwmon0/temp1_label",
    "sys/class/hwmon/hwmon0/temp1_max",
    "sys/class/hwmon/hwmon0/temp1_max_hyst",
    "sys/class/hwmon/hwmon0/temp1_crit",
    "sys/class/hwmon/hwmon0/temp1_crit_hyst",
    "sys/class/hwmon/hwmon0/temp1_emergency",
    "sys/class/hwmon/hwmon0/temp2_input",
    "sys/class/hwmon/hwmon0/temp2_label",
    "sys/class/hwmon/hwmon0/fan1_input",
    "sys/class/hwmon/hwmon0/fan1_min",
    "sys/class/hwmon/hwmon0/fan1_max",
    "sys/class/hwmon/hwmon1/device/name",
    "sys/class/hwmon/hwmon1/device/temp1_input",
    "sys/class/thermal/thermal_zone0/type",
    "sys/class/thermal/thermal_zone0/temp",
    "sys/class/thermal/thermal_zone0/trip_point_0_type",
    "sys/class/thermal/thermal_zone0/trip_point_0_temp",
    "sys/class/thermal/thermal_zone0/trip_point_0_hyst",
    "sys/class/thermal/thermal_zone0/trip_point_1_type",
    "sys/class/thermal/thermal_zone0/trip_point_1_temp",
    "sys/devices/system/cpu/cpu0/thermal_throttle/package_throttle_count",
    "sys/class/power_supply/BAT0/type",
    "sys/class/power_supply/BAT0/capacity",
    "sys/class/power_supply/BAT0/status",
    "sys/class/power_supply/BAT0/current_now",
    "sys/class/power_supply/BAT0/power_now",
    "sys/class/power_supply/BAT0/voltage_now",
    "sys/class/power_supply/BAT0/temp",
    "sys/class/power_supply/BAT0/energy_now",
    "sys/class/power_supply/BAT0/energy_full",
    "sys/class/power_supply/AC/type",
    "sys/class/power_supply/AC/online",
    "sys/class/powercap/intel-rapl:0/energy_uj",
    "sys/class/powercap/intel-rapl:0/max_energy_range_uj",
    "sys/class/powercap/intel-rapl:0/name",
    "sys/class/drm/card0/device/gpu_busy_percent",
    "sys/firmware/acpi/platform_profile",
    "var/lib/power-profiles-daemon/state.ini",
};

/// One scratch tree for the whole run, in memory when /dev/shm is there; removed at exit.
class ScratchTree {
  public:
    ScratchTree() {
        const fs::path base =
            access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path();
        std::string pattern = (base / "velmora-fuzz-tree-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) velmora::fuzz::fail("no scratch directory");
        root_ = pattern;
    }
    ~ScratchTree() {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    ScratchTree(const ScratchTree&) = delete;
    ScratchTree& operator=(const ScratchTree&) = delete;

    [[nodiscard]] const fs::path& root() const { return root_; }

  private:
    fs::path root_;
};

const fs::path& scratchRoot() {
    static const ScratchTree tree;
    return tree.root();
}

void writeFile(const fs::path& file, std::string_view text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(text.data(), static_cast<long>(text.size()));
}

void writeFirstRound(const fs::path& root, ByteReader& input) {
    for (const std::string_view file : kFiles) {
        if (input.empty()) return;
        writeFile(root / file, input.takeUntil('\0'));
    }
}

void writeSecondRound(const fs::path& root, ByteReader& input) {
    for (const std::string_view file : kFiles) {
        if (input.empty()) return;
        const std::string_view text = input.takeUntil('\0');
        if (!text.empty()) writeFile(root / file, text);
    }
}

void checkDocument(const velmora::LiveInputs& in) {
    using velmora::fuzz::require;
    const std::string text = velmora::LiveModel::json(in);
    require(text != "{}", "the dashboard always gets a document from real readings");
    const auto document = nlohmann::json::parse(text, nullptr, false);
    require(document.is_object() && document.size() == 29, "the document has all 29 keys");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fs::path& root = scratchRoot();
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(root, ignored))
        fs::remove_all(entry.path(), ignored);
    ByteReader input(data, size);
    writeFirstRound(root, input);

    constexpr velmora::Timestamp kStart = velmora::Timestamp::fromSeconds(1'700'000'000);
    velmora::LinuxBackend backend(root.string());
    backend.prime(kStart);
    const velmora::LiveInputs first = backend.sample(kStart + std::chrono::seconds(1));
    velmora::fuzz::checkLinuxSample(first, root);
    checkDocument(first);

    writeSecondRound(root, input);
    const velmora::LiveInputs second = backend.sample(kStart + std::chrono::seconds(2));
    velmora::fuzz::checkLinuxSample(second, root);
    checkDocument(second);
    velmora::fuzz::checkLinuxSummary(backend.sensorSummary(), backend.sources());
    return 0;
}
