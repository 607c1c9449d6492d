// Any text that reaches the log from outside. After escaping it must stand on one line: no
// control character, no Unicode line breaker, valid UTF-8; escaping again changes nothing; and
// text that needed no escaping is kept as it was.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "os/utf8.hpp"
#include "store/log_escape.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto text = velmora::fuzz::asText(data, size);
    const std::string escaped = velmora::escapeForLog(text);
    for (const char c : escaped) {
        const auto byte = static_cast<unsigned char>(c);
        require(byte >= 0x20 && byte != 0x7F, "no control character survives escaping");
    }
    require(velmora::isValidUtf8(escaped), "escaped text is valid UTF-8");
    require(escaped.find("\xe2\x80\xa8") == std::string::npos &&
                escaped.find("\xe2\x80\xa9") == std::string::npos,
            "no Unicode line separator survives escaping");
    require(velmora::escapeForLog(escaped) == escaped, "escaping twice changes nothing more");
    require(escaped.size() >= text.size(), "escaping never drops a byte");
    const bool plain = escaped.find('\\') == std::string::npos;
    if (plain) require(escaped == text, "text without anything to escape is kept as it was");
    return 0;
}
