#include "app/tray/heat_item.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

#include "tray/sni_client.hpp"
#include "tray/tray_support.hpp"

namespace velmora::test {
namespace {

using namespace std::chrono_literals;

class HeatItemTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (gdk_display_get_default() == nullptr)
            GTEST_SKIP() << "no X display (run under xvfb-run)";
        if (!client.connected()) GTEST_SKIP() << "no session bus (run under dbus-run-session)";
    }

    HeatItemActions recordingActions() {
        HeatItemActions actions;
        actions.liveReadings = [this] { calls.push_back("live"); };
        actions.openWindow = [this] { calls.push_back("open"); };
        actions.testEmergency = [this] { calls.push_back("test"); };
        actions.chooseAppearance = [this](AppearancePref pref) {
            calls.push_back("appearance " + std::string(rawValue(pref)));
        };
        actions.startAtLogin = [this](bool on) {
            calls.push_back(on ? "login on" : "login off");
            return on && loginWorks;
        };
        actions.notifyWhenHot = [this](bool on) {
            calls.push_back(on ? "notify on" : "notify off");
        };
        actions.figureAsText = [this](bool on) { calls.push_back(on ? "text on" : "text off"); };
        actions.quit = [this] { calls.push_back("quit"); };
        actions.log = [this](const std::string& line) { logLines.push_back(line); };
        return actions;
    }

    void makeItem() {
        item =
            std::make_unique<HeatItem>("Heat \u2026", std::filesystem::path(), recordingActions());
    }

    /// The item as the watcher lists it, once it has registered.
    std::optional<ItemRef> registeredItem() {
        std::optional<ItemRef> found;
        pumpUntil([&] {
            const auto items = whilePumping([&] { return client.registeredItems(); });
            if (!items.empty()) found = parseItem(items.front());
            return found.has_value();
        });
        return found;
    }

    ItemProps propsWhen(const ItemRef& ref, const std::function<bool(const ItemProps&)>& wanted) {
        ItemProps last;
        pumpUntil([&] {
            const auto props = whilePumping([&] { return client.properties(ref); });
            if (props) last = *props;
            return props && wanted(*props);
        });
        return last;
    }

    MenuNode menuOf(const ItemRef& ref) {
        const auto props = whilePumping([&] { return client.properties(ref); });
        EXPECT_TRUE(props.has_value());
        std::optional<MenuNode> menu;
        pumpUntil([&] {
            menu = whilePumping([&] { return client.layout(ref, props->menuPath); });
            return menu && menu->children.size() >= 10;
        });
        return menu.value_or(MenuNode{});
    }

    void click(const ItemRef& ref, const std::string& label) {
        const auto props = whilePumping([&] { return client.properties(ref); });
        const auto menu = menuOf(ref);
        const auto* entry = findByLabel(menu, label);
        ASSERT_NE(entry, nullptr) << label;
        const int id = entry->id;
        EXPECT_TRUE(whilePumping([&] { return client.click(ref, props->menuPath, id); }));
        pumpFor(200ms);
    }

    TempDir temp{"tray"};
    SniClient client;
    std::vector<std::string> calls;
    std::vector<std::string> logLines;
    bool loginWorks = true;
    std::unique_ptr<HeatItem> item;
};

TEST_F(HeatItemTest, RegistersWithTheWatcherWithTheIconCarryingTheFigure) {
    StandinWatcher watcher(temp.path() / "record");
    ASSERT_TRUE(watcher.ready());
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value()) << watcher.record();
    EXPECT_NE(watcher.record().find("item " + ref->bus + ref->path), std::string::npos);
    const auto props = propsWhen(*ref, [](const ItemProps& p) { return !p.iconName.empty(); });
    EXPECT_EQ(props.id, "org.velmora.heat-monitor");
    EXPECT_EQ(props.title, "Velmora Heat Monitor");
    EXPECT_EQ(props.status, "Active");
    // The icon carries the figure, so the label stays empty: no host shows it twice.
    EXPECT_EQ(props.label, "");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-none-normal");
    EXPECT_EQ(props.iconThemePath, item->runtimeIconFolder().string());
    EXPECT_EQ(props.attentionIconName, "org.velmora.heat-monitor-alarm-symbolic");
    EXPECT_EQ(props.toolTipTitle, "Velmora Heat Monitor");
    EXPECT_EQ(props.toolTipText, "Waiting for the first reading");
    EXPECT_TRUE(item->hostPresent());
    EXPECT_TRUE(logLines.empty());
}

