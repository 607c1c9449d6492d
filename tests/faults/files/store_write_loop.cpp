// Stand-in for a watchdog killed in the middle of saving: `write DIR` saves the settings and
// the marker over and over until it is killed; `check DIR` says whether what it left is whole.

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "os/safe_read.hpp"
#include "policy/timestamp.hpp"
#include "store/dates.hpp"
#include "store/marker_store.hpp"
#include "store/settings_store.hpp"

namespace {

using velmora::CappedRead;

[[noreturn]] void writeForever(const std::filesystem::path& dir) {
    const velmora::SettingsStore settings(dir);
    const velmora::MarkerStore markers(dir);
    for (unsigned round = 0;; ++round) {
        const auto now = velmora::Timestamp::now();
        static_cast<void>(settings.recordConsent(round % 2 == 0, now));
        const velmora::Marker marker{velmora::rfc3339(now), 100.0 + round % 9,
                                     "kill test round " + std::to_string(round)};
        if (auto error = markers.write(marker))
            std::fprintf(stderr, "%s\n", error->message.c_str());
        if (round % 3 == 2) markers.clear();
    }
}

int check(const std::filesystem::path& dir) {
    const auto settingsFile =
        velmora::readCappedRegularFile(dir / "settings.json", velmora::SettingsStore::readCap);
    if (settingsFile.kind == CappedRead::Kind::ok && !velmora::decodeSettings(settingsFile.text)) {
        std::printf("settings.json is torn: %zu bytes '%s'\n", settingsFile.text.size(),
                    settingsFile.text.c_str());
        return 1;
    }
    if (settingsFile.kind != CappedRead::Kind::ok &&
        settingsFile.kind != CappedRead::Kind::missing) {
        std::printf("settings.json %s\n", settingsFile.problem.c_str());
        return 1;
    }
    const auto finding = velmora::MarkerStore(dir).inspect();
    if (!finding.problem.empty()) {
        std::printf("auto-shutdown.marker %s\n", finding.problem.c_str());
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 3 ? argv[1] : "";  // NOLINT(*-pointer-arithmetic)
    if (mode == "write") writeForever(argv[2]);              // NOLINT(*-pointer-arithmetic)
    if (mode == "check") return check(argv[2]);              // NOLINT(*-pointer-arithmetic)
    std::fputs("usage: store_write_loop write|check DIR\n", stderr);
    return 2;
}
