#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/limit_reading.hpp"
#include "policy/forecast.hpp"
#include "policy/forecaster.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Feeds the forecaster, on the sampler's side, with the source nearest its critical limit, and
/// says in the log when a critical ETA under 5 minutes first appears and when it goes away,
/// never once per sample. Advisory only: nothing here reaches the level or the countdown.
class ForecastFeed {
  public:
    /// The source whose headroom to its limit is smallest is followed; another one takes over
    /// only when it is nearer its own limit by more than this, so that two sources at about
    /// the same heat do not restart the window by turns.
    static constexpr double switchMarginC = 2.0;
    /// A logged forecast counts as gone once its ETA is past this (or there is none), so that
    /// an ETA wavering about 5 minutes does not log by turns.
    static constexpr Seconds clearedBeyond{420};
    /// A logged forecast that is gone without a new one (the window started again) counts as
    /// gone only after this long.
    static constexpr Seconds silenceCleared{30};

    /// One sample's readings; the forecast for the source followed, if there is one.
    std::optional<Forecast> sample(const std::vector<LimitReading>& readings, MonoTime now);
    /// The log lines since the last call.
    std::vector<std::string> takeNotices();

    /// The id of the source followed ("" before any).
    const std::string& following() const { return followed_; }

  private:
    const LimitReading* choose(const std::vector<LimitReading>& readings);
    void noteChange(const std::optional<Forecast>& forecast, const LimitReading* reading,
                    MonoTime now);

    Forecaster forecaster_;
    std::string followed_;
    bool announced_ = false;
    std::optional<MonoTime> lastHeading_;
    std::string announcedSource_;
    std::vector<std::string> notices_;
};

}  // namespace velmora
