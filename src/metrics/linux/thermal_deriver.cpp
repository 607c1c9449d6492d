#include "metrics/linux/thermal_deriver.hpp"

#include <algorithm>

#include "metrics/temp_reading.hpp"

namespace velmora {

namespace {

bool above(ThermalState a, ThermalState b) {
    return static_cast<int>(a) > static_cast<int>(b);
}

}  // namespace

void ThermalDeriver::setSources(std::vector<ThermalSourceDef> sourceDefs) {
    std::vector<Source> next;
    next.reserve(sourceDefs.size());
    for (ThermalSourceDef& def : sourceDefs) {
        std::vector<bool> active(def.conditions.size(), false);
        const auto kept = std::find_if(sources_.begin(), sources_.end(), [&](const Source& s) {
            return s.def.id == def.id && s.def.conditions == def.conditions;
        });
        if (kept != sources_.end()) active = kept->active;
        next.push_back({std::move(def), std::move(active)});
    }
    sources_ = std::move(next);
}

ThermalState ThermalDeriver::levelOf(Source& source, double celsius) {
    ThermalState level = ThermalState::nominal;
    for (std::size_t i = 0; i < source.def.conditions.size(); ++i) {
        const ThermalCondition& rule = source.def.conditions[i];
        // Holding a state needs the temperature to stay within the margin below its threshold.
        const bool held = source.active[i] && celsius > rule.threshold - rule.margin;
        source.active[i] = celsius >= rule.threshold || held;
        if (source.active[i] && above(rule.level, level)) level = rule.level;
    }
    return level;
}

ThermalState ThermalDeriver::update(std::span<const std::optional<double>> readings, bool throttled,
                                    std::string_view throttledBy) {
    ThermalState state = ThermalState::nominal;
    usable_ = 0;
    driving_.clear();
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        Source& source = sources_[i];
        const std::optional<double> celsius = i < readings.size() ? readings[i] : std::nullopt;
        if (!celsius || !plausibleCelsius(*celsius)) {
            // A source that reads nothing plausible does not count, and forgets what it held.
            std::fill(source.active.begin(), source.active.end(), false);
            continue;
        }
        ++usable_;
        const ThermalState level = levelOf(source, *celsius);
        if (above(level, state)) {
            state = level;
            driving_ = source.def.id;
        }
    }
    if (throttled && above(ThermalState::serious, state)) {
        state = ThermalState::serious;
        driving_ = throttledBy;
    }
    // One glitching sample must never start a countdown.
    criticalStreak_ = state == ThermalState::critical ? criticalStreak_ + 1 : 0;
    if (state == ThermalState::critical && criticalStreak_ < 2) state = ThermalState::serious;
    return state;
}

}  // namespace velmora
