#include <nlohmann/json.hpp>

#include "app/controller/app_controller.hpp"
#include "app/fleet/metrics_file.hpp"
#include "app/fleet/observed_shutdowner.hpp"
#include "metrics/backend_factory.hpp"

namespace velmora {

void AppController::startObservers() {
    observers_ = services_.observers;
    if (!opts_.metricsFile.empty()) {
        auto* collector = live_.get();
        const auto* sampled = &sampledLimits_;
        observers_.push_back(
            std::make_shared<MetricsFile>(opts_.metricsFile, logSink(), [collector, sampled] {
                return collector != nullptr ? collector->thermalLimits() : *sampled;
            }));
        log("metrics: writing " + opts_.metricsFile.string() + " after every sample");
    }
    // History records the readings and levels; it has no use for the shutdown calls.
    const bool countsShutdowns = !observers_.empty();
    history_ = std::make_shared<HistoryRecorder>(opts_.dataDir, metricsRootFromEnvironment(),
                                                 loop_.poster(), logSink());
    observers_.push_back(history_);
    if (!countsShutdowns) return;
    // Every power-off request is counted, whoever asked for it.
    std::weak_ptr<AppController*> weak = self_;
    shutdowner_ = std::make_shared<ObservedShutdowner>(shutdowner_, [weak] {
        if (const auto self = weak.lock()) {
            for (const auto& observer : (*self)->observers_)
                observer->shutdownRequested();
        }
    });
}

void AppController::notifyTicked(const nlohmann::json& view) {
    for (const auto& observer : observers_)
        observer->ticked(view);
}

void AppController::notifySampled(const LiveInputs& inputs) {
    for (const auto& observer : observers_)
        observer->sampled(inputs, loop_.wallNow());
}

}  // namespace velmora
