#pragma once

#include <memory>

#include "app/core/appearance.hpp"

namespace velmora {

/// The user's defaults database (NSUserDefaults), where a Mac application keeps preferences.
std::unique_ptr<PreferenceStore> makeUserDefaultsPreferences();

}  // namespace velmora
