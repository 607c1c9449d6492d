#pragma once

#include <chrono>

namespace velmora {

/// An interval, in fractional seconds. Whole-second and millisecond constants
/// (`std::chrono::seconds`, `std::chrono::milliseconds`) convert to it without a cast, so a
/// quarter-second tick and a ten-second countdown meet in one type.
using Seconds = std::chrono::duration<double>;

}  // namespace velmora
