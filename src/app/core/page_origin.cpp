#include "app/core/page_origin.hpp"

#include <cctype>

namespace velmora {

namespace {

bool isAsciiAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSchemeChar(char c) {
    return isAsciiAlpha(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// The scheme of `url` in lower case; empty when it has none.
std::string schemeOf(std::string_view url) {
    const auto colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAsciiAlpha(url.front())) return {};
    std::string scheme;
    for (const char c : url.substr(0, colon)) {
        if (!isSchemeChar(c)) return {};
        scheme.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    return scheme;
}

}  // namespace

bool isFileURL(std::string_view url) {
    return schemeOf(url) == "file";
}

bool fromBundledPage(bool mainFrame, const std::optional<std::string>& frameURL) {
    return mainFrame && frameURL && isFileURL(*frameURL);
}

bool parsesAsURL(std::string_view text) {
    const auto scheme = schemeOf(text);
    return !scheme.empty() && text.size() > scheme.size() + 1;
}

}  // namespace velmora
