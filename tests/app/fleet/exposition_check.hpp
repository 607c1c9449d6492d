#pragma once

#include <map>
#include <string>
#include <vector>

namespace velmora::testing {

/// One sample line of a Prometheus text file, its label values unescaped.
struct ExpositionSample {
    std::string name;
    std::map<std::string, std::string> labels;
    double value = 0.0;
};

/// A strict reading of the Prometheus text exposition format (version 0.0.4), the one
/// node_exporter's textfile collector accepts: what it found, and every rule a line breaks.
struct ExpositionCheck {
    std::vector<ExpositionSample> samples;
    std::map<std::string, std::string> types;
    std::vector<std::string> problems;

    /// The value of the one sample with this name and these labels; NaN when there is none.
    double value(const std::string& name,
                 const std::map<std::string, std::string>& labels = {}) const;
    std::size_t count(const std::string& name) const;
};

ExpositionCheck checkExposition(const std::string& text);

}  // namespace velmora::testing
