#include "actuators/classify_osascript.hpp"

#include <algorithm>
#include <cctype>
#include <string>

namespace velmora {
namespace {

constexpr std::string_view whiteSpace = " \t\n\r\v\f";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(whiteSpace);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(whiteSpace);
    return text.substr(first, last - first + 1);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool isAutomationRefusal(std::string_view text) {
    if (contains(text, "-1743") || contains(text, "-1744")) return true;
    const std::string lower = lowerCase(text);
    return contains(lower, "not authorized to send apple events") ||
           contains(lower, "not allowed to send apple events");
}

}  // namespace

AutomationOutcome classifyOsascript(std::int32_t status, std::string_view standardError,
                                    bool timedOut) {
    const std::string_view text = trimmed(standardError);
    if (timedOut) {
        return AutomationOutcome::failed(
            "osascript timed out (no answer to the Automation prompt?)");
    }
    if (status == 0) return AutomationOutcome::granted();
    if (isAutomationRefusal(text)) {
        // A text holding the refusal is never empty, so this fallback cannot fire; it stays as
        // a guard should the refusal tests ever change.
        if (text.empty()) {
            return AutomationOutcome::denied(
                "Not authorized to send Apple events to System Events. (-1743)");
        }
        return AutomationOutcome::denied(std::string(text));
    }
    if (text.empty()) return AutomationOutcome::failed("osascript exit " + std::to_string(status));
    return AutomationOutcome::failed(std::string(text));
}

}  // namespace velmora
