#include "snapshot_parts.hpp"

#include <utility>

namespace velmora::pages {

void ChosenShutdowner::shutdown(ShutdownCompletion completion) {
    if (shutdownError) {
        completion(shutdownError);
    } else {
        held_ = std::move(completion);  // never answered: the machine is on its way down
    }
}

void ChosenShutdowner::probe(ProbeCompletion completion) {
    completion(probeAnswer);
}

EngineRig::EngineRig(const std::filesystem::path& dir, double t) : now(t) {
    Engine::Parts parts{sensor,
                        SettingsStore(dir),
                        MarkerStore(dir),
                        shutdowner,
                        std::make_shared<QuietSounder>(),
                        Alerter{false},
                        [](const std::string&) {}};
    engine = std::make_unique<Engine>(std::move(parts), at(t));
}

nlohmann::json EngineRig::tickTo(double t) {
    nlohmann::json view = engine->tick(at(now));
    while (now + 0.25 <= t + 1e-9) {
        now += 0.25;
        view = engine->tick(at(now));
    }
    return view;
}

MonoTime EngineRig::at(double t) {
    return MonoTime::fromSeconds(1'800'000'000 + t);
}

Timestamp EngineRig::wallAt(double t) {
    return Timestamp::fromSeconds(1'800'000'000 + t);
}

}  // namespace velmora::pages
