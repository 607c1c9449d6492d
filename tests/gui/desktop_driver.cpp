#include "gui/desktop_driver.hpp"

#include <gdk/gdkkeysyms.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "app/controller/app_controller.hpp"

namespace velmora::testing {

namespace {

using Clock = std::chrono::steady_clock;

struct Evaluation {
    bool done = false;
    std::optional<std::string> value;
};

void onEvaluated(GObject* source, GAsyncResult* result, gpointer data) {
    auto* evaluation = static_cast<Evaluation*>(data);
    GError* error = nullptr;
    JSCValue* value =
        webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error);
    if (value != nullptr) {
        gchar* text = jsc_value_to_string(value);
        evaluation->value = text != nullptr ? text : "";
        g_free(text);
        g_object_unref(value);
    }
    g_clear_error(&error);
    evaluation->done = true;
}

gboolean wake(gpointer /*unused*/) {
    return G_SOURCE_CONTINUE;
}

}  // namespace

bool DesktopDriver::waitUntil(const std::function<bool()>& condition, double seconds) const {
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    const auto ticker = g_timeout_add(20, wake, nullptr);
    bool held = condition();
    while (!held && Clock::now() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
        held = condition();
    }
    g_source_remove(ticker);
    return held;
}

void DesktopDriver::pause(double seconds) const {
    waitUntil([] { return false; }, seconds);
}

std::optional<std::string> DesktopDriver::js(const std::string& script) const {
    auto evaluation = std::make_unique<Evaluation>();
    auto* view = session.shell.mainView()->webView();
    webkit_web_view_evaluate_javascript(view, script.c_str(), -1, nullptr, nullptr, nullptr,
                                        onEvaluated, evaluation.get());
    if (!waitUntil([&] { return evaluation->done; }, 10)) {
        evaluation.release();  // the callback may still come; leak it rather than crash
        return std::nullopt;
    }
    return evaluation->value;
}

bool DesktopDriver::waitForJs(const std::string& script, const std::string& expected,
                              double seconds) const {
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < deadline) {
        if (js(script) == expected) return true;
        pause(0.1);
    }
    return false;
}

std::vector<std::string> DesktopDriver::logLines() const {
    session.app.drainLog();
    std::ifstream in(session.app.options().dataDir / "heat.log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        // "yyyy-MM-dd HH:mm:ss.SSS " comes first.
        lines.push_back(line.size() > 24 ? line.substr(24) : line);
    }
    return lines;
}

int DesktopDriver::countLog(const std::string& part) const {
    int count = 0;
    for (const auto& line : logLines()) {
        if (line.find(part) != std::string::npos) ++count;
    }
    return count;
}

bool DesktopDriver::waitForLog(const std::string& part, double seconds) const {
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (countLog(part) == 0) {
        if (Clock::now() >= deadline) return false;
        pause(0.1);
    }
    return true;
}

void DesktopDriver::pressControl(unsigned keyval) const {
    auto* window = gtk_widget_get_window(GTK_WIDGET(session.shell.window()));
    auto* display = gdk_window_get_display(window);
    auto* keyboard = gdk_seat_get_keyboard(gdk_display_get_default_seat(display));
    GdkKeymapKey* keys = nullptr;
    gint count = 0;
    gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(display), keyval, &keys, &count);
    for (const auto type : {GDK_KEY_PRESS, GDK_KEY_RELEASE}) {
        GdkEvent* event = gdk_event_new(type);
        event->key.window = GDK_WINDOW(g_object_ref(window));
        event->key.send_event = TRUE;
        event->key.time = GDK_CURRENT_TIME;
        event->key.state = GDK_CONTROL_MASK;
        event->key.keyval = keyval;
        if (count > 0) {
            event->key.hardware_keycode = static_cast<guint16>(keys[0].keycode);
            event->key.group = static_cast<guint8>(keys[0].group);
        }
        gdk_event_set_device(event, keyboard);
        gtk_main_do_event(event);
        gdk_event_free(event);
    }
    g_free(keys);
}

std::pair<int, int> DesktopDriver::contentSize() const {
    auto* widget = session.shell.mainView()->widget();
    return {gtk_widget_get_allocated_width(widget), gtk_widget_get_allocated_height(widget)};
}

bool DesktopDriver::snapshot(const std::filesystem::path& file) const {
    pause(0.3);  // let the last push reach the screen
    auto* window = gtk_widget_get_window(GTK_WIDGET(session.shell.window()));
    if (window == nullptr) return false;
    GdkPixbuf* picture = gdk_pixbuf_get_from_window(window, 0, 0, gdk_window_get_width(window),
                                                    gdk_window_get_height(window));
    if (picture == nullptr) return false;
    std::filesystem::create_directories(file.parent_path());
    const bool saved = gdk_pixbuf_save(picture, file.c_str(), "png", nullptr, nullptr) == TRUE;
    g_object_unref(picture);
    return saved;
}

void DesktopDriver::chooseAppearance(const std::string& raw) const {
    g_action_group_change_action_state(G_ACTION_GROUP(session.application), "appearance",
                                       g_variant_new_string(raw.c_str()));
}

std::filesystem::path screenshotDir() {
    const char* build = std::getenv("VELMORA_BUILD_DIR");  // NOLINT(concurrency-mt-unsafe)
    return std::filesystem::path(build != nullptr ? build : ".") / "gui-screenshots";
}

}  // namespace velmora::testing
