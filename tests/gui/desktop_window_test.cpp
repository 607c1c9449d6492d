#include <gdk/gdkkeysyms.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "gui/desktop_case.hpp"
#include "gui/shown_figures.hpp"

namespace velmora::testing {
namespace {

const std::string modeScript = "document.documentElement.getAttribute('data-mode')";
const std::string themeScript = "document.documentElement.getAttribute('data-theme')";
const std::string pageScript = "location.pathname.split('/').pop()";
const std::string cpuTempScript = "document.getElementById('cpu-temp').textContent";
// The text of the stage page's screen that is showing.
const std::string screenTextScript =
    "Array.from(document.querySelectorAll('[data-screen]')).filter((e) => !e.hidden)"
    ".map((e) => e.innerText).join('\\n')";

using DesktopWindow = DesktopCase;

/// Waits for the web view to take that size; says what it has otherwise.
::testing::AssertionResult hasContentSize(DesktopDriver& d, int width, int height) {
    if (d.waitUntil([&] { return d.contentSize() == std::pair{width, height}; }, 5)) {
        return ::testing::AssertionSuccess();
    }
    const auto frame = d.session.shell.windowFrame();
    return ::testing::AssertionFailure()
           << "content " << d.contentSize().first << "x" << d.contentSize().second << ", frame "
           << frame.x << "," << frame.y << " " << frame.width << "x" << frame.height;
}

PageEvaluator mainPage(DesktopDriver& d) {
    return [&d](const std::string& script) { return d.js(script); };
}

/// A text of the live model's current sample, by its dotted path.
std::string liveText(DesktopDriver& d, std::string path) {
    std::replace(path.begin(), path.end(), '.', '/');
    const auto live = nlohmann::json::parse(d.session.app.presentation().liveJSON, nullptr, false);
    const nlohmann::json::json_pointer pointer("/" + path);
    if (!live.contains(pointer) || !live.at(pointer).is_string()) return "n/a";
    return live.at(pointer).get<std::string>();
}

/// Waits until the stage page's screen reads no "n/a": every figure it shows has a value.
::testing::AssertionResult screenHasNoMissingFigure(DesktopDriver& d) {
    std::string text;
    if (d.waitUntil(
            [&] {
                text = d.js(screenTextScript).value_or("n/a");
                return !text.empty() && text.find("n/a") == std::string::npos;
            },
            10)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the screen reads:\n" << text;
}

/// Pictures of the page as it is now, light then dark, for a reviewer to look at; the
/// appearance is light again afterwards.
void shootBoth(DesktopDriver& d, const std::string& mode) {
    d.chooseAppearance("light");
    EXPECT_TRUE(d.waitForJs(themeScript, "light", 5));
    EXPECT_TRUE(d.snapshot(screenshotDir() / (mode + "-light.png")));
    d.chooseAppearance("dark");
    EXPECT_TRUE(d.waitForJs(themeScript, "dark", 5));
    EXPECT_TRUE(d.snapshot(screenshotDir() / (mode + "-dark.png")));
    d.chooseAppearance("light");
}

TEST_F(DesktopWindow, AppearsWithTheTestModeTitleAndTheCompactSize) {
    const int status = run({"--consent", "on"}, [](DesktopDriver& d) {
        EXPECT_TRUE(d.waitUntil([&] { return d.session.shell.windowVisible(); }, 10));
        EXPECT_EQ(d.session.shell.windowTitle(), "Velmora Heat Monitor · TEST MODE");
        EXPECT_TRUE(d.waitUntil(
            [&] {
                return d.contentSize() == std::pair{320, 188};
            },
            10))
            << d.contentSize().first << "x" << d.contentSize().second;
        EXPECT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        // The frame is the content plus the header bar, and lies on the screen.
        const auto frame = d.session.shell.windowFrame();
        EXPECT_EQ(frame.width, 320);
        EXPECT_GT(frame.height, 188);
        const auto screen = d.session.shell.visibleScreenFrame();
        ASSERT_TRUE(screen.has_value());
        EXPECT_GE(frame.x, screen->x);
        EXPECT_LE(frame.top(), screen->top());
    });
    EXPECT_EQ(status, 0);
}

TEST_F(DesktopWindow, HomePageShowsTheFixtureMachinesLiveReadings) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        // The laptop's package sensor and its memory, as the live sample reads them.
        EXPECT_TRUE(d.waitUntil(
            [&] {
                const auto text = d.js("document.getElementById('cpu-temp').textContent");
                return text && text->find("°") != std::string::npos;
            },
            10))
            << d.js("document.getElementById('cpu-temp').textContent").value_or("?");
        EXPECT_TRUE(d.waitUntil(
            [&] { return d.js("document.getElementById('ram').textContent") != "n/a"; }, 10));
        EXPECT_NE(d.js("document.getElementById('level-label').textContent"), "n/a");
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        shootBoth(d, "home");
    });
}

