#pragma once

#include "store/store_error.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// What the user chose about automatic shutdown; "settings.json" on disk.
struct Settings {
    bool autoShutdown = true;
    bool consentRecorded = false;
    /// When consent was given, as written by rfc3339; absent when never recorded.
    std::optional<std::string> consentAt;

    /// The one test for whether an emergency may shut the machine down.
    [[nodiscard]] bool enabled() const { return autoShutdown && consentRecorded; }

    bool operator==(const Settings&) const = default;
};

/// Pretty-printed JSON with sorted keys; "consentAt" only when present. Fails only when
/// `consentAt` is not valid UTF-8.
StoreResult<std::string> encodeSettings(const Settings& settings);

/// Nothing unless `json` is an object with boolean "autoShutdown" and "consentRecorded";
/// "consentAt" may be missing or null, otherwise it must be a string. Unknown keys are ignored.
std::optional<Settings> decodeSettings(std::string_view json);

}  // namespace velmora
