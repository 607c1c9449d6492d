#include "app/fleet/metrics_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"

namespace velmora {

namespace {

constexpr int kEmergencyLevel = 4;

std::string reasonText(int error) {
    return std::strerror(error);  // NOLINT(concurrency-mt-unsafe): main loop only
}

}  // namespace

MetricsFile::MetricsFile(std::filesystem::path path, LogSink log, Limits limits)
    : path_(std::move(path)), log_(std::move(log)), limits_(std::move(limits)) {}

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
    // The collector reads only names ending in ".prom", so the temporary name is never read.
    const std::filesystem::path temporary = path_.string() + ".tmp";
    {
        const UniqueFd fd(
            ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644));
        if (!fd.valid()) return reasonText(errno);
        if (const int error = writeAll(fd.get(), text); error != 0) {
            static_cast<void>(::unlink(temporary.c_str()));
            return reasonText(error);
        }
    }
    if (::rename(temporary.c_str(), path_.c_str()) != 0) {
        const int error = errno;
        static_cast<void>(::unlink(temporary.c_str()));
        return reasonText(error);
    }
    return std::nullopt;
}

}  // namespace velmora
