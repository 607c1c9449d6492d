#pragma once

#include <string>

namespace velmora {

/// A fresh random (version 4) UUID in its 36-character upper-case text form; the per-launch
/// secret that page messages must carry.
std::string makeLaunchToken();

}  // namespace velmora
