#include "app/fleet/exposition_check.hpp"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <regex>
#include <set>
#include <sstream>

namespace velmora::testing {

namespace {

const std::regex kMetricName("[a-zA-Z_:][a-zA-Z0-9_:]*");
const std::regex kLabelName("[a-zA-Z_][a-zA-Z0-9_]*");
const std::regex kSnakeCase("[a-z][a-z0-9_]*");
const std::set<std::string> kTypes{"counter", "gauge", "histogram", "summary", "untyped"};

bool parseValue(const std::string& text, double& value) {
    if (text == "NaN" || text == "+Inf" || text == "-Inf") {
        value = text == "NaN"
                    ? std::nan("")
                    : (text[0] == '+' ? 1.0 : -1.0) * std::numeric_limits<double>::infinity();
        return true;
    }
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end == text.c_str() + text.size();
}

// Reads `{a="b",c="d"}` from `pos`; false on any escape or quoting the format does not allow.
bool parseLabels(const std::string& line, std::size_t& pos,
                 std::map<std::string, std::string>& labels, std::string& problem) {
    ++pos;  // '{'
    while (pos < line.size() && line[pos] != '}') {
        const std::size_t eq = line.find('=', pos);
        if (eq == std::string::npos) return problem = "label without '='", false;
        const std::string name = line.substr(pos, eq - pos);
        if (!std::regex_match(name, kLabelName)) return problem = "bad label name " + name, false;
        if (eq + 1 >= line.size() || line[eq + 1] != '"') return problem = "unquoted label", false;
        std::string value;
        std::size_t i = eq + 2;
        for (; i < line.size() && line[i] != '"'; ++i) {
            if (line[i] != '\\') {
                value += line[i];
                continue;
            }
            if (++i >= line.size()) return problem = "escape at end of line", false;
            if (line[i] == 'n') {
                value += '\n';
            } else if (line[i] == '\\' || line[i] == '"') {
                value += line[i];
            } else {
                return problem = std::string("bad escape \\") + line[i], false;
            }
        }
        if (i >= line.size()) return problem = "unterminated label value", false;
        if (!labels.emplace(name, value).second) return problem = "repeated label " + name, false;
        pos = i + 1;
        if (pos < line.size() && line[pos] == ',') ++pos;
    }
    if (pos >= line.size()) return problem = "unterminated label set", false;
    ++pos;  // '}'
    return true;
}

struct Reader {
    ExpositionCheck check;
    std::set<std::string> finished;
    std::set<std::string> helped;
    std::set<std::string> series;
    std::string current;

    void fail(int lineNo, const std::string& what) {
        check.problems.push_back("line " + std::to_string(lineNo) + ": " + what);
    }

    void enterFamily(int lineNo, const std::string& name) {
        if (name == current) return;
        if (finished.count(name) != 0) fail(lineNo, "family " + name + " appears twice");
        if (!current.empty()) finished.insert(current);
        current = name;
    }

    void comment(int lineNo, const std::string& line) {
        std::istringstream words(line.substr(1));
        std::string keyword;
        std::string name;
        words >> keyword >> name;
        if (keyword != "HELP" && keyword != "TYPE") return;
        if (!std::regex_match(name, kMetricName)) return fail(lineNo, "bad metric name " + name);
        enterFamily(lineNo, name);
        if (keyword == "HELP") {
            if (!helped.insert(name).second) fail(lineNo, "second HELP for " + name);
            return;
        }
        std::string type;
        words >> type;
        if (kTypes.count(type) == 0) return fail(lineNo, "unknown type " + type);
        if (!check.types.emplace(name, type).second) fail(lineNo, "second TYPE for " + name);
    }

    void sample(int lineNo, const std::string& line) {
        ExpositionSample s;
        std::size_t pos = line.find_first_of("{ ");
        if (pos == std::string::npos) return fail(lineNo, "sample without a value");
        s.name = line.substr(0, pos);
        if (!std::regex_match(s.name, kMetricName))
            return fail(lineNo, "bad metric name " + s.name);
        enterFamily(lineNo, s.name);
        if (check.types.count(s.name) == 0)
            fail(lineNo, "sample of " + s.name + " before its TYPE");
        std::string problem;
        if (line[pos] == '{' && !parseLabels(line, pos, s.labels, problem)) {
            return fail(lineNo, problem);
        }
        if (pos >= line.size() || line[pos] != ' ') return fail(lineNo, "no space before value");
        const std::string rest = line.substr(pos + 1);
        const std::string valueText = rest.substr(0, rest.find(' '));
        if (!parseValue(valueText, s.value)) return fail(lineNo, "bad value " + valueText);
        const std::string key = line.substr(0, pos);
        if (!series.insert(key).second) fail(lineNo, "duplicate series " + key);
        check.samples.push_back(std::move(s));
    }
};

}  // namespace

double ExpositionCheck::value(const std::string& name,
                              const std::map<std::string, std::string>& labels) const {
    for (const ExpositionSample& s : samples) {
        if (s.name == name && s.labels == labels) return s.value;
    }
    return std::nan("");
}

std::size_t ExpositionCheck::count(const std::string& name) const {
    std::size_t n = 0;
    for (const ExpositionSample& s : samples)
        n += s.name == name ? 1U : 0U;
    return n;
}

ExpositionCheck checkExposition(const std::string& text) {
    Reader reader;
    if (!text.empty() && text.back() != '\n') reader.fail(0, "text does not end with a line feed");
    std::istringstream lines(text);
    std::string line;
    int lineNo = 0;
    while (std::getline(lines, line)) {
        ++lineNo;
        if (line.empty()) continue;
        if (line[0] == '#') {
            reader.comment(lineNo, line);
        } else {
            reader.sample(lineNo, line);
        }
    }
    // The naming conventions: snake_case, counters end in _total, nothing else does.
    for (const auto& [name, type] : reader.check.types) {
        if (!std::regex_match(name, kSnakeCase)) reader.fail(0, name + " is not snake_case");
        const bool total = name.size() > 6 && name.ends_with("_total");
        if ((type == "counter") != total) reader.fail(0, name + ": only counters end in _total");
    }
    return reader.check;
}

}  // namespace velmora::testing
