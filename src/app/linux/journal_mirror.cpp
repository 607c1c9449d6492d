#include "app/linux/journal_mirror.hpp"

#include <syslog.h>
#include <systemd/sd-journal.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace velmora {

namespace {

bool containsWord(std::string_view line, std::string_view word) {
    const auto lower = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == b;
    };
    return std::search(line.begin(), line.end(), word.begin(), word.end(), lower) != line.end();
}

// The stage word itself, not a "critical=EMERGENCY" mapping in the start-up description.
bool namesEmergency(std::string_view line) {
    constexpr std::string_view word = "EMERGENCY";
    for (auto at = line.find(word); at != std::string_view::npos; at = line.find(word, at + 1)) {
        if (at == 0 || line[at - 1] != '=') return true;
    }
    return false;
}

}  // namespace

int journalPriority(std::string_view line) {
    static constexpr std::array<std::string_view, 4> kFailures{"fail", "could not", "denied",
                                                               "error"};
    if (namesEmergency(line)) return LOG_WARNING;
    for (const std::string_view word : kFailures) {
        if (containsWord(line, word)) return LOG_WARNING;
    }
    return LOG_INFO;
}

std::function<void(const std::string&)> journalMirrorFromEnvironment() {
    if (!std::getenv("JOURNAL_STREAM")) return {};  // NOLINT(concurrency-mt-unsafe)
    return [](const std::string& line) {
        static_cast<void>(sd_journal_send("MESSAGE=%s", line.c_str(), "PRIORITY=%i",
                                          journalPriority(line),
                                          "SYSLOG_IDENTIFIER=velmora-heat-monitor", nullptr));
    };
}

}  // namespace velmora
