#include "app/core/command_line.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>

namespace velmora {

namespace {

constexpr std::size_t closeEnough = 3;

bool isPlatformArgument(std::string_view arg) {
    return arg.starts_with("-psn_") || arg.starts_with("-NS") || arg.starts_with("-Apple");
}

/// "-NSDocumentRevisionsDebugMode YES": the defaults-style arguments carry a value.
bool platformArgumentTakesValue(std::string_view arg) {
    return arg.starts_with("-NS") || arg.starts_with("-Apple");
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above + 1, row[j - 1] + 1, change});
            diagonal = above;
        }
    }
    return row[b.size()];
}

/// " (did you mean ...?)" for an argument that looks like a known switch, else empty.
std::string suggestionFor(std::string_view arg) {
    const auto equals = arg.find('=');
    if (equals != std::string_view::npos) {
        const auto* option = findSwitch(arg.substr(0, equals));
        if (option && option->takesValue()) {
            return " (did you mean '" + std::string(option->name) + " " +
                   std::string(arg.substr(equals + 1)) + "'?)";
        }
    }
    std::string lowered(arg);
    std::ranges::transform(lowered, lowered.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    const Switch* best = nullptr;
    std::size_t bestDistance = closeEnough + 1;
    for (const auto& option : switchTable()) {
        const bool prefix = option.name.starts_with(lowered) || lowered.starts_with(option.name);
        const std::size_t distance = prefix ? 1 : editDistance(lowered, option.name);
        if (distance < bestDistance) {
            best = &option;
            bestDistance = distance;
        }
    }
    if (!best || arg.size() < 3) return {};
    return " (did you mean '" + std::string(best->name) + "'?)";
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::string missingValue(const Switch& option, const std::string* next) {
    std::string problem = quoted(option.name) + " needs a value (" + std::string(option.valueName);
    problem += next ? ") but is followed by " + quoted(*next) : ") but is the last argument";
    return problem;
}

std::string refusedValue(const Switch& option, std::string_view value) {
    return quoted(option.name) + " does not accept " + quoted(value) + ": use one of " +
           std::string(option.choices);
}

class Scanner {
  public:
    explicit Scanner(const std::vector<std::string>& args) : args_(args) {}

    ScannedArguments run() {
        for (index_ = 1; index_ < args_.size(); ++index_)
            take(args_[index_]);
        return std::move(result_);
    }

  private:
    void take(const std::string& arg) {
        if (isPlatformArgument(arg)) {
            if (platformArgumentTakesValue(arg) && nextIsValue()) ++index_;
            return;
        }
        const auto* option = findSwitch(arg);
        if (!option) {
            refuse(arg.starts_with('-') ? "unknown switch " + quoted(arg) + suggestionFor(arg)
                                        : "unexpected argument " + quoted(arg));
        } else if (!option->takesValue()) {
            result_.given.push_back({option, {}});
        } else {
            takeValue(*option);
        }
    }

    void takeValue(const Switch& option) {
        if (!nextIsValue()) {
            const bool last = index_ + 1 >= args_.size();
            refuse(missingValue(option, last ? nullptr : &args_[index_ + 1]));
            return;
        }
        const std::string& value = args_[++index_];
        if (!option.accepts(value)) {
            refuse(refusedValue(option, value));
        } else if (std::ranges::any_of(result_.given,
                                       [&](const auto& g) { return g.option == &option; })) {
            refuse(quoted(option.name) + " is given more than once");
        } else {
            result_.given.push_back({&option, value});
        }
    }

    [[nodiscard]] bool nextIsValue() const {
        // A lone "-" is a value: standard output, as for --export-history.
        if (index_ + 1 >= args_.size()) return false;
        const auto& next = args_[index_ + 1];
        return next == "-" || !next.starts_with('-');
    }

    void refuse(std::string problem) {
        if (result_.problem.empty()) result_.problem = std::move(problem);
    }

    const std::vector<std::string>& args_;
    std::size_t index_ = 1;
    ScannedArguments result_;
};

}  // namespace

ScannedArguments scanArguments(const std::vector<std::string>& args) {
    return Scanner(args).run();
}

bool switchGiven(const ScannedArguments& scanned, std::string_view name) {
    return std::ranges::any_of(scanned.given,
                               [&](const GivenSwitch& g) { return g.option->name == name; });
}

std::optional<std::string> commandLineProblem(const std::vector<std::string>& args) {
    auto scanned = scanArguments(args);
    if (scanned.problem.empty()) return std::nullopt;
    return std::move(scanned.problem);
}

}  // namespace velmora
