#include "app/core/usage.hpp"

#include "app/core/switch_table.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

constexpr std::size_t helpColumn = 25;
constexpr std::size_t lineWidth = 80;

std::string switchWithValue(const Switch& option) {
    std::string text(option.name);
    if (option.takesValue()) text += " " + std::string(option.valueName);
    return text;
}

// The help words, wrapped to the line width and indented to the help column.
void appendWrapped(std::string& out, std::string_view words, std::size_t column) {
    std::size_t used = column;
    bool first = true;
    while (!words.empty()) {
        const auto blank = words.find(' ');
        const auto word = words.substr(0, blank);
        words = blank == std::string_view::npos ? std::string_view() : words.substr(blank + 1);
        if (!first && used + 1 + word.size() > lineWidth) {
            out += '\n';
            out.append(helpColumn, ' ');
            used = helpColumn;
        } else if (!first) {
            out += ' ';
            ++used;
        }
        out += word;
        used += word.size();
        first = false;
    }
    out += '\n';
}

}  // namespace

std::string usageText() {
    std::string text = std::string(watchdog::appName) + " " + std::string(watchdog::version) +
                       " — watches how hot this computer is and,\n"
                       "with your consent, powers it off in a heat emergency.\n"
                       "\n"
                       "Usage: velmora-heat-monitor [switches]\n"
                       "\n";
    for (const auto& option : switchTable()) {
        std::string head = "  " + switchWithValue(option);
        if (head.size() + 1 > helpColumn) {
            text += head + '\n';
            text.append(helpColumn, ' ');
        } else {
            text += head;
            text.append(helpColumn - head.size(), ' ');
        }
        appendWrapped(text, option.help, helpColumn);
    }
    text +=
        "\n"
        "Switches are matched whole. An unknown or misspelt switch, or one without its\n"
        "value, is refused with exit status 2, so that a typing error never turns a dry\n"
        "run into a real power-off. SIGINT or SIGTERM ends the run cleanly.\n";
    return text;
}

}  // namespace velmora