TEST_F(HeatItemTest, TheIconChangesWithTheFigureWithinTheSameLevel) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setTitle("NORMAL · 73°", HeatColor::label);
    item->setDetails(HeatItemDetails{73.0, "Velmora Heat Monitor", "NORMAL · 73 °C"});
    const auto at73 = propsWhen(*ref, [](const ItemProps& p) {
        return p.iconName == "org.velmora.heat-monitor-figure-73-normal";
    });
    ASSERT_EQ(at73.iconName, "org.velmora.heat-monitor-figure-73-normal");
    const std::vector<std::pair<int, int>> sizes{{16, 16}, {22, 22}, {24, 24}, {32, 32}};
    EXPECT_EQ(at73.pixmapSizes, sizes);
    EXPECT_EQ(at73.pixmapBytes.size(), (16 * 16 + 22 * 22 + 24 * 24 + 32 * 32) * 4U);
    item->setDetails(HeatItemDetails{77.2, "Velmora Heat Monitor", "NORMAL · 77 °C"});
    const auto at77 = propsWhen(*ref, [](const ItemProps& p) {
        return p.iconName == "org.velmora.heat-monitor-figure-77-normal";
    });
    EXPECT_EQ(at77.iconName, "org.velmora.heat-monitor-figure-77-normal");
    EXPECT_NE(at77.pixmapBytes, at73.pixmapBytes);
    EXPECT_EQ(at77.toolTipText, "NORMAL · 77 °C");
    // A hotter level draws the same figure in another colour.
    item->setTitle("WARM · 77°", HeatColor::yellow);
    const auto warm = propsWhen(*ref, [](const ItemProps& p) {
        return p.iconName == "org.velmora.heat-monitor-figure-77-warm";
    });
    EXPECT_NE(warm.pixmapBytes, at77.pixmapBytes);
    EXPECT_TRUE(std::filesystem::exists(item->runtimeIconFolder() /
                                        "org.velmora.heat-monitor-figure-77-warm.png"));
}

TEST_F(HeatItemTest, TheRuntimeIconsArePrivateAndGoneWithTheItem) {
    makeItem();
    item->setDetails(HeatItemDetails{64.0, "Velmora Heat Monitor", "NORMAL · 64 °C"});
    const auto folder = item->runtimeIconFolder();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(item->iconName(), "org.velmora.heat-monitor-figure-64-normal");
    EXPECT_TRUE(std::filesystem::exists(folder / "org.velmora.heat-monitor-figure-64-normal.png"));
    EXPECT_EQ(folder.parent_path().filename(), "velmora-heat-monitor");
    const auto perms = std::filesystem::status(folder.parent_path()).permissions();
    EXPECT_EQ(perms & std::filesystem::perms::all, std::filesystem::perms::owner_all);
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr) {
        EXPECT_EQ(folder.parent_path().parent_path(), std::filesystem::path(runtime));
    }
    item.reset();
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(HeatItemTest, TheTooltipIsReadOverTheBusAndNeverSpeaksOfACountdownWhenCalm) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setDetails(HeatItemDetails{91.0, "Velmora Heat Monitor",
                                     "HOT · 91 °C — cc1plus 96 % · critical in about 4 min"});
    const auto props =
        propsWhen(*ref, [](const ItemProps& p) { return p.toolTipText.starts_with("HOT"); });
    EXPECT_EQ(props.toolTipTitle, "Velmora Heat Monitor");
    EXPECT_EQ(props.toolTipText, "HOT · 91 °C — cc1plus 96 % · critical in about 4 min");
    EXPECT_EQ(props.status, "Active");
    EXPECT_EQ(props.label.find("ountdown"), std::string::npos);
}

TEST_F(HeatItemTest, WithTheFigureAsTextTheLabelCarriesItAndTheIconIsPlain) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setFigureAsText(true);
    item->setDetails(HeatItemDetails{71.0, "Velmora Heat Monitor", "WARM · 71 °C"});
    item->setTitle("WARM · 71°", HeatColor::yellow);
    auto props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "WARM · 71°"; });
    EXPECT_EQ(props.label, "WARM · 71°");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-warm-symbolic");
    EXPECT_TRUE(props.pixmapSizes.empty()) << "the themed icon, found by its name";
    item->setTitle("HOT · 93°", HeatColor::red);
    props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "HOT · 93°"; });
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-hot-symbolic");
    item->setFigureAsText(false);
    props = propsWhen(*ref, [](const ItemProps& p) { return p.label.empty(); });
    EXPECT_EQ(props.label, "");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-71-hot");
    EXPECT_EQ(findByLabel(menuOf(*ref), "Temperature as text beside the icon")->toggleState, 0);
}

