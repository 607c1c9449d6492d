#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// True for an address whose scheme is "file" (in any letter case, as schemes are).
bool isFileURL(std::string_view url);

/// A message counts as coming from one of the application's own pages only when it comes
/// from a main frame whose request is a file address.
bool fromBundledPage(bool mainFrame, const std::optional<std::string>& frameURL);

/// True for a text with a syntactically valid scheme followed by ":" and something more.
bool parsesAsURL(std::string_view text);

}  // namespace velmora
