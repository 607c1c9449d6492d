#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/core/switch_table.hpp"

namespace velmora {

/// One switch found on the command line, with its value when it takes one.
struct GivenSwitch {
    const Switch* option = nullptr;
    std::string value;
};

/// The command line read against the switch table.
struct ScannedArguments {
    /// Every switch that was given correctly, in order.
    std::vector<GivenSwitch> given;
    /// Why the command line must be refused, naming the argument: the first unknown or
    /// misspelt switch, a switch without its value, a value that is not allowed, a switch
    /// with a value given twice or a stray argument. Empty when it may be used.
    std::string problem;
};

/// Reads `args` (the program path first; it is skipped). Switches are matched whole: no
/// abbreviations, no "=" forms, no short options. Arguments that macOS itself passes to
/// applications ("-psn_…", "-NS…" and "-Apple…", the latter two with their value) are skipped.
/// A value may not begin with "-", so that a forgotten value never swallows the next switch.
ScannedArguments scanArguments(const std::vector<std::string>& args);

/// Whether the switch `name` ("--help") was given correctly.
bool switchGiven(const ScannedArguments& scanned, std::string_view name);

/// Why the command line must be refused (exit status 2), or nothing when it may be used.
std::optional<std::string> commandLineProblem(const std::vector<std::string>& args);

}  // namespace velmora
