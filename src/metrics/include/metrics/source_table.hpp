#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/live_inputs.hpp"
#include "metrics/metrics_backend.hpp"

namespace velmora {

/// One diagnostic row: which metric, its current value, whether it is live, where it comes from.
struct SourceRow {
    std::string label;
    std::string value;
    std::string status;
    std::string source;

    bool operator==(const SourceRow&) const = default;
};

/// The rows of every metric for the latest snapshot (values "n/a" before the first sample).
std::vector<SourceRow> buildSourceTable(const std::optional<LiveInputs>& last,
                                        const MetricSources& sources);

/// The rows as aligned plain-text columns, one line per row, for a terminal.
std::string renderSourceTable(const std::vector<SourceRow>& rows);

}  // namespace velmora
