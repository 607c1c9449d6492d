#pragma once

#include <string>

namespace velmora::testing {

/// The path of one stand-in executable for the scripting tool.
inline std::string standIn(const std::string& name) {
    return std::string(VELMORA_STANDINS_DIR) + "/" + name;
}

}  // namespace velmora::testing
