#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// `text` made safe to stand on one line of heat.log: C0 and C1 control characters and DEL
/// become "\n", "\r", "\t", "\xNN" or "\u0085"-style escapes, the Unicode line and paragraph
/// separators become "\u2028" and "\u2029", and bytes that are not valid UTF-8 become "\xNN".
/// Everything else, backslashes included, is kept as it is, so ordinary text reads unchanged
/// and escaping twice changes nothing more.
std::string escapeForLog(std::string_view text);

}  // namespace velmora
