#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Entries of a directory whose names start with `prefix`, in natural order (hwmon2 before
/// hwmon10); empty when the directory cannot be listed. Discovery only.
std::vector<std::string> listEntries(const std::string& dir, std::string_view prefix);

/// "dir/name", built without temporaries.
std::string childPath(std::string_view dir, std::string_view name);

/// The numbers N of the files "<stem>N<suffix>" in a directory (temp1_input → 1), ascending.
std::vector<int> numberedFiles(const std::string& dir, std::string_view stem,
                               std::string_view suffix);

}  // namespace velmora
