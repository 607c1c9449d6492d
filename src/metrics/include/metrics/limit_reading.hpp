#pragma once

#include <string>

namespace velmora {

/// A source of the derived thermal state read against its own critical limit: what the
/// forecast follows.
struct LimitReading {
    /// Stable across samples (the attribute's path, a GPU's id).
    std::string id;
    /// Its short name for people: "CPU", "GPU", or the sensor's own name.
    std::string label;
    double celsius = 0.0;
    /// Where the source turns the derived state critical.
    double limitC = 0.0;

    bool operator==(const LimitReading&) const = default;
};

}  // namespace velmora
