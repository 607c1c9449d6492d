#pragma once

#include <span>
#include <string_view>

namespace velmora {

/// One command-line switch. This table is the only list of switches: parsing, "--help", the
/// manual page and the shell completion are all made from it.
struct Switch {
    std::string_view name;
    /// What follows the switch, as shown to users ("PATH", "NAME", "on|off"); empty for a
    /// switch that takes no value.
    std::string_view valueName;
    /// What the value may be, for help and completion ("nominal fair serious critical");
    /// empty when any text (a path) is allowed.
    std::string_view choices;
    /// One or two sentences for "--help" and the manual page.
    std::string_view help;

    [[nodiscard]] bool takesValue() const { return !valueName.empty(); }
    /// True when `value` is one of `choices` (compared without regard to ASCII case), or when
    /// any value is allowed.
    [[nodiscard]] bool accepts(std::string_view value) const;
};

/// Every switch, in the order "--help" lists them.
std::span<const Switch> switchTable();

/// The switch called exactly `name`, or nullptr.
const Switch* findSwitch(std::string_view name);

}  // namespace velmora
