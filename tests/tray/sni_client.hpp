#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora::test {

/// A StatusNotifierItem as a watcher lists it: the owner's bus name and the item's path.
struct ItemRef {
    std::string bus;
    std::string path;
};
std::optional<ItemRef> parseItem(const std::string& address);

/// The org.kde.StatusNotifierItem properties the tests look at.
struct ItemProps {
    std::string id;
    std::string title;
    std::string status;
    std::string iconName;
    std::string attentionIconName;
    std::string iconThemePath;
    std::string label;  // XAyatanaLabel
    std::string menuPath;
    std::string toolTipTitle;
    std::string toolTipText;
    /// IconPixmap: each image's size, and all their bytes one after the other.
    std::vector<std::pair<int, int>> pixmapSizes;
    std::vector<unsigned char> pixmapBytes;
};

/// One entry of a com.canonical.dbusmenu layout.
struct MenuNode {
    int id = 0;
    std::string label;
    std::string type;        // "separator" or empty
    std::string toggleType;  // "checkmark", "radio" or empty
    int toggleState = -1;
    bool enabled = true;
    bool visible = true;
    std::vector<MenuNode> children;
};
const MenuNode* findByLabel(const MenuNode& root, std::string_view label);
/// The labels of the visible entries below the root, separators as "-".
std::vector<std::string> visibleLabels(const MenuNode& root);

/// Reads items, their properties and menus over its own session-bus connection, with
/// blocking calls: call it from a thread other than the one serving the item.
class SniClient {
  public:
    SniClient();
    ~SniClient();
    SniClient(const SniClient&) = delete;
    SniClient& operator=(const SniClient&) = delete;
    SniClient(SniClient&&) = delete;
    SniClient& operator=(SniClient&&) = delete;

    bool connected() const { return bus_ != nullptr; }
    /// The watcher's RegisteredStatusNotifierItems; empty without a watcher.
    std::vector<std::string> registeredItems() const;
    std::optional<ItemProps> properties(const ItemRef& item) const;
    std::optional<MenuNode> layout(const ItemRef& item, const std::string& menuPath) const;
    /// Sends the "clicked" event to the menu entry `id`, as a panel does.
    bool click(const ItemRef& item, const std::string& menuPath, int id) const;

  private:
    GVariant* call(const std::string& bus, const std::string& path, const char* interface,
                   const char* method, GVariant* args, const char* replyType) const;
    GDBusConnection* bus_ = nullptr;
};

}  // namespace velmora::test
