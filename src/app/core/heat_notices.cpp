#include "app/core/heat_notices.hpp"

#include <cmath>
#include <nlohmann/json.hpp>

#include "app/core/heat_tooltip.hpp"

namespace velmora {

namespace {

std::optional<std::string> textMember(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

bool flagMember(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

Notice riseNotice(Level level, const NoticeFacts& facts) {
    Notice notice;
    notice.summary = std::string(label(level)) + " \u00b7 " +
                     celsiusText(facts.celsius).value_or("no CPU temperature");
    notice.body =
        facts.busiest ? "Busiest: " + *facts.busiest : std::string("The computer is running hot.");
    if (level >= Level::extreme) notice.body += " Ease the load or let it cool.";
    return notice;
}

Notice countdownNotice(std::int64_t seconds, bool simulation, bool update) {
    Notice notice;
    notice.kind = NoticeKind::countdown;
    const std::string word = simulation ? "SIMULATION" : "EMERGENCY";
    notice.summary = word + " \u00b7 shutting down in " + std::to_string(seconds) + " s";
    notice.body = simulation ? "A test of the emergency: nothing shuts down."
                             : "The computer is dangerously hot. Save your work now.";
    notice.critical = true;
    notice.quiet = update;
    notice.cancelAction = true;
    return notice;
}

}  // namespace

NoticeFacts noticeFactsFromView(const nlohmann::json& view, std::optional<double> celsius,
                                std::optional<std::string> busiest) {
    NoticeFacts facts;
    if (!view.is_object()) return facts;
    facts.simulation = flagMember(view, "sim");
    const auto level = view.find("level");
    if (!facts.simulation && level != view.end() && level->is_number_integer()) {
        facts.level = levelFromRaw(level->get<int>());
    }
    facts.celsius = celsius;
    facts.busiest = std::move(busiest);
    const auto remaining = view.find("remaining");
    if (textMember(view, "state") == "countdown" && remaining != view.end() &&
        remaining->is_number()) {
        facts.countdownSeconds = static_cast<std::int64_t>(std::llround(remaining->get<double>()));
    }
    const auto manual = view.find("manual");
    if (manual != view.end() && manual->is_object()) {
        facts.manualReason = textMember(*manual, "reason").value_or("");
    }
    const bool refusedInManual =
        facts.manualReason && manual->is_object() && flagMember(*manual, "perm");
    if (textMember(view, "permState") == "denied" && !refusedInManual) {
        facts.permissionRefused = textMember(view, "permMsg").value_or("");
    }
    return facts;
}

std::vector<NoticeCommand> HeatNotices::update(const NoticeFacts& facts, MonoTime now,
                                               const std::function<bool()>& risesWanted) {
    std::vector<NoticeCommand> out;
    followCountdown(facts, out);
    followLevel(facts, now, risesWanted, out);
    followOneShots(facts, out);
    return out;
}

bool HeatNotices::mayTell(Level level, MonoTime now) const {
    const auto told = lastTold_.find(level);
    return told == lastTold_.end() || now - told->second >= Seconds(sameLevelGap);
}

void HeatNotices::followLevel(const NoticeFacts& facts, MonoTime now,
                              const std::function<bool()>& risesWanted,
                              std::vector<NoticeCommand>& out) {
    if (!facts.level) return;
    const Level level = *facts.level;
    const Level before = lastLevel_;
    lastLevel_ = level;
    if (level >= Level::hot && !hotSince_) hotSince_ = now;
    if (level > before && level >= Level::hot) {
        // A running countdown has its own, more urgent notification.
        if (!facts.countdownSeconds && mayTell(level, now) && risesWanted()) {
            lastTold_[level] = now;
            out.push_back({NoticeCommand::Op::show, riseNotice(level, facts)});
        }
        return;
    }
    if (level != Level::ok || !hotSince_) return;
    const auto spell = now - *hotSince_;
    hotSince_.reset();
    if (!mayTell(Level::ok, now) || !risesWanted()) return;
    lastTold_[Level::ok] = now;
    Notice cooled;
    cooled.summary = "Cooled down";
    cooled.body = "Back to NORMAL" +
                  (celsiusText(facts.celsius) ? " at " + *celsiusText(facts.celsius) : "") +
                  " after " + spellText(spell) + " at HOT or above.";
    out.push_back({NoticeCommand::Op::show, cooled});
}

void HeatNotices::followCountdown(const NoticeFacts& facts, std::vector<NoticeCommand>& out) {
    if (!facts.countdownSeconds) {
        if (shownSeconds_) {
            shownSeconds_.reset();
            Notice ended;
            ended.kind = NoticeKind::countdown;
            out.push_back({NoticeCommand::Op::close, ended});
        }
        return;
    }
    const bool update = shownSeconds_.has_value() && countdownSimulated_ == facts.simulation;
    if (update && *shownSeconds_ == *facts.countdownSeconds) return;
    shownSeconds_ = facts.countdownSeconds;
    countdownSimulated_ = facts.simulation;
    out.push_back({NoticeCommand::Op::show,
                   countdownNotice(*facts.countdownSeconds, facts.simulation, update)});
}

void HeatNotices::followOneShots(const NoticeFacts& facts, std::vector<NoticeCommand>& out) {
    if (facts.manualReason && !manualShown_) {
        Notice manual;
        manual.kind = NoticeKind::manual;
        manual.summary = "Shut down now: it could not be done for you";
        manual.body = facts.manualReason->empty() ? "Save your work and power off by hand."
                                                  : *facts.manualReason;
        manual.critical = true;
        out.push_back({NoticeCommand::Op::show, manual});
    }
    manualShown_ = facts.manualReason.has_value();
    if (facts.permissionRefused && !permissionShown_) {
        Notice refused;
        refused.kind = NoticeKind::permission;
        refused.summary = "Permission to power off was refused";
        refused.body = facts.permissionRefused->empty()
                           ? "An emergency cannot shut the computer down by itself."
                           : *facts.permissionRefused;
        out.push_back({NoticeCommand::Op::show, refused});
    }
    permissionShown_ = facts.permissionRefused.has_value();
}

std::string spellText(Seconds span) {
    const auto total = std::max<long long>(0, std::llround(span.count()));
    if (total < 60) return std::to_string(total) + " s";
    const auto minutes = (total + 30) / 60;
    if (minutes < 60) return std::to_string(minutes) + " min";
    const auto rest = minutes % 60;
    return std::to_string(minutes / 60) + " h" +
           (rest > 0 ? " " + std::to_string(rest) + " min" : "");
}

}  // namespace velmora
