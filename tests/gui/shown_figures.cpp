#include "gui/shown_figures.hpp"

#include <nlohmann/json.hpp>

#include "gui/desktop_driver.hpp"

namespace velmora::testing {

const std::string shownFiguresScript =
    "JSON.stringify(Object.fromEntries(Array.from(document.querySelectorAll('[data-text]'),"
    " (el) => [el.getAttribute('data-text'), el.textContent])))";

namespace {

constexpr int minimumReadings = 3;

/// The value at a dotted path, as the pages' own binding resolves it.
const nlohmann::json* at(const nlohmann::json& root, const std::string& path) {
    const nlohmann::json* node = &root;
    std::size_t start = 0;
    while (start <= path.size()) {
        const auto end = std::min(path.find('.', start), path.size());
        if (!node->is_object()) return nullptr;
        const auto found = node->find(path.substr(start, end - start));
        if (found == node->end()) return nullptr;
        node = &*found;
        start = end + 1;
    }
    return node;
}

/// The text the pages make of a value: strings as they are, numbers as numbers, "n/a" else.
std::string textOf(const nlohmann::json* value) {
    if (value != nullptr && value->is_string()) return value->get<std::string>();
    if (value != nullptr && value->is_number()) return value->dump();
    return "n/a";
}

}  // namespace

std::vector<std::string> figureDifferences(const std::string& shownJson,
                                           const std::string& liveJson) {
    const auto shown = nlohmann::json::parse(shownJson, nullptr, false);
    const auto live = nlohmann::json::parse(liveJson, nullptr, false);
    if (!shown.is_object() || !live.is_object()) return {"not JSON: " + shownJson};
    std::vector<std::string> differences;
    int readings = 0;
    for (const auto& [path, text] : shown.items()) {
        const auto wanted = textOf(at(live, path));
        const auto got = text.is_string() ? text.get<std::string>() : text.dump();
        if (got != wanted)
            differences.push_back(path + ": shows '" + got + "', model '" + wanted + "'");
        if (got != "n/a" && !got.empty()) ++readings;
    }
    if (readings < minimumReadings) {
        differences.push_back("only " + std::to_string(readings) + " figures are not n/a");
    }
    return differences;
}

::testing::AssertionResult showsTheLiveFigures(DesktopDriver& d, const PageEvaluator& evaluate) {
    std::vector<std::string> differences{"the page never answered"};
    const bool agreed = d.waitUntil(
        [&] {
            const auto shown = evaluate(shownFiguresScript);
            if (!shown) return false;
            differences = figureDifferences(*shown, d.session.app.presentation().liveJSON);
            return differences.empty();
        },
        10);
    if (agreed) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << "the page differs from the live model:";
    for (const auto& line : differences)
        failure << "\n  " << line;
    return failure;
}

}  // namespace velmora::testing
