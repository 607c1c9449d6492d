#pragma once

#include <cstdint>

#include "metrics/macos/smc_block.hpp"

namespace velmora {

/// An open connection to the AppleSMC user client; closing it is the implementation's
/// destructor's job.
class SMCTransport {
  public:
    virtual ~SMCTransport() = default;
    /// One struct-method call: 80 bytes in, 80 bytes out. False when the kernel call failed.
    virtual bool callStructMethod(std::uint32_t selector, const SMCBlockBytes& input,
                                  SMCBlockBytes& output) = 0;
};

}  // namespace velmora
