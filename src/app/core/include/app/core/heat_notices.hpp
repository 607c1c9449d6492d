#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "policy/level.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Which desktop notification a notice is: each kind is one notification on the desktop,
/// replaced rather than repeated. A rise and the "cooled down" that ends it share one.
enum class NoticeKind { heat, countdown, manual, permission };

/// One desktop notification as the rules want it shown.
struct Notice {
    NoticeKind kind = NoticeKind::heat;
    std::string summary;
    std::string body;
    /// Critical urgency, never expiring (the countdown); otherwise normal urgency.
    bool critical = false;
    /// Asks the server for no sound: an update of one already shown.
    bool quiet = false;
    /// Offers "Keep working · Cancel", which cancels the countdown.
    bool cancelAction = false;
    bool operator==(const Notice&) const = default;
};

/// Show (or replace) a notice, or close the one of a kind.
struct NoticeCommand {
    enum class Op { show, close };
    Op op = Op::show;
    Notice notice;
    bool operator==(const NoticeCommand&) const = default;
};

/// What the rules need of one tick of the watchdog.
struct NoticeFacts {
    /// The real level; absent without a reading. A simulation does not change it.
    std::optional<Level> level;
    std::optional<double> celsius;
    /// "cc1plus 96 %", when known.
    std::optional<std::string> busiest;
    /// A countdown is running, real or simulated, with whole seconds left.
    std::optional<std::int64_t> countdownSeconds;
    bool simulation = false;
    /// The shutdown could not run: the user must shut down by hand (the reason).
    std::optional<std::string> manualReason;
    /// The system refused the permission to power off (its message).
    std::optional<std::string> permissionRefused;
};

/// Reads the facts from the engine's view; `celsius` and `busiest` come from the last sample.
NoticeFacts noticeFactsFromView(const nlohmann::json& view, std::optional<double> celsius,
                                std::optional<std::string> busiest);

/// Decides which desktop notifications to show, replace or close as the watchdog ticks. It
/// keeps no clock of its own: each call says when it is, so tests drive it by hand.
class HeatNotices {
  public:
    /// The same level is told at most once in this span.
    static constexpr std::chrono::minutes sameLevelGap{10};

    /// `risesWanted` gives the user's "Notify me when it gets hot", asked only when a rise or
    /// a "cooled down" is due: off, those are not told; the countdown and the shutdown notices
    /// always are.
    std::vector<NoticeCommand> update(const NoticeFacts& facts, MonoTime now,
                                      const std::function<bool()>& risesWanted);

  private:
    void followLevel(const NoticeFacts& facts, MonoTime now,
                     const std::function<bool()>& risesWanted, std::vector<NoticeCommand>& out);
    void followCountdown(const NoticeFacts& facts, std::vector<NoticeCommand>& out);
    void followOneShots(const NoticeFacts& facts, std::vector<NoticeCommand>& out);
    bool mayTell(Level level, MonoTime now) const;

    /// The level of the last tick that had one; NORMAL before the first, so that a launch
    /// that starts hot counts as a rise.
    Level lastLevel_ = Level::ok;
    /// When the heat reached HOT or above, until it is back to NORMAL.
    std::optional<MonoTime> hotSince_;
    std::optional<std::int64_t> shownSeconds_;
    bool countdownSimulated_ = false;
    std::map<Level, MonoTime> lastTold_;
    bool manualShown_ = false;
    bool permissionShown_ = false;
};

/// "12 min", "1 h 5 min", "40 s": how long a spell lasted, for people.
std::string spellText(Seconds span);

}  // namespace velmora
