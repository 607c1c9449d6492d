#include "app/core/switch_table.hpp"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::array<Switch, 15> switches{{
    {"--data-dir", "PATH", "",
     "Keep heat.log, settings.json and the shutdown marker in PATH (default: "
     "$XDG_DATA_HOME/velmora-heat-monitor, else ~/.local/share/velmora-heat-monitor). A "
     "directory that another user owns or may write to is refused."},
    {"--consent", "on|off", "on off",
     "Record the answer to the automatic-shutdown question, as the consent page would, and "
     "keep running."},
    {"--headless", "", "", "Run without a window, even when a display is available."},
    {"--mute", "", "", "Play no sounds; write each cue to the log instead."},
    {"--no-menu-item", "", "", "Do not add the heat item to the menu bar or tray."},
    {"--dry-run-shutdown", "", "", "Never power off: log what would be done (TEST MODE)."},
    {"--test-emergency", "", "", "Run a simulated emergency right away (implies a dry run)."},
    {"--simulate-denied", "", "", "With a dry run: pretend the power-off permission is refused."},
    {"--real-probe", "", "", "With a dry run: ask the system whether power-off is permitted."},
    {"--force-thermal", "NAME", "nominal fair serious critical",
     "Pretend the thermal state is NAME (nominal, fair, serious or critical), for tests and "
     "demonstrations."},
    {"--diagnose", "", "", "Print the sensor sources and one live snapshot, then exit."},
    {"--metrics-file", "PATH", "",
     "After every sample, write the live state to PATH in the Prometheus text format, for "
     "node_exporter's textfile collector (PATH should end in .prom)."},
    {"--export-history", "FILE", "",
     "Write the kept history of the data directory to FILE as CSV ('-' for standard output), "
     "then exit. Safe while a watchdog runs on the same directory."},
    {"--help", "", "", "Print this text and exit."},
    {"--version", "", "", "Print the version and exit."},
}};

bool sameIgnoringAsciiCase(std::string_view a, std::string_view b) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, [&](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace

bool Switch::accepts(std::string_view value) const {
    if (choices.empty()) return true;
    std::string_view rest = choices;
    while (!rest.empty()) {
        const auto blank = rest.find(' ');
        if (sameIgnoringAsciiCase(rest.substr(0, blank), value)) return true;
        rest = blank == std::string_view::npos ? std::string_view() : rest.substr(blank + 1);
    }
    return false;
}

std::span<const Switch> switchTable() {
    return switches;
}

const Switch* findSwitch(std::string_view name) {
    const auto found = std::ranges::find(switches, name, &Switch::name);
    return found == switches.end() ? nullptr : &*found;
}

}  // namespace velmora
