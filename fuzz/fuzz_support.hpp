#pragma once

// What every fuzz entry point shares: a reader that turns the raw input into typed values, and
// a check that stays on in release builds (NDEBUG would silence assert).

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmora::fuzz {

/// Reports the broken invariant and aborts, which libFuzzer and the replay test both see as a
/// failure with the offending input kept.
[[noreturn]] inline void fail(std::string_view what) {
    std::fprintf(stderr, "fuzz invariant broken: %.*s\n", static_cast<int>(what.size()),
                 what.data());
    std::abort();
}

inline void require(bool holds, std::string_view what) {
    if (!holds) fail(what);
}

/// Lower-cases A-Z only, as the C locale does.
inline std::string asciiLowered(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lowered;
}

/// The whole input as text.
inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Consumes the input from the front; past its end every value reads as zero or empty, so an
/// entry point never has to check the size itself.
class ByteReader {
  public:
    ByteReader(const std::uint8_t* data, std::size_t size) : text_(asText(data, size)) {}
    explicit ByteReader(std::string_view text) : text_(text) {}

    [[nodiscard]] bool empty() const { return text_.empty(); }

    /// The next sizeof(T) bytes, least significant first.
    template <typename T>
    requires std::is_integral_v<T> T take() {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(T) && !text_.empty(); ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(text_.front())} << (8 * i);
            text_.remove_prefix(1);
        }
        return static_cast<T>(value);
    }

    bool takeBool() { return (take<std::uint8_t>() & 1U) != 0; }

    /// Eight bytes as they lie in memory: every double, NaNs and infinities included.
    double takeDouble() {
        const auto bits = take<std::uint64_t>();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    /// The bytes up to the next `separator` (which is consumed), or all that is left.
    std::string_view takeUntil(char separator) {
        const std::size_t end = text_.find(separator);
        const std::string_view piece = text_.substr(0, end);
        text_.remove_prefix(end == std::string_view::npos ? text_.size() : end + 1);
        return piece;
    }

    /// At most `count` bytes.
    std::string_view takeBytes(std::size_t count) {
        const std::string_view piece = text_.substr(0, count);
        text_.remove_prefix(piece.size());
        return piece;
    }

    std::string_view rest() {
        const std::string_view piece = text_;
        text_ = {};
        return piece;
    }

  private:
    std::string_view text_;
};

}  // namespace velmora::fuzz
