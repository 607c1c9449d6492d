#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "metrics/linux/sysfs_file.hpp"

namespace velmora {

/// The files of the previous inventory during a rediscovery: a path that still names the same
/// file takes its open descriptor back instead of opening a second one, so a rediscovery never
/// holds two inventories' worth of descriptors.
class FilePool {
  public:
    void add(SysfsFile file);
    /// The pooled file for `path`, when there is one.
    std::optional<SysfsFile> take(const std::string& path);
    /// The pooled file for `path` without taking it; nullptr when there is none.
    const SysfsFile* find(const std::string& path) const;
    /// Closes every pooled file whose path no longer names it (removed or replaced), before
    /// anything new is opened.
    void closeChanged();

    std::size_t size() const { return files_.size(); }
    std::size_t reused() const { return reused_; }

  private:
    std::unordered_map<std::string, SysfsFile> files_;
    std::size_t reused_ = 0;
};

/// How many more descriptors this process may open, keeping `reserve` for everything else it
/// does (log, bus, sounds, settings); never negative.
std::size_t spareDescriptors(std::size_t reserve);

}  // namespace velmora
