#include "metrics/linux/file_pool.hpp"

#include <dirent.h>
#include <sys/resource.h>

#include <iterator>

namespace velmora {

namespace {

// Open descriptors of this process; nothing when /proc cannot tell.
std::optional<std::size_t> openDescriptors() {
    DIR* dir = ::opendir("/proc/self/fd");
    if (dir == nullptr) return std::nullopt;
    std::size_t count = 0;
    // readdir is safe on a directory stream that only this call uses.
    while (const dirent* entry = ::readdir(dir)) {  // NOLINT(concurrency-mt-unsafe)
        if (entry->d_name[0] != '.') ++count;
    }
    ::closedir(dir);
    return count > 0 ? count - 1 : 0;  // the listing's own descriptor
}

}  // namespace

void FilePool::add(SysfsFile file) {
    std::string path = file.path();
    files_.insert_or_assign(std::move(path), std::move(file));
}

std::optional<SysfsFile> FilePool::take(const std::string& path) {
    const auto found = files_.find(path);
    if (found == files_.end()) return std::nullopt;
    std::optional<SysfsFile> file(std::move(found->second));
    files_.erase(found);
    ++reused_;
    return file;
}

const SysfsFile* FilePool::find(const std::string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? nullptr : &found->second;
}

void FilePool::closeChanged() {
    for (auto it = files_.begin(); it != files_.end();) {
        it = it->second.stillAtPath() ? std::next(it) : files_.erase(it);
    }
}

std::size_t spareDescriptors(std::size_t reserve) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return SIZE_MAX / 2;
    }
    const auto soft = static_cast<std::size_t>(limit.rlim_cur);
    const std::size_t open = openDescriptors().value_or(soft / 2);
    return soft > open + reserve ? soft - open - reserve : 0;
}

}  // namespace velmora
