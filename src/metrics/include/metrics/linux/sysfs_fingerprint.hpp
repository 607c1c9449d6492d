#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

/// One directory as the sensor classes name it: its entry name, the identity of the directory it
/// leads to and that directory's change time.
struct DirIdentity {
    std::string name;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t changedSec = 0;
    std::int64_t changedNsec = 0;

    bool operator==(const DirIdentity&) const = default;
};

/// What the sensor directories under a root look like: every entry of the hwmon, thermal,
/// power_supply and drm classes. Two equal fingerprints mean no device came, went or was replaced,
/// so the files already open are still the right ones and rediscovery can be skipped. A few
/// `stat` calls per device: far cheaper than a discovery.
using SysfsFingerprint = std::vector<DirIdentity>;

SysfsFingerprint sysfsFingerprint(const std::string& root);

}  // namespace velmora
