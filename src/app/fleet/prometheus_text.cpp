#include "app/fleet/prometheus_text.hpp"

#include <array>
#include <charconv>
#include <cmath>

namespace velmora {

namespace {

std::string escapeHelp(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else {
            out += c;
        }
    }
    return out;
}

// The shortest text that reads back as the same double; the format's own words otherwise.
std::string numberText(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "+Inf" : "-Inf";
    std::array<char, 32> buffer{};
    const auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    if (ec != std::errc()) return "NaN";
    return {buffer.data(), end};
}

}  // namespace

std::string escapeLabelValue(std::string_view value) {
    std::string out;
    out.reserve(value.size());
    for (const char c : value) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '"') {
            out += "\\\"";
        } else if (c == '\n') {
            out += "\\n";
        } else {
            out += c;
        }
    }
    return out;
}

void PrometheusText::family(std::string_view name, std::string_view type, std::string_view help) {
    name_ = name;
    header_ = "# HELP " + name_ + " " + escapeHelp(help) + "\n";
    header_ += "# TYPE " + name_ + " " + std::string(type) + "\n";
}

void PrometheusText::sample(std::optional<double> value, const Labels& labels) {
    if (!value) return;
    // A family without samples is left out entirely.
    text_ += header_;
    header_.clear();
    text_ += name_;
    if (!labels.empty()) {
        text_ += '{';
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (i > 0) text_ += ',';
            text_ += labels[i].first + "=\"" + escapeLabelValue(labels[i].second) + '"';
        }
        text_ += '}';
    }
    text_ += ' ' + numberText(*value) + '\n';
}

}  // namespace velmora
