#include "app/core/data_dir_check.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "store/disk_writes.hpp"

namespace velmora {

namespace {

std::string octalMode(mode_t mode) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(mode & 07777U));
    return text.data();
}

}  // namespace

std::optional<std::string> prepareDataDir(const std::filesystem::path& dir) {
    static_cast<void>(createDirectories(dir));
    struct stat info {};
    if (::stat(dir.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return std::nullopt;
    const std::string refusing = "refusing the data directory " + dir.string() + ": ";
    if (info.st_uid != ::geteuid()) {
        return refusing + "it belongs to user id " + std::to_string(info.st_uid) +
               ", not to you (user id " + std::to_string(::geteuid()) +
               "); choose a directory of your own with --data-dir";
    }
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return refusing + "other users may write to it (mode " + octalMode(info.st_mode) +
               "); run 'chmod go-w " + dir.string() +
               "' or choose a directory of your own with --data-dir";
    }
    static_cast<void>(removeStrayTemporaries(dir));
    return std::nullopt;
}

std::optional<std::string> dataDirProblem(const std::filesystem::path& dir) {
    std::error_code error;
    if (!std::filesystem::is_directory(dir, error)) {
        return "the data directory " + dir.string() +
               " could not be created: nothing will be logged or saved";
    }
    if (::access(dir.c_str(), W_OK) != 0) {
        return "the data directory " + dir.string() + " is not writable (" +
               std::error_code(errno, std::generic_category()).message() +
               "): nothing will be logged or saved";
    }
    return std::nullopt;
}

}  // namespace velmora
