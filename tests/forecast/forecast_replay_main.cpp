// forecast_replay --limit 100 < series.csv: replays "t,celsius" lines through the watchdog's
// forecaster and prints "t,eta" for each, eta in seconds or "none". For testing and tuning.
#include <charconv>
#include <cmath>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "forecast/replay.hpp"

namespace {

constexpr int kBadInput = 2;

int usage(std::string_view problem) {
    std::cerr << "forecast_replay: " << problem << "\n"
              << "usage: forecast_replay --limit CELSIUS < series.csv\n";
    return kBadInput;
}

}  // namespace

int main(int argc, char** argv) {
    std::optional<double> limit;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];  // NOLINT(*-pointer-arithmetic): main's arguments
        if (arg != "--limit") return usage("unknown argument '" + std::string(arg) + "'");
        if (i + 1 >= argc) return usage("--limit needs a temperature in °C");
        const std::string_view value = argv[++i];  // NOLINT(*-pointer-arithmetic)
        double parsed = 0.0;
        const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), parsed);
        if (ec != std::errc() || end != value.data() + value.size() || !std::isfinite(parsed)) {
            return usage("--limit must be a number, got '" + std::string(value) + "'");
        }
        limit = parsed;
    }
    if (!limit) return usage("--limit is required");
    const auto input = velmora::testing::readReplayInput(std::cin);
    if (input.problem) {
        std::cerr << "forecast_replay: " << *input.problem << "\n";
        return kBadInput;
    }
    velmora::testing::writeReplay(std::cout, input.samples,
                                  velmora::testing::replayEtas(input.samples, *limit));
    return std::cout.good() ? 0 : 1;
}
