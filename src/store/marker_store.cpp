#include "store/marker_store.hpp"

#include "os/safe_read.hpp"
#include "store/dates.hpp"
#include "store/disk_writes.hpp"

#include <system_error>

namespace velmora {

namespace {

constexpr std::size_t excerptLength = 80;

// The size and the start of a file that is not a marker, for the log (which escapes it).
std::string notAMarker(std::string_view text) {
    std::string problem = "is not a marker: " + std::to_string(text.size()) + " bytes";
    if (!text.empty()) {
        problem += " beginning '";
        problem += text.substr(0, excerptLength);
        problem += '\'';
    }
    return problem;
}

}  // namespace

MarkerStore::MarkerStore(const std::filesystem::path& dir) : url_(dir / "auto-shutdown.marker") {}

WriteError MarkerStore::write(const Marker& marker) const {
    if (auto error = createDirectories(url_.parent_path())) return error;
    const auto json = encodeMarker(marker);
    if (!json) return json.error();
    return replaceFileAtomically(url_, *json);
}

MarkerFinding MarkerStore::inspect() const {
    const auto found = readCappedRegularFile(url_, readCap);
    switch (found.kind) {
        case CappedRead::Kind::missing:
            return {};
        case CappedRead::Kind::ok:
            break;
        case CappedRead::Kind::refused:
        case CappedRead::Kind::unreadable:
            return {std::nullopt, found.problem};
    }
    auto marker = decodeMarker(found.text);
    if (!marker) return {std::nullopt, notAMarker(found.text)};
    if (!parseRFC3339(marker->at)) {
        return {std::nullopt, "has a time that is not a date-time: '" + marker->at + "'"};
    }
    return {std::move(marker), {}};
}

std::optional<Marker> MarkerStore::read() const {
    auto finding = inspect();
    if (finding.marker) return finding.marker;
    if (!finding.problem.empty()) return unreadableMarker();
    return std::nullopt;
}

void MarkerStore::clear() const {
    std::error_code ignored;
    std::filesystem::remove(url_, ignored);
}

}  // namespace velmora
