#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora::testing {

/// A script that returns, as JSON text, what every live-bound element of a page shows:
/// {"cpuTemp.value": "62°C", "ram.value": "61%", ...}, keyed by the element's data-text path.
extern const std::string shownFiguresScript;

/// The figures on which a page and the live model's JSON of the same sample disagree, one
/// line each; empty when the page shows exactly what the model holds. A page that shows
/// fewer than three real readings ("n/a" everywhere) never agrees.
std::vector<std::string> figureDifferences(const std::string& shownJson,
                                           const std::string& liveJson);

/// Turns the loop until the page read through `evaluate` shows the live model's figures;
/// lists the differences that remained otherwise.
using PageEvaluator = std::function<std::optional<std::string>(const std::string&)>;
class DesktopDriver;
::testing::AssertionResult showsTheLiveFigures(DesktopDriver& d, const PageEvaluator& evaluate);

}  // namespace velmora::testing
