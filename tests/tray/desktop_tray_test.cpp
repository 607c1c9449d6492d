// The tray item and its popup in the real desktop application, against the stand-in watcher.
#include <gdk/gdkkeysyms.h>

#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/tray/figure_icon.hpp"
#include "gui/desktop_case.hpp"
#include "gui/shown_figures.hpp"
#include "tray/sni_client.hpp"
#include "tray/tray_support.hpp"
#include "tray/xfce_panel.hpp"

namespace velmora::testing {
namespace {

using test::ItemProps;
using test::ItemRef;
using test::MenuNode;

const std::string popupCpuScript = "document.getElementById('cpu-temp').textContent";
const std::string popupLevelScript = "document.getElementById('level-label').textContent";
const std::string popupThemeScript = "document.documentElement.getAttribute('data-theme')";
const std::string pageScript = "location.pathname.split('/').pop()";

struct Evaluation {
    bool done = false;
    std::optional<std::string> value;
};

std::string readText(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void onEvaluated(GObject* source, GAsyncResult* result, gpointer data) {
    auto* evaluation = static_cast<Evaluation*>(data);
    JSCValue* value =
        webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, nullptr);
    if (value != nullptr) {
        gchar* text = jsc_value_to_string(value);
        evaluation->value = text != nullptr ? text : "";
        g_free(text);
        g_object_unref(value);
    }
    evaluation->done = true;
}

class DesktopTray : public DesktopCase {
  protected:
    void SetUp() override {
        DesktopCase::SetUp();
        if (IsSkipped()) return;
        // A copy of the laptop, so that its CPU temperature can change under the running app.
        useMachineCopy();
    }

    void startWatcher() {
        watcher = std::make_unique<test::StandinWatcher>(dir / "watcher.log");
        ASSERT_TRUE(watcher->ready());
    }

    std::optional<ItemRef> item(DesktopDriver& d) {
        std::optional<ItemRef> found;
        d.waitUntil(
            [&] {
                const auto items = test::whilePumping([&] { return client.registeredItems(); });
                if (!items.empty()) found = test::parseItem(items.front());
                return found.has_value();
            },
            15);
        return found;
    }

    ItemProps propsWhen(DesktopDriver& d, const ItemRef& ref,
                        const std::function<bool(const ItemProps&)>& wanted, double seconds = 15) {
        ItemProps last;
        d.waitUntil(
            [&] {
                const auto props = test::whilePumping([&] { return client.properties(ref); });
                if (props) last = *props;
                return props && wanted(*props);
            },
            seconds);
        return last;
    }

    void click(DesktopDriver& d, const ItemRef& ref, const std::string& label) {
        const auto props = test::whilePumping([&] { return client.properties(ref); });
        ASSERT_TRUE(props.has_value());
        std::optional<MenuNode> menu;
        d.waitUntil(
            [&] {
                menu = test::whilePumping([&] { return client.layout(ref, props->menuPath); });
                return menu && test::findByLabel(*menu, label) != nullptr;
            },
            10);
        ASSERT_TRUE(menu.has_value());
        const auto* entry = test::findByLabel(*menu, label);
        ASSERT_NE(entry, nullptr) << label;
        const int id = entry->id;
        EXPECT_TRUE(test::whilePumping([&] { return client.click(ref, props->menuPath, id); }));
    }

    std::optional<std::string> popupJs(DesktopDriver& d, const std::string& script) {
        auto evaluation = std::make_unique<Evaluation>();
        auto* page = d.session.shell.popup()->view();
        if (page == nullptr) return std::nullopt;  // closed: there is no page to ask
        auto* view = page->webView();
        webkit_web_view_evaluate_javascript(view, script.c_str(), -1, nullptr, nullptr, nullptr,
                                            onEvaluated, evaluation.get());
        if (!d.waitUntil([&] { return evaluation->done; }, 10)) {
            evaluation.release();  // the callback may still come
            return std::nullopt;
        }
        return evaluation->value;
    }

    bool waitForPopupJs(DesktopDriver& d, const std::string& script, const std::string& wanted) {
        return d.waitUntil([&] { return popupJs(d, script) == wanted; }, 10);
    }

