// /proc/PID/stat. The name is exactly the bytes between the first '(' and the last ')', and the
// log line and page text made from it stay one line of valid text: a process names itself.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/heat_cause.hpp"
#include "metrics/linux/pid_stat.hpp"
#include "metrics/live_cause.hpp"
#include "os/utf8.hpp"
#include "store/log_escape.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto text = velmora::fuzz::asText(data, size);
    const auto stat = velmora::parsePidStat(text);
    if (!stat) return 0;
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    require(open != std::string_view::npos && close != std::string_view::npos && open < close,
            "a parsed stat has its name in parentheses");
    require(stat->name == text.substr(open + 1, close - open - 1),
            "the name runs from the first '(' to the last ')'");
    require(stat->pid > 0, "a pid is positive");
    require(text.substr(close + 1).find(')') == std::string_view::npos,
            "nothing after the name is taken for it");
    velmora::HeatCause cause;
    cause.processes.push_back(velmora::ProcessShare{stat->name, stat->pid, 50.0});
    const std::string line = velmora::escapeForLog(
        velmora::heatRiseLine(velmora::LevelRise{velmora::Level::ok, velmora::Level::hot}, cause));
    require(line.find('\n') == std::string::npos && line.find('\r') == std::string::npos,
            "a name cannot start a log line of its own");
    require(velmora::isValidUtf8(line), "the log line is valid UTF-8");
    require(velmora::isValidUtf8(velmora::LiveModel::displayableName(stat->name)),
            "the pages get valid UTF-8");
    return 0;
}
