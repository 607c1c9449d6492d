#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The user's light/dark choice, remembered between launches and passed to every page.
enum class AppearancePref { autoTheme, light, dark };

inline constexpr std::array<AppearancePref, 3> allAppearances{
    AppearancePref::autoTheme, AppearancePref::light, AppearancePref::dark};

/// "auto", "light" or "dark": what is stored and what pages receive.
std::string_view rawValue(AppearancePref pref);
/// "Auto", "Light" or "Dark", for the menu.
std::string_view title(AppearancePref pref);
/// auto → light → dark → auto.
AppearancePref next(AppearancePref pref);
/// Strict: only the three raw values, as page messages must send them.
std::optional<AppearancePref> appearanceFromRaw(std::string_view raw);
/// Lenient: "light" and "dark" are kept, anything else (or nothing) is auto.
AppearancePref appearanceFromStored(const std::optional<std::string>& stored);

/// The application's reverse-domain identifier and the preference key built on it.
inline constexpr std::string_view bundleIdentifier = "org.velmora.heat-monitor";
inline constexpr std::string_view appearanceDefaultsKey =
    "org.velmora.heat-monitor.heat.appearance";

/// Named text preferences that survive the run (the user defaults of the platform).
class PreferenceStore {
  public:
    virtual ~PreferenceStore() = default;
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    /// Nothing on success, else why the value could not be kept.
    virtual std::optional<std::string> setText(std::string_view key, const std::string& value) = 0;
};

AppearancePref loadAppearance(const PreferenceStore& defaults);
std::optional<std::string> saveAppearance(AppearancePref pref, PreferenceStore& defaults);

}  // namespace velmora
