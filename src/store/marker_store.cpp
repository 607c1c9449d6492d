#include "store/marker_store.hpp"

#include "os/whole_file.hpp"
#include "store/disk_writes.hpp"

#include <system_error>

namespace velmora {

MarkerStore::MarkerStore(const std::filesystem::path& dir) : url_(dir / "auto-shutdown.marker") {}

WriteError MarkerStore::write(const Marker& marker) const {
    if (auto error = createDirectories(url_.parent_path())) return error;
    const auto json = encodeMarker(marker);
    if (!json) return json.error();
    return writeDurably(url_, *json);
}

std::optional<Marker> MarkerStore::read() const {
    std::error_code ec;
    if (!std::filesystem::exists(url_, ec)) return std::nullopt;
    const auto text = readWholeFile(url_);
    if (!text) return unreadableMarker();
    return decodeMarker(*text).value_or(unreadableMarker());
}

void MarkerStore::clear() const {
    std::error_code ignored;
    std::filesystem::remove(url_, ignored);
}

}  // namespace velmora
