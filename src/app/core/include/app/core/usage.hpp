#pragma once

#include <string>

namespace velmora {

/// What "--help" prints.
std::string usageText();

}  // namespace velmora
