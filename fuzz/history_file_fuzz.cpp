// "history.bin" as found at start: any bytes. The input is decoded as it is (never the right
// size, so refused with a reason) and laid over a valid empty file at an offset the input
// chooses, so that headers and records are damaged in every way. A file that decodes gives
// rows in increasing time order, each with a known resolution and a level on the ladder, and
// every row exports as one CSV line.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_support.hpp"
#include "store/history_csv.hpp"
#include "store/history_file.hpp"

namespace {

void checkRows(const velmora::HistoryStore& store) {
    using velmora::fuzz::require;
    const auto rows = store.rows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        if (i > 0) require(rows[i - 1].time < row.time, "rows are in increasing time order");
        require(row.resolution == 1 || row.resolution == 10 || row.resolution == 60 ||
                    row.resolution == 900,
                "a row has one of the tiers' resolutions");
        require(!row.busiest || row.busiest->size() < velmora::HistoryBucket::nameBytes,
                "a name fits its field");
        require(!velmora::historyCsvLine(row).empty(), "a row exports");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    namespace hf = velmora::history_file;
    const auto input = velmora::fuzz::asText(data, size);
    const auto raw = hf::decode(input, std::nullopt);
    require(raw.store == nullptr && !raw.problem.empty(), "a file of the wrong size is refused");

    std::string file(hf::fileBytes(), '\0');
    const auto header = hf::header(7);
    std::memcpy(file.data(), header.data(), header.size());
    std::size_t at = 0;
    if (size >= 4) {
        std::uint32_t pick = 0;
        std::memcpy(&pick, data, sizeof pick);
        at = pick % file.size();
    }
    std::copy_n(input.begin(), std::min(input.size(), file.size() - at),
                file.begin() + static_cast<std::ptrdiff_t>(at));
    const auto decoded = hf::decode(file, std::uint64_t{7});
    require((decoded.store != nullptr) == decoded.problem.empty(),
            "a file decodes or says why not");
    if (decoded.store) checkRows(*decoded.store);
    return 0;
}
