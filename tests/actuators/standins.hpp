#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace velmora::testing {

/// The path of one stand-in executable for the scripting tool.
inline std::string standIn(const std::string& name) {
    return std::string(VELMORA_STANDINS_DIR) + "/" + name;
}

/// A small wrapper in `dir` that starts the stand-in `name` with `variable` set to `value`, so
/// a test can hand it a path without touching its own environment.
inline std::string standInWith(const std::filesystem::path& dir, const std::string& name,
                               const std::string& variable, const std::string& value) {
    const std::filesystem::path wrapper = dir / ("with-" + name);
    std::ofstream(wrapper) << "#!/bin/sh\n"
                           << variable << "='" << value << "' exec '" << standIn(name)
                           << "' \"$@\"\n";
    ::chmod(wrapper.c_str(), 0700);
    return wrapper.string();
}

}  // namespace velmora::testing
