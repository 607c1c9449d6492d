#include "metrics/macos/registry.hpp"

#include <type_traits>

namespace velmora {

namespace {

template <typename Variant>
std::optional<double> numberIn(const Variant& value) {
    return std::visit(
        [](const auto& v) -> std::optional<double> {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool> || !std::is_arithmetic_v<T>) {
                return std::nullopt;
            } else {
                return static_cast<double>(v);
            }
        },
        value);
}

}  // namespace

std::optional<double> registryNumber(const RegistryScalar& value) {
    return numberIn(value);
}

std::optional<double> registryNumber(const RegistryValue& value) {
    return numberIn(value);
}

std::optional<bool> registryBool(const RegistryValue& value) {
    if (const bool* flag = std::get_if<bool>(&value)) return *flag;
    if (const auto number = registryNumber(value)) return *number != 0.0;
    return std::nullopt;
}

}  // namespace velmora
