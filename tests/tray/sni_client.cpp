#include "tray/sni_client.hpp"

namespace velmora::test {

namespace {

constexpr int callTimeoutMs = 3000;

std::string stringOf(GVariant* dict, const char* key) {
    GVariant* value = g_variant_lookup_value(dict, key, nullptr);
    if (value == nullptr) return {};
    std::string text;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) ||
        g_variant_is_of_type(value, G_VARIANT_TYPE_OBJECT_PATH)) {
        text = g_variant_get_string(value, nullptr);
    }
    g_variant_unref(value);
    return text;
}

MenuNode nodeOf(GVariant* entry) {
    MenuNode node;
    gint32 id = 0;
    GVariant* props = nullptr;
    GVariant* children = nullptr;
    g_variant_get(entry, "(i@a{sv}@av)", &id, &props, &children);
    node.id = id;
    node.label = stringOf(props, "label");
    node.type = stringOf(props, "type");
    node.toggleType = stringOf(props, "toggle-type");
    gint32 state = -1;
    if (g_variant_lookup(props, "toggle-state", "i", &state)) node.toggleState = state;
    gboolean flag = TRUE;
    if (g_variant_lookup(props, "enabled", "b", &flag)) node.enabled = flag != FALSE;
    if (g_variant_lookup(props, "visible", "b", &flag)) node.visible = flag != FALSE;
    GVariantIter iter;
    g_variant_iter_init(&iter, children);
    while (GVariant* child = g_variant_iter_next_value(&iter)) {
        GVariant* inner = g_variant_get_variant(child);
        node.children.push_back(nodeOf(inner));
        g_variant_unref(inner);
        g_variant_unref(child);
    }
    g_variant_unref(props);
    g_variant_unref(children);
    return node;
}

void readToolTip(GVariant* dict, ItemProps& props) {
    GVariant* tip = g_variant_lookup_value(dict, "ToolTip", G_VARIANT_TYPE("(sa(iiay)ss)"));
    if (tip == nullptr) return;
    const gchar* title = nullptr;
    const gchar* text = nullptr;
    g_variant_get(tip, "(&s@a(iiay)&s&s)", nullptr, nullptr, &title, &text);
    props.toolTipTitle = title;
    props.toolTipText = text;
    g_variant_unref(tip);
}

void readPixmaps(GVariant* dict, ItemProps& props) {
    GVariant* images = g_variant_lookup_value(dict, "IconPixmap", G_VARIANT_TYPE("a(iiay)"));
    if (images == nullptr) return;
    GVariantIter iter;
    g_variant_iter_init(&iter, images);
    gint32 width = 0;
    gint32 height = 0;
    GVariant* bytes = nullptr;
    while (g_variant_iter_next(&iter, "(ii@ay)", &width, &height, &bytes)) {
        props.pixmapSizes.emplace_back(width, height);
        gsize count = 0;
        const auto* data =
            static_cast<const unsigned char*>(g_variant_get_fixed_array(bytes, &count, 1));
        props.pixmapBytes.insert(props.pixmapBytes.end(), data, data + count);
        g_variant_unref(bytes);
    }
    g_variant_unref(images);
}

}  // namespace

std::optional<ItemRef> parseItem(const std::string& address) {
    const auto slash = address.find('/');
    if (slash == std::string::npos || slash == 0) return std::nullopt;
    return ItemRef{address.substr(0, slash), address.substr(slash)};
}

const MenuNode* findByLabel(const MenuNode& root, std::string_view label) {
    for (const auto& child : root.children) {
        if (child.label == label) return &child;
        if (const auto* found = findByLabel(child, label)) return found;
    }
    return nullptr;
}

std::vector<std::string> visibleLabels(const MenuNode& root) {
    std::vector<std::string> labels;
    for (const auto& child : root.children) {
        if (!child.visible) continue;
        labels.push_back(child.type == "separator" ? "-" : child.label);
    }
    return labels;
}

SniClient::SniClient() {
    gchar* address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (address == nullptr) return;
    bus_ = g_dbus_connection_new_for_address_sync(
        address,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    g_free(address);
}

SniClient::~SniClient() {
    if (bus_ != nullptr) {
        g_dbus_connection_close_sync(bus_, nullptr, nullptr);
        g_object_unref(bus_);
    }
}

GVariant* SniClient::call(const std::string& bus, const std::string& path, const char* interface,
                          const char* method, GVariant* args, const char* replyType) const {
    if (bus_ == nullptr) {
        if (args != nullptr) g_variant_unref(g_variant_ref_sink(args));
        return nullptr;
    }
    return g_dbus_connection_call_sync(bus_, bus.c_str(), path.c_str(), interface, method, args,
                                       G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
                                       callTimeoutMs, nullptr, nullptr);
}

std::vector<std::string> SniClient::registeredItems() const {
    GVariant* reply = call(
        "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
        "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"),
        "(v)");
    std::vector<std::string> items;
    if (reply == nullptr) return items;
    GVariant* value = nullptr;
    g_variant_get(reply, "(v)", &value);
    GVariantIter iter;
    g_variant_iter_init(&iter, value);
    const gchar* item = nullptr;
    while (g_variant_iter_next(&iter, "&s", &item))
        items.emplace_back(item);
    g_variant_unref(value);
    g_variant_unref(reply);
    return items;
}

std::optional<ItemProps> SniClient::properties(const ItemRef& item) const {
    GVariant* reply = call(item.bus, item.path, "org.freedesktop.DBus.Properties", "GetAll",
                           g_variant_new("(s)", "org.kde.StatusNotifierItem"), "(a{sv})");
    if (reply == nullptr) return std::nullopt;
    GVariant* dict = g_variant_get_child_value(reply, 0);
    ItemProps props;
    props.id = stringOf(dict, "Id");
    props.title = stringOf(dict, "Title");
    props.status = stringOf(dict, "Status");
    props.iconName = stringOf(dict, "IconName");
    props.attentionIconName = stringOf(dict, "AttentionIconName");
    props.iconThemePath = stringOf(dict, "IconThemePath");
    props.label = stringOf(dict, "XAyatanaLabel");
    props.menuPath = stringOf(dict, "Menu");
    readToolTip(dict, props);
    readPixmaps(dict, props);
    g_variant_unref(dict);
    g_variant_unref(reply);
    return props;
}

std::optional<MenuNode> SniClient::layout(const ItemRef& item, const std::string& menuPath) const {
    const gchar* none[] = {nullptr};
    GVariant* reply = call(item.bus, menuPath, "com.canonical.dbusmenu", "GetLayout",
                           g_variant_new("(ii^as)", 0, -1, none), "(u(ia{sv}av))");
    if (reply == nullptr) return std::nullopt;
    GVariant* root = g_variant_get_child_value(reply, 1);
    auto node = nodeOf(root);
    g_variant_unref(root);
    g_variant_unref(reply);
    return node;
}

bool SniClient::click(const ItemRef& item, const std::string& menuPath, int id) const {
    GVariant* reply =
        call(item.bus, menuPath, "com.canonical.dbusmenu", "Event",
             g_variant_new("(isvu)", id, "clicked", g_variant_new_int32(0), 0U), "()");
    if (reply == nullptr) return false;
    g_variant_unref(reply);
    return true;
}

}  // namespace velmora::test
