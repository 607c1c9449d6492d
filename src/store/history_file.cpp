#include "store/history_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <numeric>

#include "os/safe_read.hpp"

namespace velmora::history_file {

namespace {

constexpr std::array<char, 8> kMagic{'V', 'E', 'L', 'M', 'H', 'I', 'S', 'T'};
constexpr std::uint32_t kByteOrderMark = 0x01020304U;
constexpr std::uint32_t kSwappedMark = 0x04030201U;
constexpr std::size_t kCrcAt = headerBytes - 4;
constexpr std::uint32_t kClosed = 1;
constexpr std::uint32_t kOpen = 2;
// Record layout: number, tier, kind, the point, then the checksum of all that.
constexpr std::size_t kTierAt = 8;
constexpr std::size_t kKindAt = 12;
constexpr std::size_t kBucketAt = 16;
constexpr std::size_t kRecordCrcAt = kBucketAt + sizeof(HistoryBucket);
static_assert(kRecordCrcAt + 8 == recordBytes);

template <typename T>
void put(std::byte* at, const T& value) {
    std::memcpy(at, &value, sizeof(T));
}

template <typename T>
T take(std::string_view bytes, std::size_t at) {
    T value{};
    std::memcpy(&value, bytes.data() + at, sizeof(T));
    return value;
}

std::string_view asText(const std::byte* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};  // NOLINT(*-reinterpret-cast)
}

std::size_t totalSlots() {
    return std::accumulate(HistoryStore::capacities.begin(), HistoryStore::capacities.end(),
                           std::size_t{HistoryStore::tierCount});
}

std::size_t firstSlot(std::size_t tier) {
    return std::accumulate(HistoryStore::capacities.begin(),
                           HistoryStore::capacities.begin() + static_cast<std::ptrdiff_t>(tier),
                           std::size_t{0});
}

std::uint64_t slotOffset(std::size_t slot) {
    return headerBytes + recordBytes * slot;
}

std::size_t openSlot(std::size_t tier) {
    return totalSlots() - HistoryStore::tierCount + tier;
}

Record record(std::size_t slot, std::uint64_t number, std::size_t tier, std::uint32_t kind,
              const HistoryBucket& bucket) {
    Record out;
    out.offset = slotOffset(slot);
    auto* data = out.bytes.data();
    put(data, number);
    put(data + kTierAt, static_cast<std::uint32_t>(tier));
    put(data + kKindAt, kind);
    put(data + kBucketAt, bucket);
    put(data + kRecordCrcAt, crc32(asText(data, kRecordCrcAt)));
    return out;
}

/// The point in one slot, when the slot holds a whole, checked point of that tier and kind.
std::optional<std::pair<std::uint64_t, HistoryBucket>> slotPoint(std::string_view file,
                                                                 std::size_t slot, std::size_t tier,
                                                                 std::uint32_t kind) {
    const auto bytes = file.substr(slotOffset(slot), recordBytes);
    if (take<std::uint32_t>(bytes, kKindAt) != kind) return std::nullopt;
    if (take<std::uint32_t>(bytes, kTierAt) != tier) return std::nullopt;
    if (take<std::uint32_t>(bytes, kRecordCrcAt) != crc32(bytes.substr(0, kRecordCrcAt))) {
        return std::nullopt;
    }
    // Far beyond a point a second for a lifetime: a number no writer could have reached.
    constexpr std::uint64_t kHighestNumber = std::uint64_t{1} << 40U;
    const auto number = take<std::uint64_t>(bytes, 0);
    if (number == 0 || number > kHighestNumber) return std::nullopt;
    return std::pair{number, take<HistoryBucket>(bytes, kBucketAt)};
}

void decodeTier(std::string_view file, std::size_t t, HistoryTier& tier) {
    const auto base = firstSlot(t);
    const auto capacity = tier.capacity();
    std::vector<std::pair<std::uint64_t, HistoryBucket>> found;
    found.reserve(capacity);
    for (std::size_t slot = 0; slot < capacity; ++slot) {
        auto point = slotPoint(file, base + slot, t, kClosed);
        // A point in the wrong slot was not written by this layout: leave it out.
        if (point && (point->first - 1) % capacity == slot) found.push_back(*point);
    }
    std::uint64_t newest = 0;
    for (const auto& point : found)
        newest = std::max(newest, point.first);
    for (const auto& [number, bucket] : found) {
        if (number + capacity > newest) tier.restore(number, bucket);
    }
    // The open point counts only when it follows the newest closed one on disk; an older one
    // was closed since, and its samples are in that point.
    const auto open = slotPoint(file, openSlot(t), t, kOpen);
    if (open && open->first == tier.pushed() + 1) tier.restoreOpen(open->second);
}

std::string headerProblem(std::string_view file, std::optional<std::uint64_t> machine) {
    if (file.empty()) return "is empty";
    if (file.size() < fileBytes()) return "is truncated";
    if (file.size() > fileBytes()) return "is larger than a history file";
    if (!std::equal(kMagic.begin(), kMagic.end(), file.begin())) return "is not a history file";
    const auto mark = take<std::uint32_t>(file, 12);
    if (mark == kSwappedMark) return "was written with the other byte order";
    if (mark != kByteOrderMark) return "is not a history file";
    if (const auto v = take<std::uint32_t>(file, 8); v != version) {
        return "is of version " + std::to_string(v) + ", not " + std::to_string(version);
    }
    if (take<std::uint32_t>(file, kCrcAt) != crc32(file.substr(0, kCrcAt))) {
        return "has a damaged header";
    }
    if (file.substr(0, headerBytes) !=
        asText(header(take<std::uint64_t>(file, 16)).data(), headerBytes)) {
        return "has another layout";
    }
    if (machine && take<std::uint64_t>(file, 16) != *machine) return "belongs to another machine";
    return {};
}

}  // namespace

