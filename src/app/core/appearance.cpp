#include "app/core/appearance.hpp"

namespace velmora {

std::string_view rawValue(AppearancePref pref) {
    switch (pref) {
        case AppearancePref::light:
            return "light";
        case AppearancePref::dark:
            return "dark";
        case AppearancePref::autoTheme:
            break;
    }
    return "auto";
}

std::string_view title(AppearancePref pref) {
    switch (pref) {
        case AppearancePref::light:
            return "Light";
        case AppearancePref::dark:
            return "Dark";
        case AppearancePref::autoTheme:
            break;
    }
    return "Auto";
}

AppearancePref next(AppearancePref pref) {
    switch (pref) {
        case AppearancePref::autoTheme:
            return AppearancePref::light;
        case AppearancePref::light:
            return AppearancePref::dark;
        case AppearancePref::dark:
            break;
    }
    return AppearancePref::autoTheme;
}

std::optional<AppearancePref> appearanceFromRaw(std::string_view raw) {
    for (const auto pref : allAppearances) {
        if (rawValue(pref) == raw) return pref;
    }
    return std::nullopt;
}

AppearancePref appearanceFromStored(const std::optional<std::string>& stored) {
    if (stored == "light") return AppearancePref::light;
    if (stored == "dark") return AppearancePref::dark;
    return AppearancePref::autoTheme;
}

AppearancePref loadAppearance(const PreferenceStore& defaults) {
    return appearanceFromStored(defaults.text(appearanceDefaultsKey));
}

std::optional<std::string> saveAppearance(AppearancePref pref, PreferenceStore& defaults) {
    return defaults.setText(appearanceDefaultsKey, std::string(rawValue(pref)));
}

}  // namespace velmora
