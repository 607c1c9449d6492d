#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/core/shell.hpp"

namespace velmora {

/// The script message handlers a web view carries: the main window's four, the popover's one
/// (the popover may change the theme and nothing else).
std::vector<std::string_view> messageHandlerNames(WebView view);

/// A page message from what the toolkit hands over, as plain values. The body arrives as the
/// JSON text of a one-element array wrapping it (the toolkit can always write an array, not
/// every bare value); a body that could not be written or read becomes null, which every
/// handler ignores.
PageMessage pageMessageFrom(WebView view, std::string name,
                            const std::optional<std::string>& wrappedBodyJSON, bool mainFrame,
                            std::optional<std::string> frameURL);

}  // namespace velmora
