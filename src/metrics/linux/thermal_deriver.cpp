#include "metrics/linux/thermal_deriver.hpp"

#include <algorithm>
#include <cmath>

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
        const auto kept = std::find_if(sources_.begin(), sources_.end(), [&](const Source& s) {
            return s.def.id == def.id && s.def.conditions == def.conditions;
        });
        if (kept != sources_.end()) {
            kept->def = std::move(def);
            next.push_back(std::move(*kept));
            sources_.erase(kept);
        } else {
            std::vector<bool> active(def.conditions.size(), false);
            next.push_back({std::move(def), std::move(active), std::nullopt, 0});
        }
    }
    // Sources that disappeared go last: they get no reading and are held until they expire.
    for (Source& gone : sources_) {
        if (heldLevel(gone) != ThermalState::nominal) next.push_back(std::move(gone));
    }
    sources_ = std::move(next);
}

std::optional<double> ThermalDeriver::lastPlausible(const std::string& id) const {
    for (const Source& source : sources_) {
        if (source.def.id == id) return source.lastPlausible;
    }
    return std::nullopt;
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

ThermalState ThermalDeriver::heldLevel(const Source& source) {
    ThermalState level = ThermalState::nominal;
    for (std::size_t i = 0; i < source.def.conditions.size(); ++i) {
        if (source.active[i] && above(source.def.conditions[i].level, level)) {
            level = source.def.conditions[i].level;
        }
    }
    return level;
}

std::optional<ThermalState> ThermalDeriver::hold(Source& source, std::optional<double> reading) {
    const ThermalState held = heldLevel(source);
    const bool offTheScale = reading && std::isfinite(*reading) && *reading >= kPlausibleCeiling;
    if (offTheScale && held != ThermalState::nominal) return held;
    if (source.missed < holdSamples && source.lastPlausible) {
        ++source.missed;
        return held;
    }
    // Gone: it no longer counts and forgets what it held.
    std::fill(source.active.begin(), source.active.end(), false);
    source.lastPlausible.reset();
    return std::nullopt;
}

ThermalState ThermalDeriver::update(std::span<const std::optional<double>> readings, bool throttled,
                                    std::string_view throttledBy) {
    ThermalState state = ThermalState::nominal;
    usable_ = 0;
    stale_ = 0;
    staleIds_.clear();
    driving_.clear();
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        Source& source = sources_[i];
        const std::optional<double> celsius = i < readings.size() ? readings[i] : std::nullopt;
        ThermalState level = ThermalState::nominal;
        if (celsius && plausibleCelsius(*celsius)) {
            ++usable_;
            source.missed = 0;
            source.lastPlausible = celsius;
            level = levelOf(source, *celsius);
        } else if (const auto held = hold(source, celsius)) {
            ++usable_;
            ++stale_;
            staleIds_.push_back(source.def.id);
            level = *held;
        } else {
            continue;
        }
        if (above(level, state)) {
            state = level;
            driving_ = source.def.id;
        }
    }
    // Sources that vanished at a rediscovery and have now expired are dropped for good.
    const auto firstGone =
        sources_.begin() + static_cast<std::ptrdiff_t>(std::min(readings.size(), sources_.size()));
    sources_.erase(
        std::remove_if(firstGone, sources_.end(), [](const Source& s) { return !s.lastPlausible; }),
        sources_.end());
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
