#pragma once

#include <string>
#include <utility>

namespace velmora {

/// What the permission probe, or one run of the shutdown tool, came to.
struct AutomationOutcome {
    /// In this order: refused permission, any other failure, success.
    enum class Kind { denied, failed, granted };

    Kind kind = Kind::failed;
    /// The reason for `denied` and `failed`; always empty for `granted`.
    std::string text;

    static AutomationOutcome denied(std::string text) { return {Kind::denied, std::move(text)}; }
    static AutomationOutcome failed(std::string text) { return {Kind::failed, std::move(text)}; }
    static AutomationOutcome granted() { return {Kind::granted, {}}; }

    [[nodiscard]] bool isGranted() const { return kind == Kind::granted; }
    bool operator==(const AutomationOutcome&) const = default;
};

/// The outcome as a log shows it: `granted`, or the case name with its text in parentheses and
/// quotes, e.g. `failed("osascript exit 1")`.
std::string describe(const AutomationOutcome& outcome);

}  // namespace velmora