    static bool snapshotPopup(DesktopDriver& d, const std::filesystem::path& file) {
        d.pause(0.3);
        auto* window = gtk_widget_get_window(GTK_WIDGET(d.session.shell.popup()->window()));
        if (window == nullptr) return false;
        GdkPixbuf* picture = gdk_pixbuf_get_from_window(window, 0, 0, gdk_window_get_width(window),
                                                        gdk_window_get_height(window));
        if (picture == nullptr) return false;
        std::filesystem::create_directories(file.parent_path());
        const bool saved = gdk_pixbuf_save(picture, file.c_str(), "png", nullptr, nullptr) == TRUE;
        g_object_unref(picture);
        return saved;
    }

    static void pressEscape(GtkWindow* target) {
        auto* window = gtk_widget_get_window(GTK_WIDGET(target));
        auto* display = gdk_window_get_display(window);
        GdkEvent* event = gdk_event_new(GDK_KEY_PRESS);
        event->key.window = GDK_WINDOW(g_object_ref(window));
        event->key.send_event = TRUE;
        event->key.time = GDK_CURRENT_TIME;
        event->key.keyval = GDK_KEY_Escape;
        gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(display)));
        gtk_main_do_event(event);
        gdk_event_free(event);
    }

    static void loseFocus(GtkWindow* target) {
        auto* window = gtk_widget_get_window(GTK_WIDGET(target));
        GdkEvent* event = gdk_event_new(GDK_FOCUS_CHANGE);
        event->focus_change.window = GDK_WINDOW(g_object_ref(window));
        event->focus_change.send_event = TRUE;
        event->focus_change.in = FALSE;
        gtk_main_do_event(event);
        gdk_event_free(event);
    }

    std::unique_ptr<test::StandinWatcher> watcher;
    test::SniClient client;
};

TEST_F(DesktopTray, TheItemRegistersAndItsIconAndTooltipFollowTheCpuTemperature) {
    startWatcher();
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value()) << watcher->record();
        EXPECT_NE(watcher->record().find("item " + ref->bus + ref->path), std::string::npos);
        auto props = propsWhen(
            d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 62 °C"; });
        EXPECT_EQ(props.toolTipText, "NORMAL · 62 °C");
        EXPECT_EQ(props.toolTipTitle, "Velmora Heat Monitor");
        EXPECT_EQ(props.id, "org.velmora.heat-monitor");
        EXPECT_EQ(props.status, "Active");
        EXPECT_EQ(props.label, "") << "the icon carries the figure";
        EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-62-normal");
        // The icons drawn at run time, and the build tree's own icons linked beside them for
        // a panel whose theme does not have them installed.
        const auto themePath = std::filesystem::path(props.iconThemePath);
        EXPECT_EQ(themePath.parent_path().filename(), "velmora-heat-monitor");
        EXPECT_TRUE(
            std::filesystem::exists(themePath / "org.velmora.heat-monitor-figure-62-normal.png"));
        EXPECT_EQ(std::filesystem::read_symlink(themePath / "hicolor"),
                  std::filesystem::path(VELMORA_TEST_RESOURCES) / "icons/hicolor");
        // The same folder gives the window and the popup their icons.
        auto* theme = gtk_icon_theme_get_default();
        EXPECT_TRUE(gtk_icon_theme_has_icon(theme, "org.velmora.heat-monitor"));
        EXPECT_TRUE(gtk_icon_theme_has_icon(theme, "org.velmora.heat-monitor-alarm-symbolic"));

        // Within the same level the icon changes with the figure.
        setCpuTemperature(73);
        const auto at73 = propsWhen(
            d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 73 °C"; });
        EXPECT_EQ(at73.iconName, "org.velmora.heat-monitor-figure-73-normal");
        setCpuTemperature(77);
        const auto at77 = propsWhen(
            d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 77 °C"; });
        EXPECT_EQ(at77.iconName, "org.velmora.heat-monitor-figure-77-normal");
        EXPECT_NE(at77.pixmapBytes, at73.pixmapBytes);

        setCpuTemperature(90);  // past the sensor's critical limit less 15 °C: fair
        props =
            propsWhen(d, *ref, [](const ItemProps& p) { return p.toolTipText == "WARM · 90 °C"; });
        EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-90-warm");

        setCpuTemperature(101);  // past the critical limit, the hardware throttles: serious
        props = propsWhen(
            d, *ref, [](const ItemProps& p) { return p.toolTipText == "EXTREME HEAT · 101 °C"; });
        EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-101-hot");

        // The hottest CPU sensor counts; another core stays at 62 °C.
        setCpuTemperature(66);
        props = propsWhen(d, *ref,
                          [](const ItemProps& p) { return p.toolTipText == "NORMAL · 66 °C"; });
        EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-66-normal");
        EXPECT_EQ(props.toolTipText.find("ountdown"), std::string::npos);
        EXPECT_EQ(d.countLog("ui: no tray host"), 0);
    });
}

