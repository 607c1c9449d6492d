#include "app/core/notify_preference.hpp"

namespace velmora {

bool loadNotifyWhenHot(const PreferenceStore& defaults) {
    return defaults.text(notifyWhenHotKey) != "off";
}

std::optional<std::string> saveNotifyWhenHot(bool on, PreferenceStore& defaults) {
    return defaults.setText(notifyWhenHotKey, on ? "on" : "off");
}

}  // namespace velmora
