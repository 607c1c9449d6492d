// The process runner's check that a child's output is text (valid UTF-8 or thrown away), held
// against an independent judge built from the Unicode table of well-formed byte sequences.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "os/utf8.hpp"
#include "utf8_reference.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const std::string_view bytes = velmora::fuzz::asText(data, size);
    const bool valid = velmora::isValidUtf8(bytes);
    require(valid == velmora::fuzz::wellFormedUtf8(bytes),
            "the UTF-8 check agrees with the table of well-formed sequences");
    const std::string kept = velmora::utf8OrEmpty(std::string(bytes));
    require(valid ? kept == bytes : kept.empty(),
            "valid text is kept whole, anything else dropped");
    // Splitting valid text at a character boundary leaves two valid halves.
    if (valid && !bytes.empty()) {
        std::size_t cut = bytes.size() / 2;
        while (cut > 0 && (static_cast<unsigned char>(bytes[cut]) & 0xC0U) == 0x80U)
            --cut;
        require(
            velmora::isValidUtf8(bytes.substr(0, cut)) && velmora::isValidUtf8(bytes.substr(cut)),
            "valid text cut between characters stays valid");
    }
    return 0;
}
