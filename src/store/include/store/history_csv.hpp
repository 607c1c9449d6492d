#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "store/history_tiers.hpp"

namespace velmora {

/// The export's first line. The first eleven columns are fixed; the point's resolution and
/// each series' lowest and highest reading follow.
std::string historyCsvHeader();

/// One CSV line (with its newline) per row: time in ISO 8601 UTC with "Z", the level's label,
/// the thermal state's name, the means, the busiest process quoted as CSV requires; an
/// absent figure is an empty field.
std::string historyCsvLine(const HistoryRow& row);

/// The whole export: the header, then every row.
std::string historyCsv(const std::vector<HistoryRow>& rows);

/// `text` as one CSV field (RFC 4180): quoted when it holds a comma, a quote or a line break.
std::string csvField(std::string_view text);

}  // namespace velmora
