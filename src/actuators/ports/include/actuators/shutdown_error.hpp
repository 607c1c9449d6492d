#pragma once

#include <string>
#include <utility>

namespace velmora {

/// Why a shutdown request did not go through.
struct ShutdownError {
    /// In this order: the permission was refused, anything else went wrong.
    enum class Kind { denied, failed };

    Kind kind = Kind::failed;
    std::string text;

    static ShutdownError denied(std::string text) { return {Kind::denied, std::move(text)}; }
    static ShutdownError failed(std::string text) { return {Kind::failed, std::move(text)}; }

    /// What the user is shown: the reason itself, nothing added.
    [[nodiscard]] const std::string& description() const { return text; }
    bool operator==(const ShutdownError&) const = default;
};

}  // namespace velmora
