#pragma once

#include "store/marker.hpp"
#include "store/store_error.hpp"

#include <filesystem>
#include <optional>

namespace velmora {

/// "auto-shutdown.marker" in the data directory. Holds only the location.
class MarkerStore {
  public:
    explicit MarkerStore(const std::filesystem::path& dir);

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }

    /// Writes the marker and flushes it to the storage device before returning: the power
    /// may go right after this call.
    [[nodiscard]] WriteError write(const Marker& marker) const;

    /// Nothing when there is no marker file; unreadableMarker() when one exists but cannot be
    /// read or decoded (an empty file included).
    [[nodiscard]] std::optional<Marker> read() const;

    /// Removes the marker file; a missing file or any other failure is ignored.
    void clear() const;

  private:
    std::filesystem::path url_;
};

}  // namespace velmora
