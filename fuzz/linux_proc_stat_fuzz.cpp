// Two readings of /proc/stat, a NUL byte apart. Parsing reuses its storage from sample to sample,
// so the second parse goes into the first one's record and must match a fresh parse; every busy
// share between the readings is a percentage or nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "metrics/linux/proc_stat.hpp"

namespace {

using velmora::CpuTimes;
using velmora::ProcStat;
using velmora::fuzz::require;

std::size_t linesStartingWith(std::string_view text, std::string_view prefix) {
    std::size_t count = 0;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (text.substr(at, end - at).starts_with(prefix)) ++count;
        at = end + 1;
    }
    return count;
}

void checkShare(const std::optional<CpuTimes>& before, const std::optional<CpuTimes>& after) {
    if (!before || !after) return;
    const auto share = velmora::busyPercent(*before, *after);
    if (share) require(*share >= 0.0 && *share <= 100.0, "a busy share is a percentage");
    if (after->busy < before->busy || after->idle < before->idle) {
        require(!share, "a counter going backwards gives no share");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::fuzz::ByteReader input(data, size);
    const std::string_view first = input.takeUntil('\0');
    const std::string_view second = input.rest();

    ProcStat reused;
    velmora::parseProcStat(first, reused);
    const ProcStat before = reused;
    require(!before.total || linesStartingWith(first, "cpu ") > 0, "a total needs a machine line");
    require(before.perCpu.size() <= linesStartingWith(first, "cpu"), "one entry per CPU line");

    velmora::parseProcStat(second, reused);
    ProcStat fresh;
    velmora::parseProcStat(second, fresh);
    require(reused.total == fresh.total && reused.perCpu == fresh.perCpu,
            "a reused record parses like a fresh one");

    checkShare(before.total, fresh.total);
    const std::size_t cores = std::min(before.perCpu.size(), fresh.perCpu.size());
    for (std::size_t i = 0; i < cores; ++i)
        checkShare(before.perCpu[i], fresh.perCpu[i]);
    return 0;
}
