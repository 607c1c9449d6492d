#include "metrics/backend_factory.hpp"
#include "metrics/macos/apple_ports.hpp"
#include "metrics/macos/mac_backend.hpp"

namespace velmora {

// The Mac reads the hardware directly; the root prefix only means something on Linux.
std::unique_ptr<MetricsBackend> makePlatformBackend(const std::string& /*root*/) {
    return std::make_unique<MacBackend>(MacPorts{makeAppleHostCounters(), makeAppleProcessInfo(),
                                                 makeAppleRegistry(), makeAppleHIDEventSystem(),
                                                 openAppleSMC()});
}

}  // namespace velmora
