#include "app/core/resource_dirs.hpp"

#include <array>
#include <string_view>
#include <system_error>

namespace velmora {

std::filesystem::path resourceDirectory(const std::filesystem::path& executable) {
    auto beside = executable.parent_path() / "resources";
    std::error_code error;
    if (std::filesystem::is_directory(beside, error)) return beside;
    return (executable.parent_path() / ".." / "share" / "velmora-heat-monitor").lexically_normal();
}

namespace {

constexpr std::array<std::string_view, 4> pageFiles{"index.html", "expanded.html", "stagec.html",
                                                    "menubar.html"};
constexpr std::array<std::string_view, 2> soundFiles{"sounds/alarm.wav", "sounds/tick.wav"};

template <std::size_t N>
std::string presenceLine(const std::filesystem::path& resources, std::string_view what,
                         const std::array<std::string_view, N>& files) {
    std::string missing;
    for (const auto file : files) {
        std::error_code error;
        if (std::filesystem::is_regular_file(resources / file, error)) continue;
        missing += missing.empty() ? "" : ", ";
        missing += file;
    }
    const auto line = "  " + std::string(what) + ": ";
    if (missing.empty()) return line + "all " + std::to_string(N) + " found\n";
    return line + "MISSING " + missing + "\n";
}

}  // namespace

std::filesystem::path iconSearchPath(const std::filesystem::path& resources) {
    std::error_code error;
    if (std::filesystem::is_directory(resources / "icons" / "hicolor", error)) {
        return resources / "icons";
    }
    auto shared = (resources / ".." / "icons").lexically_normal();
    if (std::filesystem::is_directory(shared / "hicolor", error)) return shared;
    return {};
}

std::string resourceReport(const std::filesystem::path& resources) {
    return "resources: " + resources.string() + "\n" + presenceLine(resources, "pages", pageFiles) +
           presenceLine(resources, "sounds", soundFiles);
}

std::filesystem::path runningExecutable() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : path;
}

}  // namespace velmora
