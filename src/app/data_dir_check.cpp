#include "app/data_dir_check.hpp"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velmora {

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
