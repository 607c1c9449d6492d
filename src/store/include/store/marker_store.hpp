#pragma once

#include "store/marker.hpp"
#include "store/store_error.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// What lies at the marker's place: nothing, a marker this program could have written, or
/// something else, described in `problem` for the log.
struct MarkerFinding {
    std::optional<Marker> marker;
    /// Empty when there is no file or a usable marker; otherwise what was found, e.g.
    /// "is a symbolic link" or "is not a marker: 0 bytes".
    std::string problem;
};

/// "auto-shutdown.marker" in the data directory. Holds only the location.
class MarkerStore {
  public:
    /// The largest marker file read; a real one is under 200 bytes.
    static constexpr std::size_t readCap = std::size_t{4} * 1024;

    explicit MarkerStore(const std::filesystem::path& dir);

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }

    /// Replaces the marker atomically and flushes it and its directory to the storage device
    /// before returning: the power may go right after this call, and a kill at any moment
    /// leaves either no marker or a complete one.
    [[nodiscard]] WriteError write(const Marker& marker) const;

    /// Reads the marker without following a symbolic link, waiting on a FIFO or reading more
    /// than readCap bytes. A marker counts only when it decodes and its time is a date-time
    /// as rfc3339 writes it.
    [[nodiscard]] MarkerFinding inspect() const;

    /// Nothing when there is no marker file; unreadableMarker() when one exists but is not a
    /// usable marker (see inspect).
    [[nodiscard]] std::optional<Marker> read() const;

    /// Removes the marker file (a symbolic link itself, never its target); a missing file or
    /// any other failure is ignored.
    void clear() const;

  private:
    std::filesystem::path url_;
};

}  // namespace velmora
