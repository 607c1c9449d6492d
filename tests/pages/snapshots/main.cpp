// Writes what the real engine and live model hand to the pages, for the browser tests to
// render: engine-views.json and live-snapshots.json in the folder named on the command line.
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "snapshot_parts.hpp"

namespace {

bool writeJson(const std::filesystem::path& file, const nlohmann::json& value) {
    std::ofstream out(file);
    out << value.dump(2) << '\n';
    return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: velmora_page_snapshots OUTPUT_DIR\n";
        return 2;
    }
    try {
        const std::filesystem::path dir = argv[1];
        std::filesystem::create_directories(dir / "scratch");
        const bool written =
            writeJson(dir / "engine-views.json", velmora::pages::engineViews(dir / "scratch")) &&
            writeJson(dir / "live-snapshots.json", velmora::pages::liveSnapshots());
        std::filesystem::remove_all(dir / "scratch");
        if (!written) {
            std::cerr << "velmora_page_snapshots: could not write into " << dir << '\n';
            return 1;
        }
    } catch (const std::exception& e) {
        std::cerr << "velmora_page_snapshots: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
