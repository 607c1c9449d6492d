#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace velmora::testing {

/// A fresh, private directory, removed with everything in it when the test is done. `label`
/// names the suite in the directory's name, so that one left behind by a killed run says whose
/// it is; `under` is where it is made, the system's temporary folder unless a test needs another.
class TempDir {
  public:
    explicit TempDir(std::string_view label = "test",
                     const std::filesystem::path& under = std::filesystem::temp_directory_path()) {
        std::string pattern = (under / ("velmora-" + std::string(label) + "-XXXXXX")).string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary directory from " + pattern);
        }
        path_ = pattern;
    }
    // A test may have taken the owner's rights away to provoke a failure; give them back first.
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    TempDir(TempDir&&) = delete;
    TempDir& operator=(TempDir&&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

}  // namespace velmora::testing