TEST_F(DesktopTray, TheFigureAsTextFromTheMenuMovesItToTheLabel) {
    startWatcher();
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        propsWhen(d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 62 °C"; });
        click(d, *ref, "Temperature as text beside the icon");
        EXPECT_TRUE(d.waitForLog("ui: temperature as text beside the icon on", 5));
        const auto props =
            propsWhen(d, *ref, [](const ItemProps& p) { return p.label == "NORMAL · 62°"; });
        EXPECT_EQ(props.label, "NORMAL · 62°");
        EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-normal-symbolic");
        EXPECT_NE(readText(dir / "config/velmora-heat-monitor/preferences.json")
                      .find("\"org.velmora.heat-monitor.heat.figure-as-text\": \"on\""),
                  std::string::npos);
    });
}

TEST_F(DesktopTray, TheCountdownsNotificationCancelsTheRealCountdown) {
    startWatcher();
    test::StandinNotifications server(dir / "notifications.log");
    ASSERT_TRUE(server.ready());
    run({"--consent", "on", "--force-thermal", "critical"}, [&](DesktopDriver& d) {
        std::optional<nlohmann::json> counting;
        d.waitUntil(
            [&] {
                for (const auto& sent : server.notifies()) {
                    if (sent["summary"].get<std::string>().starts_with("EMERGENCY"))
                        counting = sent;
                }
                return counting.has_value();
            },
            15);
        ASSERT_TRUE(counting.has_value());
        EXPECT_EQ((*counting)["urgency"], 2);
        EXPECT_EQ((*counting)["expire"], 0);
        EXPECT_EQ((*counting)["actions"], (nlohmann::json{"cancel", "Keep working · Cancel"}));
        const auto id = (*counting)["id"].get<std::uint32_t>();
        // A second or two go by: the seconds replace the one notification.
        d.waitUntil([&] { return server.notifies().size() >= 3; }, 5);
        for (const auto& sent : server.notifies()) {
            if (!sent["summary"].get<std::string>().starts_with("EMERGENCY")) continue;
            EXPECT_EQ(sent["id"], id) << sent.dump();
        }
        EXPECT_TRUE(test::whilePumping([&] { return server.invokeAction(id, "cancel"); }));
        EXPECT_TRUE(
            d.waitForLog("stage-c: user pressed Keep working · Cancel during the countdown", 10));
        EXPECT_TRUE(d.waitForLog("ui: countdown cancel asked from the desktop notification", 5));
        EXPECT_TRUE(d.waitUntil(
            [&] {
                return d.session.app.engine()->snapshot().real.state() != CountdownState::countdown;
            },
            5));
        EXPECT_EQ(d.countLog("shutdown: DRY-RUN: would run"), 0);
    });
}

/// Whether the panel, as on the screen now, shows the item's icon for that figure: every opaque
/// pixel of the 24 px image, somewhere in the panel. Keeps the picture in `picture`.
bool panelShows(const std::string& digits, HeatColor color, GdkPixbuf** picture) {
    if (*picture != nullptr) g_object_unref(*picture);
    *picture = test::XfcePanel::picture();
    return test::containsImage(*picture, drawFigureIcon(digits, color, 24));
}

