#pragma once

#include <optional>
#include <string_view>

namespace velmora {

/// The five-step heat ladder, ordered by raw value.
enum class Level : int { ok = 0, warm = 1, hot = 2, extreme = 3, blowout = 4 };

constexpr int rawValue(Level level) {
    return static_cast<int>(level);
}
std::optional<Level> levelFromRaw(int raw);

/// The headline word: "NORMAL" … "EMERGENCY".
std::string_view label(Level level);
/// The OS thermal-state word of the level; `hot` and `extreme` are both "Serious".
std::string_view stateName(Level level);

/// Places a temperature on the ladder, each edge inclusive; NaN is `ok`.
Level band(double celsius);

}  // namespace velmora
