#include "store/disk_writes.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "os/replace_file.hpp"

namespace velmora {

WriteError createDirectories(const std::filesystem::path& dir) {
    if (dir.empty()) return std::nullopt;
    std::error_code ec;
    if (std::filesystem::is_directory(dir, ec)) return std::nullopt;
    if (dir.has_parent_path() && dir.parent_path() != dir) {
        std::filesystem::create_directories(dir.parent_path(), ec);
        if (ec) return StoreError::fromErrno("could not create folder", dir, ec.value());
    }
    if (::mkdir(dir.c_str(), 0700) != 0 &&
        !(errno == EEXIST && std::filesystem::is_directory(dir, ec))) {
        return StoreError::fromErrno("could not create folder", dir, errno);
    }
    return std::nullopt;
}

WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes) {
    if (const auto failed = replaceFile(target, bytes)) {
        return StoreError::fromErrno(failed->action, failed->path, failed->code);
    }
    return std::nullopt;
}

int removeStrayTemporaries(const std::filesystem::path& dir) {
    return removeStrayTemporariesOf(dir, {"settings.json", "auto-shutdown.marker"});
}

}  // namespace velmora
