#include "app/cocoa/page_message.hpp"

#include <nlohmann/json.hpp>

namespace velmora {

std::vector<std::string_view> messageHandlerNames(WebView view) {
    if (view == WebView::menu) return {"theme"};
    return {"size", "stagec", "theme", "heat"};
}

namespace {

nlohmann::json unwrapBody(const std::optional<std::string>& wrapped) {
    if (!wrapped) return nullptr;
    auto parsed = nlohmann::json::parse(*wrapped, nullptr, false);
    if (!parsed.is_array() || parsed.size() != 1) return nullptr;
    return std::move(parsed.front());
}

}  // namespace

PageMessage pageMessageFrom(WebView view, std::string name,
                            const std::optional<std::string>& wrappedBodyJSON, bool mainFrame,
                            std::optional<std::string> frameURL) {
    PageMessage message;
    message.view = view;
    message.name = std::move(name);
    message.body = unwrapBody(wrappedBodyJSON);
    message.mainFrame = mainFrame;
    message.frameURL = std::move(frameURL);
    return message;
}

}  // namespace velmora
