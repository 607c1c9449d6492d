#include "metrics/linux/rapl.hpp"

#include <utility>

#include "metrics/linux/sysfs_dir.hpp"
#include "metrics/linux/utf8_text.hpp"

namespace velmora {

RaplMeter RaplMeter::discover(const std::string& root) {
    std::vector<Domain> domains;
    const std::string classDir = root + "/sys/class/powercap";
    for (const std::string& entry : listEntries(classDir, "intel-rapl:")) {
        // Only the package domains ("intel-rapl:0"), not their cores/uncore subdomains.
        if (entry.find(':') != entry.rfind(':')) continue;
        const std::string dir = childPath(classDir, entry);
        auto energy = SysfsFile::open(dir + "/energy_uj");
        if (!energy || !energy->readInteger()) continue;
        const auto name = readSmallFile(dir + "/name");
        const auto range = readSmallFile(dir + "/max_energy_range_uj");
        // The name reaches the dashboard's JSON as the power source, which must be valid UTF-8.
        domains.push_back({name ? validUtf8(trimmed(*name)) : entry, std::move(*energy),
                           range ? parseInteger(*range) : std::nullopt});
    }
    return RaplMeter(std::move(domains));
}

std::string RaplMeter::sourceName() const {
    std::string names;
    for (const Domain& domain : domains_)
        names += (names.empty() ? "" : "+") + domain.name;
    return "RAPL " + names;
}

std::optional<double> wattsBetween(long long previous, long long current,
                                   std::optional<long long> maxRange, Seconds span) {
    // The counters run from 0 up to the range; a negative one is a misread, and would let the
    // arithmetic below overflow.
    const double seconds = span.count();
    if (!(seconds > 0) || previous < 0 || current < 0) return std::nullopt;
    long long delta = current - previous;
    if (delta < 0) {
        if (!maxRange || *maxRange <= previous) return std::nullopt;
        delta = *maxRange - previous + current + 1;  // at most *maxRange, so it cannot overflow
    }
    return static_cast<double>(delta) / 1e6 / seconds;
}

std::optional<PowerReading> RaplMeter::sample(Timestamp now, bool& failed) {
    if (domains_.empty()) return std::nullopt;
    std::vector<long long>& energy = scratch_;
    energy.clear();
    for (const Domain& domain : domains_) {
        const auto value = domain.energy.readInteger();
        if (!value) {
            failed = true;
            lastAt_.reset();
            return std::nullopt;
        }
        energy.push_back(*value);
    }
    std::optional<double> total;
    if (lastAt_ && lastEnergy_.size() == energy.size()) {
        total = 0.0;
        for (std::size_t i = 0; i < energy.size() && total; ++i) {
            const auto watts =
                wattsBetween(lastEnergy_[i], energy[i], domains_[i].maxRange, now - *lastAt_);
            total = watts ? std::optional(*total + *watts) : std::nullopt;
        }
    }
    std::swap(lastEnergy_, scratch_);
    lastAt_ = now;
    if (!total || !(*total > 0.0 && *total < 2000.0)) return std::nullopt;
    return PowerReading{*total, "Package power", sourceName()};
}

}  // namespace velmora