void savePicture(GdkPixbuf* picture, const std::string& name) {
    std::filesystem::create_directories(screenshotDir());
    ASSERT_NE(picture, nullptr);
    EXPECT_TRUE(gdk_pixbuf_save(picture, (screenshotDir() / name).c_str(), "png", nullptr,
                                nullptr) == TRUE);
}

TEST_F(DesktopTray, ARealXfcePanelShowsTheFigureInTheIconAndReadsTheTooltip) {
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        for (const bool dark : {false, true}) {
            const std::string theme = dark ? "dark" : "light";
            test::XfcePanel panel(dir / ("panel-" + theme), dark);
            ASSERT_TRUE(panel.started()) << panel.problem();
            const auto ref = item(d);
            ASSERT_TRUE(ref.has_value()) << "the item did not register with the panel";
            setCpuTemperature(73);
            const auto at73 = propsWhen(
                d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 73 °C"; });
            EXPECT_EQ(at73.toolTipText, "NORMAL · 73 °C");
            GdkPixbuf* shown73 = nullptr;
            EXPECT_TRUE(
                d.waitUntil([&] { return panelShows("73", HeatColor::label, &shown73); }, 15))
                << "the panel never drew 73";

            // Same level, new figure: the icon and what the panel draws change.
            setCpuTemperature(77);
            const auto at77 = propsWhen(
                d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 77 °C"; });
            EXPECT_EQ(at77.iconName, "org.velmora.heat-monitor-figure-77-normal");
            EXPECT_NE(at77.iconName, at73.iconName);
            EXPECT_NE(at77.pixmapBytes, at73.pixmapBytes);
            GdkPixbuf* shown77 = nullptr;
            EXPECT_TRUE(
                d.waitUntil([&] { return panelShows("77", HeatColor::label, &shown77); }, 15))
                << "the panel did not redraw the new figure";
            EXPECT_FALSE(test::containsImage(shown77, drawFigureIcon("73", HeatColor::label, 24)));
            savePicture(shown77, "panel-" + theme + "-calm.png");

            setCpuTemperature(101);
            const auto hot = propsWhen(d, *ref, [](const ItemProps& p) {
                return p.toolTipText == "EXTREME HEAT · 101 °C";
            });
            EXPECT_EQ(hot.iconName, "org.velmora.heat-monitor-figure-101-hot");
            GdkPixbuf* shownHot = nullptr;
            EXPECT_TRUE(
                d.waitUntil([&] { return panelShows("101", HeatColor::red, &shownHot); }, 15))
                << "the panel never drew the hot badge";
            savePicture(shownHot, "panel-" + theme + "-hot.png");
            for (auto* picture : {shown73, shown77, shownHot}) {
                if (picture != nullptr) g_object_unref(picture);
            }
            setCpuTemperature(62);
            propsWhen(d, *ref,
                      [](const ItemProps& p) { return p.toolTipText == "NORMAL · 62 °C"; });
        }
    });
}

TEST_F(DesktopTray, MenuHoldsTheActionsAndTestEmergencyStartsTheSimulation) {
    startWatcher();
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        const auto props = test::whilePumping([&] { return client.properties(*ref); });
        ASSERT_TRUE(props.has_value());
        const auto menu = test::whilePumping([&] { return client.layout(*ref, props->menuPath); });
        ASSERT_TRUE(menu.has_value());
        const std::vector<std::string> expected{"Live readings\u2026",
                                                "Open Velmora Heat Monitor",
                                                "-",
                                                "Test emergency (simulation, never shuts down)",
                                                "-",
                                                "Appearance: Auto",
                                                "Appearance: Light",
                                                "Appearance: Dark",
                                                "-",
                                                "Notify me when it gets hot",
                                                "Temperature as text beside the icon",
                                                "Start at login",
                                                "-",
                                                "Quit Velmora Heat Monitor"};
        EXPECT_EQ(test::visibleLabels(*menu), expected);
        EXPECT_EQ(test::findByLabel(*menu, "Appearance: Auto")->toggleState, 1);

        click(d, *ref, "Test emergency (simulation, never shuts down)");
        EXPECT_TRUE(d.waitForLog("stage-c: SIMULATION started", 5));
        EXPECT_TRUE(d.session.app.engine()->simActive());
        // The simulated countdown shows in the panel too, asking for attention.
        const auto counting = propsWhen(d, *ref, [](const ItemProps& p) {
            return p.status == "NeedsAttention" && p.label.starts_with("SIMULATION ");
        });
        EXPECT_EQ(counting.status, "NeedsAttention");
        EXPECT_TRUE(counting.label.starts_with("SIMULATION ")) << counting.label;
    });
}