std::size_t fileBytes() {
    return headerBytes + recordBytes * totalSlots();
}

std::uint32_t crc32(std::string_view bytes) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1U) != 0 ? 0xEDB88320U ^ (c >> 1U) : c >> 1U;
            t.at(i) = c;
        }
        return t;
    }();
    std::uint32_t c = 0xFFFFFFFFU;
    for (const char ch : bytes)
        c = table.at((c ^ static_cast<unsigned char>(ch)) & 0xFFU) ^ (c >> 8U);
    return c ^ 0xFFFFFFFFU;
}

std::array<std::byte, headerBytes> header(std::uint64_t machine) {
    std::array<std::byte, headerBytes> out{};
    auto* data = out.data();
    std::memcpy(data, kMagic.data(), kMagic.size());
    put(data + 8, version);
    put(data + 12, kByteOrderMark);
    put(data + 16, machine);
    put(data + 24, static_cast<std::uint32_t>(recordBytes));
    put(data + 28, static_cast<std::uint32_t>(HistoryStore::tierCount));
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t) {
        put(data + 32 + 4 * t, static_cast<std::uint32_t>(HistoryStore::widths.at(t)));
        put(data + 48 + 4 * t, static_cast<std::uint32_t>(HistoryStore::capacities.at(t)));
    }
    put(data + kCrcAt, crc32(asText(data, kCrcAt)));
    return out;
}

std::vector<Record> changedRecords(const HistoryStore& store,
                                   std::array<std::uint64_t, HistoryStore::tierCount>& written) {
    std::vector<Record> out;
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t) {
        const auto& tier = store.tier(t);
        const auto capacity = tier.capacity();
        const auto oldest = tier.pushed() > capacity ? tier.pushed() - capacity : 0;
        for (auto number = std::max(written.at(t), oldest) + 1; number <= tier.pushed(); ++number) {
            if (const auto* point = tier.point(number)) {
                const auto slot = firstSlot(t) + static_cast<std::size_t>((number - 1) % capacity);
                out.push_back(record(slot, number, t, kClosed, point->bucket()));
            }
        }
        written.at(t) = tier.pushed();
        if (tier.open())
            out.push_back(record(openSlot(t), tier.pushed() + 1, t, kOpen, *tier.open()));
    }
    return out;
}

Decoded decode(std::string_view bytes, std::optional<std::uint64_t> machine) {
    if (auto problem = headerProblem(bytes, machine); !problem.empty()) {
        return Decoded{nullptr, std::move(problem)};
    }
    auto store = std::make_unique<HistoryStore>();
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t)
        decodeTier(bytes, t, store->tier(t));
    return Decoded{std::move(store), {}};
}

}  // namespace velmora::history_file
