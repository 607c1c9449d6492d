// Feeds every file of the corpus folders named on the command line to the fuzz entry point it is
// linked with. An empty or missing folder is a failure: a replay that tried nothing proves nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> corpusFiles(const std::filesystem::path& dir) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator it(dir, error), end; !error && it != end;
         it.increment(error)) {
        if (it->is_regular_file()) files.push_back(it->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::filesystem::path& file) {
    // Named first, so that a broken invariant's report follows the input that broke it.
    std::printf("%s\n", file.filename().c_str());
    std::fflush(stdout);
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    // A fresh copy of exactly the input's size, so that reading past its end is caught.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR...\n", argv[0]);
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        const auto files = corpusFiles(argv[i]);
        if (files.empty()) {
            std::fprintf(stderr, "%s: no inputs to replay\n", argv[i]);
            return 1;
        }
        for (const auto& file : files)
            replay(file);
        std::printf("%s: %zu inputs replayed\n", argv[i], files.size());
    }
    return 0;
}