TEST_F(DesktopWindow, BothHomePagesShowTheLiveModelsFiguresAndFollowThem) {
    useMachineCopy();
    run({"--consent", "on"}, [this](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        d.pressControl(GDK_KEY_e);
        ASSERT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        // The expanded dashboard follows the readings as they change.
        setCpuTemperature(70);
        EXPECT_TRUE(d.waitForJs(cpuTempScript, "70°C", 10)) << d.js(cpuTempScript).value_or("?");
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        shootBoth(d, "expanded");
    });
}

TEST_F(DesktopWindow, APageCoveredByAnotherWindowIsNotPushedToAndCatchesUpWhenUncovered) {
    useMachineCopy();
    run({"--consent", "on"}, [this](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        ASSERT_TRUE(d.waitForJs(cpuTempScript, "62°C", 10));
        auto* cover = gtk_window_new(GTK_WINDOW_POPUP);
        gtk_window_move(GTK_WINDOW(cover), 0, 0);
        gtk_window_resize(GTK_WINDOW(cover), 4000, 4000);
        gtk_widget_show(cover);
        ASSERT_TRUE(d.waitUntil([&] { return !d.session.shell.mainViewSeen(); }, 5));
        setCpuTemperature(70);
        // The model has the new figure; the page nobody can see was not told.
        ASSERT_TRUE(d.waitUntil([&] { return liveText(d, "cpuTemp.value") == "70°C"; }, 10));
        EXPECT_EQ(d.js(cpuTempScript), "62°C");
        gtk_widget_destroy(cover);
        EXPECT_TRUE(d.waitUntil([&] { return d.session.shell.mainViewSeen(); }, 5));
        EXPECT_TRUE(d.waitForJs(cpuTempScript, "70°C", 5)) << d.js(cpuTempScript).value_or("?");
    });
}

TEST_F(DesktopWindow, AfterACancelledEmergencyTheExpandedPageShowsTheFigures) {
    useMachineCopy();
    // The package and the ACPI zone at 130 °C: the zone is past its critical trip point.
    setCpuTemperature(130);
    std::ofstream(machine / "sys/class/thermal/thermal_zone0/temp", std::ios::trunc) << "130000\n";
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "count", 15));
        EXPECT_TRUE(d.js("document.getElementById('count-cancel').click(); 'clicked'"));
        EXPECT_TRUE(d.waitForLog("ui: mode count -> home", 10));
        ASSERT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
        EXPECT_TRUE(d.waitForJs("document.getElementById('banner-title').textContent",
                                "Emergency heat", 10));
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        EXPECT_EQ(d.js(cpuTempScript), "130°C");
        shootBoth(d, "expanded-after-cancel");
    });
}

TEST_F(DesktopWindow, CriticalStateWithConsentCountsDownAndCallsTheDryRunShutdown) {
    run({"--consent", "on", "--force-thermal", "critical"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "count", 15));
        EXPECT_TRUE(d.waitUntil(
            [&] { return d.session.shell.windowTitle().starts_with("EMERGENCY · "); }, 5));
        EXPECT_TRUE(hasContentSize(d, 380, 500));
        EXPECT_TRUE(d.waitForJs("document.getElementById('count-temp').textContent",
                                liveText(d, "thermal.value"), 5))
            << liveText(d, "thermal.value");
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "count");
        EXPECT_TRUE(d.waitForLog("shutdown: DRY-RUN: would run", 20));
        EXPECT_EQ(d.countLog("ui: mode home -> count"), 1);
    });
}

TEST_F(DesktopWindow, ARefusedPermissionShowsItsNotice) {
    run({"--consent", "on", "--simulate-denied"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "perm", 15));
        EXPECT_TRUE(d.waitForLog("ui: mode home -> perm", 5));
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "perm");
    });
}

TEST_F(DesktopWindow, AShutdownThatFailsAsksForAManualShutdown) {
    run({"--consent", "on", "--simulate-denied", "--force-thermal", "critical"},
        [](DesktopDriver& d) {
            ASSERT_TRUE(d.waitForJs(modeScript, "manual", 30));
            EXPECT_EQ(d.session.shell.windowTitle(), "SHUT DOWN MANUALLY");
            EXPECT_TRUE(screenHasNoMissingFigure(d));
            shootBoth(d, "manual");
        });
}

