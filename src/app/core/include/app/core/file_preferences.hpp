#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "app/core/appearance.hpp"

namespace velmora {

/// Preferences kept as one small JSON object in "preferences.json" of a directory. Reads
/// fall back to nothing on any failure; writes go to a temporary file renamed into place.
class FilePreferences final : public PreferenceStore {
  public:
    explicit FilePreferences(const std::filesystem::path& dir) : file(dir / "preferences.json") {}

    std::optional<std::string> text(std::string_view key) const override;
    std::optional<std::string> setText(std::string_view key, const std::string& value) override;

    const std::filesystem::path file;
};

/// Preferences that live only as long as the run, when no configuration directory exists.
class MemoryPreferences final : public PreferenceStore {
  public:
    std::optional<std::string> text(std::string_view key) const override;
    std::optional<std::string> setText(std::string_view key, const std::string& value) override;

  private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace velmora
