#include "metrics/linux/utf8_text.hpp"

#include "os/utf8.hpp"

namespace velmora {

std::string validUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const auto sequence = utf8SequenceAt(text);
        if (sequence) {
            out.append(text.substr(0, sequence->length));
            text.remove_prefix(sequence->length);
        } else {
            out += "\xEF\xBF\xBD";
            text.remove_prefix(1);
        }
    }
    return out;
}

}  // namespace velmora
