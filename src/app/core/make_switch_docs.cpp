// Writes the manual page or the bash completion, both made from the switch table, at build
// time: make_switch_docs man|completion OUTPUT.

#include <cstdio>
#include <fstream>
#include <string_view>

#include "app/core/switch_docs.hpp"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make_switch_docs man|completion OUTPUT\n", stderr);
        return 2;
    }
    const std::string_view kind = argv[1];  // NOLINT(*-pointer-arithmetic)
    if (kind != "man" && kind != "completion") {
        std::fprintf(stderr, "make_switch_docs: unknown kind '%s'\n", argv[1]);
        return 2;
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);  // NOLINT(*-pointer-arithmetic)
    out << (kind == "man" ? velmora::manPage() : velmora::bashCompletion());
    out.close();
    if (!out) {
        std::fprintf(stderr, "make_switch_docs: could not write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
