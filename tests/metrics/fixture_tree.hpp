#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/temp_dir.hpp"

namespace velmora::testing {

/// The checked-in fixture trees of tests/fixtures/linux.
inline std::filesystem::path fixtureSource(const std::string& machine) {
    const char* source = std::getenv("VELMORA_SOURCE_DIR");
    const std::filesystem::path base = source ? source : ".";
    return base / "tests" / "fixtures" / "linux" / machine;
}

/// A private, writable copy of one machine's tree. Its `next/` overlay holds the files as the
/// kernel prints them one second later; `advance` writes them in place, so descriptors that the
/// backend keeps open see the new text as they would on a live system.
class FixtureTree {
  public:
    explicit FixtureTree(const std::string& machine) {
        if (machine.empty()) return;
        const auto source = fixtureSource(machine);
        for (const auto& entry : std::filesystem::directory_iterator(source)) {
            const auto name = entry.path().filename();
            if (name == "next") continue;
            std::filesystem::copy(entry.path(), root_ / name,
                                  std::filesystem::copy_options::recursive |
                                      std::filesystem::copy_options::copy_symlinks);
        }
        next_ = source / "next";
    }
    FixtureTree(const FixtureTree&) = delete;
    FixtureTree& operator=(const FixtureTree&) = delete;

    std::string root() const { return root_.string(); }
    std::string path(const std::string& relative) const { return (root_ / relative).string(); }

    void advance() const {
        if (!std::filesystem::exists(next_)) return;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(next_)) {
            if (!entry.is_regular_file()) continue;
            std::ifstream in(entry.path());
            const std::string text((std::istreambuf_iterator<char>(in)), {});
            write(std::filesystem::relative(entry.path(), next_).string(), text);
        }
    }

    /// Rewrites a file in place (same inode), creating directories as needed.
    void write(const std::string& relative, const std::string& text) const {
        const auto file = root_ / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::trunc) << text;
    }

    /// What an unplugged device looks like to a descriptor kept open: its attribute reads
    /// nothing, and its directory is gone from the next listing.
    void unplug(const std::string& relativeDir) const {
        for (const auto& entry : std::filesystem::directory_iterator(root_ / relativeDir)) {
            if (entry.is_regular_file()) std::ofstream(entry.path(), std::ios::trunc);
        }
        std::filesystem::remove_all(root_ / relativeDir);
    }

  private:
    TempDir tmp_{"fixture"};
    std::filesystem::path root_ = tmp_.path();
    std::filesystem::path next_;
};

}  // namespace velmora::testing
