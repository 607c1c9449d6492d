#include "app/fleet/metrics_file.hpp"

#include <cstring>
#include <nlohmann/json.hpp>

#include "os/replace_file.hpp"

namespace velmora {

namespace {

constexpr int kEmergencyLevel = 4;

std::string reasonText(int error) {
    return std::strerror(error);  // NOLINT(concurrency-mt-unsafe): main loop only
}

}  // namespace

MetricsFile::MetricsFile(std::filesystem::path path, LogSink log, Limits limits)
    : path_(std::move(path)), log_(std::move(log)), limits_(std::move(limits)) {
    // What an earlier run killed mid-write left beside the file.
    static_cast<void>(removeStrayTemporariesOf(path_.parent_path(), {path_.filename().string()}));
}

void MetricsFile::ticked(const nlohmann::json& view) {
    // A simulated emergency is a test of the presentation, not an emergency of this machine.
    const bool sim = view.value("sim", false);
    const int level = view.value("level", -1);
    figures_.level = level >= 0 ? std::optional(level) : std::nullopt;
    figures_.autoShutdown = view.value("autoShutdown", false);
    figures_.consentRecorded = !view.value("consentNeeded", true);
    const bool emergency = !sim && level == kEmergencyLevel;
    const bool countdown = !sim && view.value("state", std::string()) == "countdown";
    if (emergency && !inEmergency_) ++figures_.emergencies;
    if (countdown && !inCountdown_) ++figures_.countdowns;
    inEmergency_ = emergency;
    inCountdown_ = countdown;
    figures_.countdownRemaining.reset();
    if (countdown) figures_.countdownRemaining = view.value("remaining", std::int64_t{0});
}

void MetricsFile::sampled(const LiveInputs& inputs, Timestamp now) {
    const auto text =
        fleetMetricsText(inputs, figures_, limits_ ? limits_() : std::vector<ThermalLimit>{}, now);
    const auto problem = write(text);
    if (problem && *problem != lastProblem_ && log_) {
        log_("metrics: could not write " + path_.string() + ": " + *problem);
    } else if (!problem && !lastProblem_.empty() && log_) {
        log_("metrics: writing " + path_.string() + " again");
    }
    lastProblem_ = problem.value_or("");
}

std::optional<std::string> MetricsFile::write(const std::string& text) const {
    // Rewritten after every sample: a power cut may lose it, a reader must never see half of
    // it, and the collector runs as another user. The collector reads only names ending in
    // ".prom", so the temporary name is never read.
    if (const auto failed = replaceFile(path_, text, {.mode = 0644, .durable = false})) {
        return reasonText(failed->code);
    }
    return std::nullopt;
}

}  // namespace velmora
