#include "app/core/switch_docs.hpp"

#include "app/core/switch_table.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

/// Text made safe for roff: backslashes and hyphens escaped, no line starting with a dot or
/// an apostrophe.
std::string roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    if (out.starts_with('.') || out.starts_with('\'')) out.insert(0, "\\&");
    return out;
}

std::string optionEntry(const Switch& option) {
    // A value switch is set bold with its value in italics: .BI "--data-dir " PATH
    std::string entry = option.takesValue()
                            ? ".TP\n.BI \"" + roff(option.name) + " \" " + roff(option.valueName)
                            : ".TP\n.B " + roff(option.name);
    entry += "\n" + roff(option.help) + "\n";
    return entry;
}

std::string optionEntries() {
    std::string entries;
    for (const auto& option : switchTable())
        entries += optionEntry(option);
    return entries;
}

constexpr std::string_view description =
    ".SH DESCRIPTION\n"
    ".B velmora\\-heat\\-monitor\n"
    "watches how hot the computer is and places that on a five\\-step ladder: NORMAL, WARM, "
    "HOT, EXTREME HEAT and EMERGENCY.\n"
    "It warns at the upper steps and, in a real emergency and only when the user has recorded "
    "consent, runs a visible ten\\-second countdown and asks the system to power off.\n"
    "The countdown can be cancelled at any moment before the power\\-off is requested.\n";

constexpr std::string_view files =
    ".SH FILES\n"
    "All files live in the data directory (see\n"
    ".BR \\-\\-data\\-dir ),\n"
    "which is created private to the user (mode 0700).\n"
    "A data directory owned by another user, or one that other users may write to, is "
    "refused.\n"
    ".TP\n.I settings.json\n"
    "Whether automatic shutdown is on and when consent was recorded.\n"
    "Written to a temporary file, flushed and renamed, so that it is never lost half "
    "written.\n"
    ".TP\n.I auto\\-shutdown.marker\n"
    "Written just before an automatic power\\-off; the next start shows what happened and "
    "removes it.\n"
    ".TP\n.I heat.log\n"
    "One line per event.\n"
    "Past 1,000,000 bytes it is renamed to\n"
    ".I heat.log.1\n"
    "(replacing the one before) and a new log begins.\n"
    ".TP\n.I history.bin\n"
    "The last 30 days of readings at falling resolution (1 s, 10 s, 1 min, 15 min), in a file "
    "of fixed size with a checksum on every record; written every 10 s and flushed when the "
    "level rises. A damaged or foreign one is renamed to\n"
    ".I history.bad\n"
    "and a new history begins. See\n"
    ".BR \\-\\-export\\-history .\n";

constexpr std::string_view exitStatus =
    ".SH EXIT STATUS\n"
    ".TP\n.B 0\nThe watchdog ended normally (SIGINT or SIGTERM), or a switch such as\n"
    ".B \\-\\-help\nasked for information only.\n"
    ".TP\n.B 1\nThe data directory cannot be used or found.\n"
    ".TP\n.B 2\nThe command line was refused: an unknown or misspelt switch, a switch without "
    "its value, or a value that is not allowed.\n";

}  // namespace

std::string manPage() {
    std::string page = ".TH VELMORA\\-HEAT\\-MONITOR 1 \"\" \"" + roff(watchdog::appName) + " " +
                       roff(watchdog::version) + "\" \"User Commands\"\n";
    page +=
        ".SH NAME\n"
        "velmora\\-heat\\-monitor \\- heat watchdog that can power the computer off in an "
        "emergency\n"
        ".SH SYNOPSIS\n"
        ".B velmora\\-heat\\-monitor\n"
        "[\\fIswitches\\fR]\n";
    page += description;
    page +=
        ".SH OPTIONS\n"
        "Switches are matched whole: there are no abbreviations, no \\fB=\\fR forms and no "
        "short options.\n"
        "An unknown switch, or one without its value, is refused with exit status 2.\n";
    page += optionEntries();
    page += files;
    page += exitStatus;
    return page;
}

std::string bashCompletion() {
    std::string names;
    std::string valueCases;
    for (const auto& option : switchTable()) {
        if (!names.empty()) names += ' ';
        names += option.name;
        if (!option.takesValue()) continue;
        valueCases += "    " + std::string(option.name) + ")\n";
        const std::string kind = option.valueName == "FILE" ? "-f" : "-d";
        valueCases += option.choices.empty()
                          ? "      mapfile -t COMPREPLY < <(compgen " + kind + " -- \"$cur\")\n"
                          : "      mapfile -t COMPREPLY < <(compgen -W \"" +
                                std::string(option.choices) + "\" -- \"$cur\")\n";
        valueCases += "      return ;;\n";
    }
    return "# bash completion for velmora-heat-monitor; made from its switch table.\n"
           "_velmora_heat_monitor() {\n"
           "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
           "  case $prev in\n" +
           valueCases +
           "  esac\n"
           "  mapfile -t COMPREPLY < <(compgen -W \"" +
           names +
           "\" -- \"$cur\")\n"
           "}\n"
           "complete -F _velmora_heat_monitor velmora-heat-monitor\n";
}

}  // namespace velmora
