#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/core/appearance.hpp"

namespace velmora {

/// "Notify me when it gets hot": the rise and "cooled down" notifications. Kept with the
/// appearance in the preferences, not in the consent-bound settings: it changes nothing about
/// shutting down, and every answer about shutting down rewrites those settings whole.
inline constexpr std::string_view notifyWhenHotKey = "org.velmora.heat-monitor.notify.hot";

/// "Temperature as text beside the icon" ("on" or "off"; off by default): where a panel draws
/// the item's label, the figure shows there instead of in the icon.
inline constexpr std::string_view figureAsTextKey = "org.velmora.heat-monitor.heat.figure-as-text";

/// On unless the user turned it off; a missing or unreadable value is on.
bool loadNotifyWhenHot(const PreferenceStore& defaults);
/// Nothing on success, else why it could not be kept.
std::optional<std::string> saveNotifyWhenHot(bool on, PreferenceStore& defaults);

}  // namespace velmora
