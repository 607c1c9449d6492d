#include "forecast/replay.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <istream>
#include <ostream>

namespace velmora::testing {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

std::optional<double> number(std::string_view text) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0.0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (!std::isfinite(value)) return std::nullopt;
    return value;
}

std::string secondsText(double seconds) {
    std::array<char, 32> text{};
    const auto [end, ec] = std::to_chars(text.data(), text.data() + text.size(), seconds);
    return ec == std::errc() ? std::string(text.data(), end) : std::string("?");
}

std::string quoted(std::string_view text) {
    constexpr std::size_t kShown = 60;
    std::string shown(text.substr(0, kShown));
    if (text.size() > kShown) shown += "…";
    return "\"" + shown + "\"";
}

}  // namespace

ReplayInput readReplayInput(std::istream& in) {
    ReplayInput input;
    std::string line;
    int number_ = 0;
    while (std::getline(in, line)) {
        ++number_;
        const std::string_view text = trimmed(line);
        if (text.empty()) continue;
        const auto comma = text.find(',');
        const auto t =
            comma == std::string_view::npos ? std::nullopt : number(text.substr(0, comma));
        const auto celsius =
            comma == std::string_view::npos ? std::nullopt : number(text.substr(comma + 1));
        const std::string where = "line " + std::to_string(number_) + ": ";
        if (!t || !celsius) {
            input.problem =
                where + "expected \"seconds,celsius\" (two numbers), got " + quoted(text);
            return input;
        }
        if (!input.samples.empty() && *t < input.samples.back().t) {
            input.problem = where + "time goes backwards (" + secondsText(*t) + " s after " +
                            secondsText(input.samples.back().t) + " s)";
            return input;
        }
        input.samples.push_back({*t, *celsius});
    }
    if (input.samples.empty()) input.problem = "no readings: the input is empty";
    return input;
}

std::vector<std::optional<double>> replayEtas(const std::vector<ReplaySample>& samples,
                                              double limitC) {
    Forecaster forecaster;
    std::vector<std::optional<double>> etas;
    etas.reserve(samples.size());
    for (const ReplaySample& sample : samples) {
        const MonoTime at = MonoTime::fromSeconds(sample.t);
        forecaster.add(at, sample.celsius, limitC);
        const auto forecast = forecaster.current(at);
        etas.push_back(forecast && forecast->kind == ForecastKind::critical && forecast->eta
                           ? std::optional(forecast->eta->count())
                           : std::nullopt);
    }
    return etas;
}

void writeReplay(std::ostream& out, const std::vector<ReplaySample>& samples,
                 const std::vector<std::optional<double>>& etas) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::array<char, 32> t{};
        const auto [end, ec] = std::to_chars(t.data(), t.data() + t.size(), samples[i].t);
        out << std::string_view(t.data(),
                                ec == std::errc() ? static_cast<std::size_t>(end - t.data()) : 0)
            << ',';
        if (i < etas.size() && etas[i]) {
            out << std::lround(*etas[i]) << '\n';
        } else {
            out << "none\n";
        }
    }
}

}  // namespace velmora::testing
