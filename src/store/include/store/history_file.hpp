#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "os/unique_fd.hpp"
#include "store/history_tiers.hpp"
#include "store/store_error.hpp"

namespace velmora {

/// The history file's layout: a header (magic, version, byte-order mark, machine, geometry,
/// checksum), then one fixed slot per point of every tier and one per tier's open point.
/// Every slot carries its point's number and a CRC-32, so a torn write spoils one slot, which
/// is then read as missing, never as a wrong figure. The size never changes.
namespace history_file {

inline constexpr std::string_view fileName = "history.bin";
inline constexpr std::string_view setAsideName = "history.bad";
inline constexpr std::uint32_t version = 1;
inline constexpr std::size_t headerBytes = 128;
inline constexpr std::size_t recordBytes = 144;

/// The file's exact size; anything else is truncated or oversized.
std::size_t fileBytes();

/// One slot, encoded, and where it goes.
struct Record {
    std::uint64_t offset = 0;
    std::array<std::byte, recordBytes> bytes{};
};

/// Everything written to the tiers since `written` (the numbers already on disk, per tier),
/// plus every open point; `written` is moved on.
std::vector<Record> changedRecords(const HistoryStore& store,
                                   std::array<std::uint64_t, HistoryStore::tierCount>& written);

/// The header of a new file for this machine.
std::array<std::byte, headerBytes> header(std::uint64_t machine);

/// What reading a file's bytes gave: the history, or why the file cannot be used.
struct Decoded {
    std::unique_ptr<HistoryStore> store;
    /// "was written with the other byte order", "belongs to another machine", …
    std::string problem;
};

/// Decodes a whole file. `machine` is checked unless it is empty (the export reads any
/// machine's file). Slots that fail their checksum are left out.
Decoded decode(std::string_view bytes, std::optional<std::uint64_t> machine);

/// IEEE CRC-32 of `bytes`.
std::uint32_t crc32(std::string_view bytes);

}  // namespace history_file

/// A short, stable number for this machine: a hash of `<root>/etc/machine-id`, else of the
/// host name. `root` is the metrics root, so fixture machines have their own.
std::uint64_t machineIdentity(const std::string& root);

/// The open history file of a data directory, used only from the thread that writes it.
class HistoryFile {
  public:
    /// The outcome of opening: the file (none when the data directory refuses one), what it
    /// held, and the lines worth logging (a file set aside, a failure).
    struct Opened {
        std::unique_ptr<HistoryFile> file;
        std::unique_ptr<HistoryStore> store;
        std::vector<std::string> notes;
    };

    /// Opens `dir`/history.bin, or starts it. A file that cannot be used (garbage, truncated,
    /// oversized, another version, byte order or machine, a link, a FIFO) is renamed to
    /// history.bad, replacing an older one, and a fresh history starts.
    static Opened open(const std::filesystem::path& dir, std::uint64_t machine);

    /// Writes the slots; with `sync`, also flushes them to the storage device.
    WriteError write(const std::vector<history_file::Record>& records, bool sync);

    const std::filesystem::path& path() const { return path_; }

  private:
    HistoryFile(std::filesystem::path path, UniqueFd fd);

    std::filesystem::path path_;
    UniqueFd fd_;
};

/// The kept history of a data directory for a reader that must not disturb a running
/// watchdog: read-only, no lock, nothing renamed. Missing file: an empty history.
struct HistoryReading {
    std::unique_ptr<HistoryStore> store;
    /// Why the file could not be read; empty on success.
    std::string problem;
};
HistoryReading readHistory(const std::filesystem::path& dir);

}  // namespace velmora