TEST_F(DesktopTray, AppearanceAndStartAtLoginFromTheMenu) {
    startWatcher();
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        click(d, *ref, "Appearance: Dark");
        EXPECT_TRUE(d.waitForLog("ui: appearance dark", 5));
        EXPECT_TRUE(d.waitForJs("document.documentElement.getAttribute('data-theme')", "dark", 5));
        // The window's menu choice checks the tray's item too.
        d.chooseAppearance("light");
        EXPECT_TRUE(d.waitForLog("ui: appearance light", 5));
        EXPECT_TRUE(d.waitUntil(
            [&] {
                const auto props = test::whilePumping([&] { return client.properties(*ref); });
                const auto menu =
                    test::whilePumping([&] { return client.layout(*ref, props->menuPath); });
                return menu && test::findByLabel(*menu, "Appearance: Light")->toggleState == 1;
            },
            5));

        const auto entry = dir / "config/autostart/org.velmora.heat-monitor.desktop";
        click(d, *ref, "Start at login");
        EXPECT_TRUE(d.waitForLog("ui: start at login on", 5));
        EXPECT_TRUE(std::filesystem::exists(entry));
        click(d, *ref, "Start at login");
        EXPECT_TRUE(d.waitForLog("ui: start at login off", 5));
        EXPECT_FALSE(std::filesystem::exists(entry));
    });
}

TEST_F(DesktopTray, AForcedCountdownShowsInTheItemWithTheAttentionStatus) {
    startWatcher();
    run({"--consent", "on", "--force-thermal", "critical"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        const auto props = propsWhen(d, *ref, [](const ItemProps& p) {
            return p.status == "NeedsAttention" && p.label.starts_with("EMERGENCY ");
        });
        EXPECT_EQ(props.status, "NeedsAttention");
        EXPECT_TRUE(props.label.starts_with("EMERGENCY ") && props.label.ends_with("s"))
            << props.label;
        EXPECT_EQ(props.attentionIconName, "org.velmora.heat-monitor-alarm-symbolic");
        EXPECT_TRUE(d.waitForLog("shutdown: DRY-RUN: would run", 20));
    });
}

TEST_F(DesktopTray, WithoutATrayHostTheLogSaysSoOnceAndTheWindowWorks) {
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        EXPECT_TRUE(d.waitForLog("ui: no tray host; the window is the only view", 10));
        EXPECT_TRUE(d.waitUntil([&] { return d.session.shell.windowVisible(); }, 10));
        EXPECT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        EXPECT_TRUE(d.waitUntil(
            [&] { return d.js("document.getElementById('cpu-temp').textContent") == "62°C"; }, 10))
            << d.js("document.getElementById('cpu-temp').textContent").value_or("?");
        // A panel that starts later still gets the item; until then it was said once.
        startWatcher();
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        EXPECT_EQ(d.countLog("ui: no tray host"), 1);
        EXPECT_EQ(
            propsWhen(d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 62 °C"; })
                .toolTipText,
            "NORMAL · 62 °C");
    });
}

TEST_F(DesktopTray, NoMenuItemMeansNoTrayItem) {
    startWatcher();
    run({"--consent", "on", "--no-menu-item"}, [&](DesktopDriver& d) {
        EXPECT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        // A reading on the page: the start-up, where an item would register, is long past.
        EXPECT_TRUE(d.waitUntil(
            [&] { return d.js("document.getElementById('cpu-temp').textContent") == "62°C"; }, 10))
            << d.js("document.getElementById('cpu-temp').textContent").value_or("?");
        EXPECT_TRUE(test::whilePumping([&] { return client.registeredItems(); }).empty());
        EXPECT_EQ(d.session.shell.heatItem(), nullptr);
        EXPECT_FALSE(d.session.shell.popoverShown());
        EXPECT_EQ(d.countLog("ui: no tray host"), 0);
    });
}

