// Writes the application icon's ".iconset" folder, which the Mac build turns into AppIcon.icns.
#include <cstdio>
#include <exception>

#include "app/icon/app_icon.hpp"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: velmora_make_app_icon ICONSET_DIR\n", stderr);
        return 2;
    }
    try {
        if (const auto problem = velmora::writeIconSet(argv[1])) {
            std::fprintf(stderr, "velmora_make_app_icon: %s\n", problem->c_str());
            return 1;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velmora_make_app_icon: %s\n", error.what());
        return 1;
    }
    return 0;
}
