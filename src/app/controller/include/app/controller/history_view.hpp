#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "store/history_tiers.hpp"

namespace velmora {

/// The span of a range the expanded page offers ("15m", "2h", "24h", "30d"), in seconds.
std::optional<std::int64_t> historyRangeSeconds(std::string_view range);

/// What the page's history graph draws for a range ending at `now`: the ladder's edges, the
/// critical limit, and one array per point, its fields named by "columns".
nlohmann::json historyView(const HistoryStore& store, std::string_view range, std::int64_t now);

/// The script that hands such a view to the page.
std::string historyCall(const nlohmann::json& view);

/// The CPU load of the last 15 minutes in 60 steps of 15 s, oldest first, for the popup's
/// sparkline; a step without a sample is empty.
std::vector<std::optional<double>> recentCpu(const HistoryStore& store, std::int64_t now);

/// The script that hands those steps to the popup.
std::string recentCpuCall(const std::vector<std::optional<double>>& steps);

}  // namespace velmora
