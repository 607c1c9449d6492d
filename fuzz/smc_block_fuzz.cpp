// The 80-byte parameter block the SMC's kernel client sends back. Decoding and encoding again
// must give the same bytes, except the alignment gaps, which are always written as zero.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/macos/smc_block.hpp"

namespace {

using velmora::fuzz::require;

bool isAlignmentGap(std::size_t offset) {
    return offset == 10 || offset == 11 || (offset >= 37 && offset <= 39) || offset == 43;
}

void checkFourCharCodes(const velmora::SMCParamBlock& block) {
    for (const std::uint32_t code : {block.key, block.dataType}) {
        const std::string text = velmora::fourCharString(code);
        require(text.empty() || text.size() == 4, "a four-character code is four bytes or none");
        if (!text.empty()) {
            require(velmora::fourCharCode(text) == code, "a readable code folds back to itself");
        }
        const bool ascii = ((code >> 24U) & 0x80U) == 0 && ((code >> 16U) & 0x80U) == 0 &&
                           ((code >> 8U) & 0x80U) == 0 && (code & 0x80U) == 0;
        require(text.empty() != ascii, "exactly the all-ASCII codes are readable");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::SMCBlockBytes reply{};
    std::copy_n(data, std::min(size, reply.size()), reply.begin());

    const velmora::SMCParamBlock block = velmora::decodeSMCBlock(reply);
    const velmora::SMCBlockBytes written = velmora::encodeSMCBlock(block);
    for (std::size_t i = 0; i < reply.size(); ++i) {
        const std::uint8_t expected = isAlignmentGap(i) ? 0 : reply.at(i);
        require(written.at(i) == expected, "a block is written back byte for byte");
    }
    require(velmora::encodeSMCBlock(velmora::decodeSMCBlock(written)) == written,
            "a written block decodes to itself");
    checkFourCharCodes(block);
    return 0;
}
