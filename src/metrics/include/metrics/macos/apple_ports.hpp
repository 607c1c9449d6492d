#pragma once

#include <memory>

#include "metrics/macos/hid_event_system.hpp"
#include "metrics/macos/host_counters.hpp"
#include "metrics/macos/registry.hpp"
#include "metrics/macos/smc_transport.hpp"

namespace velmora {

// The IOKit, Mach and Foundation adapters behind the Mac ports (built with Apple's toolchain).

/// Nothing when the AppleSMC service is missing or refuses the connection.
std::unique_ptr<SMCTransport> openAppleSMC();
std::unique_ptr<IORegistry> makeAppleRegistry();
std::unique_ptr<HIDEventSystem> makeAppleHIDEventSystem();
std::unique_ptr<HostCounters> makeAppleHostCounters();
std::unique_ptr<ProcessInfo> makeAppleProcessInfo();

}  // namespace velmora