TEST_F(DesktopWindow, AFinishedRehearsalShowsItsEndScreen) {
    run({"--consent", "on", "--test-emergency"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "simdone", 30));
        EXPECT_EQ(d.countLog("shutdown: DRY-RUN: would run"), 0);
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "simdone");
    });
}

TEST_F(DesktopWindow, ConsentButtonClickedInThePageRecordsConsent) {
    run({"--force-thermal", "critical"}, [this](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "consent", 15));
        EXPECT_EQ(d.countLog("ui: mode home -> consent"), 1);
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "consent");
        EXPECT_TRUE(d.js("document.getElementById('consent-yes').click(); 'clicked'"));
        EXPECT_TRUE(d.waitUntil(
            [&] {
                return dataFile("settings.json").find("\"consentRecorded\": true") !=
                       std::string::npos;
            },
            10))
            << dataFile("settings.json");
        EXPECT_TRUE(d.session.app.engine()->settingsInForce().consentRecorded);
        EXPECT_TRUE(d.waitForLog("ui: mode consent -> count", 10));
    });
}

TEST_F(DesktopWindow, NavigationOutsideTheBundleIsRefusedAndLogged) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.js("location.href = 'file:///etc/hostname'; 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: refused navigation to file:///etc/hostname", 5));
        d.js("location.href = 'https://example.org/'; 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: refused navigation to https://example.org/", 5));
        d.js("window.open('index.html'); 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: refused a new window", 5));
        // A message sent after the attempts comes back from the same page.
        d.js("window.webkit.messageHandlers.heat.postMessage('after-navigation'); 'sent'");
        EXPECT_TRUE(
            d.waitForLog("ui: rejected heat action 'after-navigation': missing/wrong token", 5));
        EXPECT_EQ(d.js(pageScript), "index.html");
        EXPECT_EQ(d.session.app.presentation().pageName, "index");
    });
}

TEST_F(DesktopWindow, ForgedAndHostileMessagesChangeNothing) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        auto& engine = *d.session.app.engine();
        d.js(
            "window.webkit.messageHandlers.stagec.postMessage("
            "{action: 'test', token: 'not-the-token'}); 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: rejected stagec action 'test': missing/wrong token", 5));
        d.js("window.webkit.messageHandlers.heat.postMessage('shutdown'); 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: rejected heat action 'shutdown': missing/wrong token", 5));
        d.js(
            "window.webkit.messageHandlers.stagec.postMessage("
            "{action: 'x'.repeat(1048576), token: 'x'}); 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: dropped oversized 'stagec' message", 5));
        d.js(
            "for (let i = 0; i < 5000; i++) {"
            " window.webkit.messageHandlers.stagec.postMessage([i, {}, null]);"
            " window.webkit.messageHandlers.size.postMessage({junk: i}); }"
            " window.webkit.messageHandlers.heat.postMessage('end-of-flood'); 'sent'");
        // The last message is handled after the whole flood.
        EXPECT_TRUE(
            d.waitForLog("ui: rejected heat action 'end-of-flood': missing/wrong token", 10));
        EXPECT_FALSE(engine.simActive());
        EXPECT_FALSE(engine.settingsInForce().enabled() == false);
        EXPECT_EQ(d.countLog("SIMULATION started"), 0);
        EXPECT_EQ(d.countLog("shutdown: DRY-RUN"), 0);
        EXPECT_EQ(d.session.app.presentation().mode, UIMode::home);
    });
}

TEST_F(DesktopWindow, ControlTStartsTheSimulation) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.pressControl(GDK_KEY_t);
        EXPECT_TRUE(d.waitForLog("stage-c: SIMULATION started", 5));
        EXPECT_TRUE(d.session.app.engine()->simActive());
        EXPECT_TRUE(d.waitForJs(modeScript, "lead", 10));
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "lead");
    });
}

TEST_F(DesktopWindow, KeyboardDrivesExpandSettingsAndCollapse) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.pressControl(GDK_KEY_e);
        EXPECT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
        EXPECT_TRUE(hasContentSize(d, 380, 500));
        EXPECT_TRUE(showsTheLiveFigures(d, mainPage(d)));
        d.pressControl(GDK_KEY_comma);
        EXPECT_TRUE(d.waitForJs(modeScript, "settings", 10));
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "settings");
        d.js("HeatBridge.stagec('back'); 'sent'");
        EXPECT_TRUE(d.waitForLog("ui: mode settings -> home", 5));
        d.pressControl(GDK_KEY_w);
        EXPECT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        EXPECT_TRUE(hasContentSize(d, 320, 188));
    });
}