TEST_F(HeatItemTest, CountdownAsksForAttentionAndEndsBackAtTheHeatIcon) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setTitle("EXTREME HEAT · 99°", HeatColor::red);
    item->setDetails(HeatItemDetails{99.0, "Velmora Heat Monitor", "EXTREME HEAT · 99 °C"});
    item->showCountdown("EMERGENCY 9s");
    auto props = propsWhen(*ref, [](const ItemProps& p) { return p.status == "NeedsAttention"; });
    EXPECT_EQ(props.status, "NeedsAttention");
    EXPECT_EQ(props.label, "EMERGENCY 9s");
    EXPECT_TRUE(item->attention());
    // A sample during the countdown is kept for later but does not replace the countdown.
    item->setTitle("EXTREME HEAT · 98°", HeatColor::red);
    item->showCountdown("EMERGENCY 8s");
    props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "EMERGENCY 8s"; });
    EXPECT_EQ(props.label, "EMERGENCY 8s");
    item->endCountdown();
    props = propsWhen(*ref, [](const ItemProps& p) { return p.status == "Active"; });
    EXPECT_EQ(props.status, "Active");
    EXPECT_EQ(props.label, "");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-99-hot");
    EXPECT_FALSE(item->attention());
}

TEST_F(HeatItemTest, MenuHoldsTheActionsInOrder) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    item->setAppearance(AppearancePref::dark);
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    const auto menu = menuOf(*ref);
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
    EXPECT_EQ(visibleLabels(menu), expected);
    EXPECT_EQ(findByLabel(menu, "Appearance: Dark")->toggleType, "radio");
    EXPECT_EQ(findByLabel(menu, "Appearance: Dark")->toggleState, 1);
    EXPECT_EQ(findByLabel(menu, "Appearance: Auto")->toggleState, 0);
    EXPECT_EQ(findByLabel(menu, "Start at login")->toggleType, "checkmark");
    EXPECT_EQ(findByLabel(menu, "Start at login")->toggleState, 0);
    EXPECT_EQ(findByLabel(menu, "Notify me when it gets hot")->toggleType, "checkmark");
    EXPECT_EQ(findByLabel(menu, "Notify me when it gets hot")->toggleState, 1);
    EXPECT_EQ(findByLabel(menu, "Temperature as text beside the icon")->toggleState, 0);
    EXPECT_TRUE(calls.empty()) << "setting the check marks must not act";
}

TEST_F(HeatItemTest, MenuEntriesCallTheirActions) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    click(*ref, "Test emergency (simulation, never shuts down)");
    click(*ref, "Live readings\u2026");
    click(*ref, "Open Velmora Heat Monitor");
    click(*ref, "Appearance: Light");
    click(*ref, "Notify me when it gets hot");
    click(*ref, "Temperature as text beside the icon");
    click(*ref, "Quit Velmora Heat Monitor");
    const std::vector<std::string> expected{"test",       "live",    "open", "appearance light",
                                            "notify off", "text on", "quit"};
    EXPECT_EQ(calls, expected);
}

TEST_F(HeatItemTest, StartAtLoginKeepsTheCheckMarkOfWhatHappened) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    click(*ref, "Start at login");
    ASSERT_EQ(calls, std::vector<std::string>{"login on"});
    EXPECT_EQ(findByLabel(menuOf(*ref), "Start at login")->toggleState, 1);
    loginWorks = false;
    click(*ref, "Start at login");
    EXPECT_EQ(findByLabel(menuOf(*ref), "Start at login")->toggleState, 0);
    // Switching on fails: the mark goes back off.
    click(*ref, "Start at login");
    pumpUntil([&] { return findByLabel(menuOf(*ref), "Start at login")->toggleState == 0; }, 2s);
    EXPECT_EQ(findByLabel(menuOf(*ref), "Start at login")->toggleState, 0);
    const std::vector<std::string> expected{"login on", "login off", "login on"};
    EXPECT_EQ(calls, expected);
}

TEST_F(HeatItemTest, WithoutATrayHostLogsOnceAndAppearsWhenOneComes) {
    makeItem();
    pumpUntil([&] { return !logLines.empty(); }, 5s);
    ASSERT_EQ(logLines, std::vector<std::string>{"ui: no tray host; the window is the only view"});
    EXPECT_FALSE(item->hostPresent());
    item->setTitle("HOT · 90°", HeatColor::red);
    item->setDetails(HeatItemDetails{90.0, "Velmora Heat Monitor", "HOT · 90 °C"});

    StandinWatcher watcher(temp.path() / "record");
    ASSERT_TRUE(watcher.ready());
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value()) << watcher.record();
    const auto props =
        propsWhen(*ref, [](const ItemProps& p) { return p.toolTipText == "HOT · 90 °C"; });
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-figure-90-hot");
    EXPECT_TRUE(item->hostPresent());
    // Said once while there was no host: the next line is the host's arrival.
    const std::vector<std::string> said{"ui: no tray host; the window is the only view",
                                        "ui: tray host found; the heat item is shown"};
    EXPECT_EQ(logLines, said);
}

}  // namespace
}  // namespace velmora::test
