#include <IOKit/IOKitLib.h>
#include <mach/mach.h>

#include "metrics/macos/apple_ports.hpp"

namespace velmora {

namespace {

class AppleSMCTransport final : public SMCTransport {
  public:
    explicit AppleSMCTransport(io_connect_t connection) : conn_(connection) {}
    ~AppleSMCTransport() override {
        if (conn_ != 0) IOServiceClose(conn_);
    }
    AppleSMCTransport(const AppleSMCTransport&) = delete;
    AppleSMCTransport& operator=(const AppleSMCTransport&) = delete;

    bool callStructMethod(std::uint32_t selector, const SMCBlockBytes& input,
                          SMCBlockBytes& output) override {
        size_t outputSize = output.size();
        return IOConnectCallStructMethod(conn_, selector, input.data(), input.size(), output.data(),
                                         &outputSize) == kIOReturnSuccess;
    }

  private:
    io_connect_t conn_;
};

}  // namespace

std::unique_ptr<SMCTransport> openAppleSMC() {
    const io_service_t service =
        IOServiceGetMatchingService(kIOMainPortDefault, IOServiceMatching("AppleSMC"));
    if (service == 0) return nullptr;
    io_connect_t connection = 0;
    const kern_return_t opened = IOServiceOpen(service, mach_task_self(), 0, &connection);
    // The connection outlives the service object.
    IOObjectRelease(service);
    if (opened != KERN_SUCCESS) return nullptr;
    return std::make_unique<AppleSMCTransport>(connection);
}

}  // namespace velmora