TEST_F(DesktopWindow, TheExpandedPageAsksForItsHistoryAndDrawsTheAnswer) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.pressControl(GDK_KEY_e);
        ASSERT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
        // The answer to the request the page sent at load: bands drawn, and the samples so far.
        EXPECT_TRUE(d.waitForJs("String(document.querySelectorAll('#history-temp .band').length)",
                                "4", 10));
        EXPECT_TRUE(d.waitForJs("document.getElementById('history-empty').hidden ? 'rows' : 'none'",
                                "rows", 10));
        d.js("document.querySelector('[data-range=\"24h\"]').click(); 'sent'");
        EXPECT_TRUE(d.waitForJs(
            "document.getElementById('history-plot').getAttribute('data-shown')", "24h", 10));
        d.js("document.getElementById('history').scrollIntoView(); 'shown'");
        shootBoth(d, "expanded-history");
    });
}

TEST_F(DesktopWindow, AppearanceDarkReachesThePageAndTheMenuCheck) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.chooseAppearance("dark");
        EXPECT_TRUE(d.waitForJs("window.heatTheme.get()", "dark", 5));
        EXPECT_TRUE(d.waitForJs(themeScript, "dark", 5));
        EXPECT_TRUE(d.waitForLog("ui: appearance dark", 5));
        GVariant* state =
            g_action_group_get_action_state(G_ACTION_GROUP(d.session.application), "appearance");
        ASSERT_NE(state, nullptr);
        EXPECT_STREQ(g_variant_get_string(state, nullptr), "dark");
        g_variant_unref(state);
        gboolean preferDark = FALSE;
        g_object_get(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", &preferDark,
                     nullptr);
        EXPECT_TRUE(preferDark);
        // The choice survives a reload of the page (the document-start script carries it).
        d.pressControl(GDK_KEY_e);
        EXPECT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
        EXPECT_TRUE(d.waitForJs(themeScript, "dark", 5));
        d.chooseAppearance("light");
        EXPECT_TRUE(d.waitForJs(themeScript, "light", 5));
    });
}

TEST_F(DesktopWindow, AutoAppearanceFollowsTheDesktopThemeLive) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.chooseAppearance("auto");
        auto* settings = gtk_settings_get_default();
        g_object_set(settings, "gtk-theme-name", "Adwaita-dark", nullptr);
        gboolean preferDark = FALSE;
        EXPECT_TRUE(d.waitUntil(
            [&] {
                g_object_get(settings, "gtk-application-prefer-dark-theme", &preferDark, nullptr);
                return preferDark == TRUE;
            },
            5));
        EXPECT_TRUE(d.waitForJs(themeScript, "dark", 5));
        g_object_set(settings, "gtk-theme-name", "Adwaita", nullptr);
        EXPECT_TRUE(d.waitForJs(themeScript, "light", 5));
    });
}

TEST_F(DesktopWindow, AKilledWebProcessIsLoggedAndThePageComesBack) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        webkit_web_view_terminate_web_process(d.session.shell.mainView()->webView());
        EXPECT_TRUE(
            d.waitForLog("ui: the main view's web process was ended; reloading the page", 5));
        EXPECT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        // The watchdog never waited for the page: the live samples went on.
        const auto samples = d.countLog("live: thermal=");
        EXPECT_GE(samples, 1);
        EXPECT_TRUE(d.waitUntil(
            [&] {
                const auto text = d.js("document.getElementById('cpu-temp').textContent");
                return text && text->find("°") != std::string::npos;
            },
            10));
    });
}

TEST_F(DesktopWindow, AMissingPageFileLeavesTheViewEmptyAndIsLoggedOnce) {
    const auto copy = dir / "resources";
    std::filesystem::copy(resources, copy, std::filesystem::copy_options::recursive);
    std::filesystem::remove(copy / "index.html");
    resources = copy;
    const int status = run({"--consent", "on"}, [](DesktopDriver& d) {
        d.pause(2.5);  // the first pushes and two live samples ask for the page again
        EXPECT_EQ(d.countLog("ui: page file missing: "), 1);
        EXPECT_EQ(
            d.countLog(
                "ui: page file missing: " +
                (d.session.app.options().dataDir.parent_path() / "resources/index.html").string()),
            1);
        EXPECT_FALSE(d.session.shell.mainView()->currentURI().has_value());
        EXPECT_TRUE(d.session.shell.windowVisible());
        // Another page is still there and loads.
        d.pressControl(GDK_KEY_e);
        EXPECT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
    });
    EXPECT_EQ(status, 0);
}

