#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace velmora {

/// Why a write to the data directory failed, in the system's own words.
struct StoreError {
    /// The errno of the failing call; 0 when the data itself could not be encoded.
    int code = 0;
    /// Ready to show and log, e.g. "could not create folder /a/b: Not a directory".
    std::string message;

    /// "<action> <path>: <the system's text for err>".
    static StoreError fromErrno(std::string_view action, const std::filesystem::path& path,
                                int err);

    bool operator==(const StoreError&) const = default;
};

/// The value a write produced, or the error that stopped it.
/// Usage: `if (auto r = store.recordConsent(on, now)) use(*r); else log(r.error().message);`
template <typename T>
class StoreResult {
  public:
    StoreResult(T value) : state_(std::move(value)) {}
    StoreResult(StoreError error) : state_(std::move(error)) {}

    [[nodiscard]] bool ok() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return ok(); }

    /// Only when ok().
    [[nodiscard]] const T& value() const { return std::get<T>(state_); }
    const T& operator*() const { return value(); }
    const T* operator->() const { return &value(); }

    /// Only when !ok().
    [[nodiscard]] const StoreError& error() const { return std::get<StoreError>(state_); }

  private:
    std::variant<T, StoreError> state_;
};

/// A write that returns nothing: empty on success, the error otherwise.
/// Usage: `if (auto err = markers.write(m)) log(err->message);`
using WriteError = std::optional<StoreError>;

}  // namespace velmora
