#pragma once

#include <optional>
#include <string_view>

namespace velmora {

/// The application's own cue sound (a ".wav" in the bundle's "sounds" folder) that stands in
/// for a named system sound on a Mac that lacks it; nothing for other names.
constexpr std::optional<std::string_view> bundledCueFor(std::string_view systemSound) {
    if (systemSound == "Sosumi") return "alarm";
    if (systemSound == "Tink") return "tick";
    return std::nullopt;
}

}  // namespace velmora
