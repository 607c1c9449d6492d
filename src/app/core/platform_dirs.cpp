#include "app/core/platform_dirs.hpp"

#include <cstdlib>
#include <system_error>

#include "policy/constants.hpp"

namespace velmora {

namespace {

// Read at start-up on the main thread, before any other thread exists.
std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
}

/// A base directory from the environment: unset, empty and relative values do not count.
std::optional<std::filesystem::path> absoluteBase(const std::optional<std::string>& value) {
    if (!value || value->empty()) return std::nullopt;
    std::filesystem::path path(*value);
    if (!path.is_absolute()) return std::nullopt;
    return path;
}

// Unused on macOS, whose folders do not follow the XDG rules.
[[maybe_unused]] std::optional<std::filesystem::path> xdgBase(
    const std::optional<std::string>& variableValue, const std::optional<std::string>& home,
    const char* fallbackUnderHome) {
    if (auto base = absoluteBase(variableValue)) return base;
    if (auto homeDir = absoluteBase(home)) return *homeDir / fallbackUnderHome;
    return std::nullopt;
}

}  // namespace

PlatformEnvironment PlatformEnvironment::current() {
    PlatformEnvironment env;
    env.home = variable("HOME");
    env.xdgDataHome = variable("XDG_DATA_HOME");
    env.xdgConfigHome = variable("XDG_CONFIG_HOME");
    env.display = variable("DISPLAY").has_value() || variable("WAYLAND_DISPLAY").has_value();
    std::error_code error;
    env.workingDir = std::filesystem::current_path(error);
    return env;
}

std::optional<std::filesystem::path> defaultDataDir(const PlatformEnvironment& env) {
#if defined(__APPLE__)
    const auto home = absoluteBase(env.home);
    if (!home) return std::nullopt;
    return *home / "Library" / "Application Support" / std::string(watchdog::appName);
#else
    const auto base = xdgBase(env.xdgDataHome, env.home, ".local/share");
    if (!base) return std::nullopt;
    return *base / "velmora-heat-monitor";
#endif
}

std::optional<std::filesystem::path> defaultConfigDir(const PlatformEnvironment& env) {
#if defined(__APPLE__)
    const auto home = absoluteBase(env.home);
    if (!home) return std::nullopt;
    return *home / "Library" / "Preferences";
#else
    const auto base = xdgBase(env.xdgConfigHome, env.home, ".config");
    if (!base) return std::nullopt;
    return *base / "velmora-heat-monitor";
#endif
}

std::filesystem::path resolveUserPath(const std::string& text, const PlatformEnvironment& env) {
    std::filesystem::path path(text);
    const bool tilde = text == "~" || text.starts_with("~/");
    if (tilde && env.home) {
        path = std::filesystem::path(*env.home);
        if (text.size() > 2) path /= text.substr(2);
    }
    if (path.is_relative()) path = env.workingDir / path;
    return path.lexically_normal();
}

}  // namespace velmora