TEST_F(DesktopTray, PopupOpensWithTheLiveReadingsFollowsTheAppearanceAndClosesOnEscape) {
    startWatcher();
    run({"--consent", "on"}, [&](DesktopDriver& d) {
        const auto ref = item(d);
        ASSERT_TRUE(ref.has_value());
        auto& shell = d.session.shell;
        EXPECT_FALSE(shell.popoverShown());
        click(d, *ref, "Live readings\u2026");
        ASSERT_TRUE(d.waitUntil([&] { return shell.popoverShown(); }, 5));
        auto* window = shell.popup()->window();
        EXPECT_FALSE(gtk_window_get_decorated(window));
        EXPECT_TRUE(gtk_window_get_skip_taskbar_hint(window));
        int width = 0;
        int height = 0;
        EXPECT_TRUE(d.waitUntil(
            [&] {
                gtk_window_get_size(window, &width, &height);
                return width == 340 && height == 440;
            },
            5))
            << width << "x" << height;
        EXPECT_TRUE(waitForPopupJs(d, pageScript, "menubar.html"));
        EXPECT_TRUE(waitForPopupJs(d, popupCpuScript, "62°C"))
            << popupJs(d, popupCpuScript).value_or("?");
        EXPECT_TRUE(waitForPopupJs(d, popupLevelScript, "NORMAL"));
        EXPECT_TRUE(
            showsTheLiveFigures(d, [&](const std::string& script) { return popupJs(d, script); }));

        d.chooseAppearance("light");
        EXPECT_TRUE(waitForPopupJs(d, popupThemeScript, "light"));
        EXPECT_TRUE(snapshotPopup(d, screenshotDir() / "popup-light.png"));
        d.chooseAppearance("dark");
        EXPECT_TRUE(waitForPopupJs(d, popupThemeScript, "dark"));
        EXPECT_TRUE(snapshotPopup(d, screenshotDir() / "popup-dark.png"));

        // While open it follows the readings; "Live readings…" again keeps it open.
        setCpuTemperature(70);
        EXPECT_TRUE(waitForPopupJs(d, popupCpuScript, "70°C"));
        click(d, *ref, "Live readings\u2026");
        // The next reading still reaches it: the click was handled long before.
        setCpuTemperature(71);
        EXPECT_TRUE(waitForPopupJs(d, popupCpuScript, "71°C"));
        EXPECT_TRUE(shell.popoverShown());

        pressEscape(window);
        EXPECT_TRUE(d.waitUntil([&] { return !shell.popoverShown(); }, 5));
        EXPECT_TRUE(shell.windowVisible());

        // Closed, it holds no web view (and no web process); opened again, its page is made
        // anew, in the appearance chosen meanwhile, and brought up to date at once.
        EXPECT_TRUE(d.waitUntil([&] { return shell.popup()->view() == nullptr; }, 5));
        d.chooseAppearance("light");
        setCpuTemperature(75);
        EXPECT_EQ(
            propsWhen(d, *ref, [](const ItemProps& p) { return p.toolTipText == "NORMAL · 75 °C"; })
                .toolTipText,
            "NORMAL · 75 °C");
        EXPECT_EQ(shell.popup()->view(), nullptr);
        click(d, *ref, "Live readings…");
        ASSERT_TRUE(d.waitUntil([&] { return shell.popoverShown(); }, 5));
        EXPECT_TRUE(waitForPopupJs(d, popupCpuScript, "75°C"));
        EXPECT_TRUE(waitForPopupJs(d, popupThemeScript, "light"));
        EXPECT_TRUE(
            showsTheLiveFigures(d, [&](const std::string& script) { return popupJs(d, script); }));

        // Another window taking the focus closes it, as a click elsewhere does.
        loseFocus(window);
        EXPECT_TRUE(d.waitUntil([&] { return !shell.popoverShown(); }, 5));
    });
}

}  // namespace
}  // namespace velmora::testing
