#include "metrics/linux/sysfs_fingerprint.hpp"

#include <dirent.h>
#include <sys/stat.h>

#include <array>
#include <string_view>

namespace velmora {

namespace {

DirIdentity identityOf(std::string name, const struct stat& info) {
    return DirIdentity{std::move(name), static_cast<std::uint64_t>(info.st_dev),
                       static_cast<std::uint64_t>(info.st_ino), info.st_mtim.tv_sec,
                       info.st_mtim.tv_nsec};
}

void addClass(SysfsFingerprint& print, const std::string& classDir) {
    struct stat info {};
    if (::stat(classDir.c_str(), &info) != 0) return;
    print.push_back(identityOf(classDir, info));
    DIR* dir = ::opendir(classDir.c_str());
    if (dir == nullptr) return;
    std::string path = classDir + "/";
    const std::size_t base = path.size();
    // readdir is safe on a directory stream that only this call uses.
    while (const dirent* entry = ::readdir(dir)) {  // NOLINT(concurrency-mt-unsafe)
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        path.resize(base);
        path.append(name);
        // stat follows the class's symbolic link to the device directory itself.
        if (::stat(path.c_str(), &info) == 0) print.push_back(identityOf(std::string(name), info));
    }
    ::closedir(dir);
}

}  // namespace

SysfsFingerprint sysfsFingerprint(const std::string& root) {
    static constexpr std::array<std::string_view, 4> classes{"hwmon", "thermal", "power_supply",
                                                             "drm"};
    SysfsFingerprint print;
    for (const std::string_view cls : classes) {
        addClass(print, root + "/sys/class/" + std::string(cls));
    }
    return print;
}

}  // namespace velmora
