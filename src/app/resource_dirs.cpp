#include "app/resource_dirs.hpp"

#include <system_error>

namespace velmora {

std::filesystem::path resourceDirectory(const std::filesystem::path& executable) {
    auto beside = executable.parent_path() / "resources";
    std::error_code error;
    if (std::filesystem::is_directory(beside, error)) return beside;
    return (executable.parent_path() / ".." / "share" / "velmora-heat-monitor").lexically_normal();
}

std::filesystem::path runningExecutable() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : path;
}

}  // namespace velmora