TEST_F(DesktopWindow, StageChangesAreAnnouncedToScreenReaders) {
    run({"--consent", "on", "--force-thermal", "serious"}, [](DesktopDriver& d) {
        // The first announcement came during start-up; a new stage speaks again.
        std::vector<std::string> spoken;
        auto* accessible = gtk_widget_get_accessible(GTK_WIDGET(d.session.shell.window()));
        ASSERT_NE(g_signal_lookup("announcement", G_OBJECT_TYPE(accessible)), 0U);
        const auto handler =
            g_signal_connect(accessible, "announcement",
                             G_CALLBACK(+[](AtkObject*, const gchar* text, gpointer list) {
                                 static_cast<std::vector<std::string>*>(list)->emplace_back(text);
                             }),
                             &spoken);
        d.session.shell.announce("Heat emergency");
        EXPECT_EQ(spoken, std::vector<std::string>{"Heat emergency"});
        g_signal_handler_disconnect(accessible, handler);
        EXPECT_TRUE(d.waitForJs(pageScript, "expanded.html", 10));
    });
}

TEST_F(DesktopWindow, CoolDownTipsOpenAsAModalDialogOnTheWindow) {
    run({"--consent", "on"}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        d.js("HeatBridge.heat('tips'); 'sent'");
        ASSERT_TRUE(d.waitUntil([&] { return d.session.shell.openSheet() != nullptr; }, 5));
        auto* sheet = GTK_WINDOW(d.session.shell.openSheet());
        EXPECT_TRUE(gtk_window_get_modal(sheet));
        EXPECT_EQ(gtk_window_get_transient_for(sheet), d.session.shell.window());
        gtk_dialog_response(GTK_DIALOG(sheet), GTK_RESPONSE_OK);
        EXPECT_EQ(d.session.shell.openSheet(), nullptr);
    });
}

TEST_F(DesktopWindow, ClosingTheWindowEndsTheRunWithStatusZero) {
    bool closed = false;
    const int status = run({"--consent", "on"}, [&closed](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(pageScript, "index.html", 10));
        gtk_window_close(d.session.shell.window());
        closed = d.waitForLog("ui: main window closed", 5);
    });
    EXPECT_TRUE(closed);
    EXPECT_EQ(status, 0);
    const auto log = dataFile("heat.log");
    EXPECT_NE(log.find("ui: main window closed"), std::string::npos);
    ASSERT_GE(log.size(), std::string("---- quit\n").size());
    EXPECT_EQ(log.substr(log.size() - 10), "---- quit\n");
}

TEST_F(DesktopWindow, AConsentAnswerThatCannotBeSavedIsToldOnTheTerminal) {
    // A folder where the settings file belongs: the answer holds for the run but cannot be
    // saved, and the log may be the last place anyone looks.
    std::filesystem::create_directories(data / "settings.json" / "in-the-way");
    ::testing::internal::CaptureStderr();
    const int status = run({"--consent", "on"}, [](DesktopDriver& d) {
        EXPECT_TRUE(d.waitForLog("stage-c: ERROR saving consent: ", 5));
    });
    const auto terminal = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, 0);
    EXPECT_NE(terminal.find("velmora-heat-monitor: could not save the consent answer in " +
                            (data / "settings.json").string() + "; it holds until this run ends"),
              std::string::npos)
        << terminal;
}

TEST_F(DesktopWindow, MarkerFromALastShutdownShowsReliefInBothThemes) {
    std::filesystem::create_directories(data);
    std::ofstream(data / "settings.json") << R"({"autoShutdown":true,"consentRecorded":true})";
    std::ofstream(data / "auto-shutdown.marker")
        << R"({"at":"2026-01-02T03:04:05Z","peakC":108,"reason":"emergency countdown reached 0"})";
    run({}, [](DesktopDriver& d) {
        ASSERT_TRUE(d.waitForJs(modeScript, "relief", 10));
        EXPECT_EQ(d.countLog("ui: mode home -> relief"), 1);
        EXPECT_TRUE(screenHasNoMissingFigure(d));
        shootBoth(d, "relief");
        d.chooseAppearance("dark");
        EXPECT_TRUE(d.waitForJs(themeScript, "dark", 5));
    });
}

}  // namespace
}  // namespace velmora::testing
