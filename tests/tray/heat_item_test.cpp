#include "app/tray/heat_item.hpp"

#include <gtest/gtest.h>

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

TEST_F(HeatItemTest, RegistersWithTheWatcherWithItsFirstTitle) {
    StandinWatcher watcher(temp.path() / "record");
    ASSERT_TRUE(watcher.ready());
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value()) << watcher.record();
    EXPECT_NE(watcher.record().find("item " + ref->bus + ref->path), std::string::npos);
    const auto props = propsWhen(*ref, [](const ItemProps& p) { return !p.label.empty(); });
    EXPECT_EQ(props.id, "org.velmora.heat-monitor");
    EXPECT_EQ(props.title, "Velmora Heat Monitor");
    EXPECT_EQ(props.status, "Active");
    EXPECT_EQ(props.label, "Heat \u2026");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-normal-symbolic");
    EXPECT_EQ(props.attentionIconName, "org.velmora.heat-monitor-alarm-symbolic");
    EXPECT_TRUE(item->hostPresent());
    EXPECT_TRUE(logLines.empty());
}

TEST_F(HeatItemTest, LabelAndIconFollowTheTitleAndColour) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setTitle("WARM · 71°", HeatColor::yellow);
    auto props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "WARM · 71°"; });
    EXPECT_EQ(props.label, "WARM · 71°");
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-warm-symbolic");
    item->setTitle("HOT · 93°", HeatColor::red);
    props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "HOT · 93°"; });
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-hot-symbolic");
    item->setTitle("NORMAL · n/a", HeatColor::label);
    props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "NORMAL · n/a"; });
    EXPECT_EQ(props.iconName, "org.velmora.heat-monitor-heat-normal-symbolic");
}

TEST_F(HeatItemTest, CountdownAsksForAttentionAndEndsBackAtTheHeatTitle) {
    StandinWatcher watcher(temp.path() / "record");
    makeItem();
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value());
    item->setTitle("EXTREME HEAT · 99°", HeatColor::red);
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
    EXPECT_EQ(props.label, "EXTREME HEAT · 98°");
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
                                            "Start at login",
                                            "-",
                                            "Quit Velmora Heat Monitor"};
    EXPECT_EQ(visibleLabels(menu), expected);
    EXPECT_EQ(findByLabel(menu, "Appearance: Dark")->toggleType, "radio");
    EXPECT_EQ(findByLabel(menu, "Appearance: Dark")->toggleState, 1);
    EXPECT_EQ(findByLabel(menu, "Appearance: Auto")->toggleState, 0);
    EXPECT_EQ(findByLabel(menu, "Start at login")->toggleType, "checkmark");
    EXPECT_EQ(findByLabel(menu, "Start at login")->toggleState, 0);
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
    click(*ref, "Quit Velmora Heat Monitor");
    const std::vector<std::string> expected{"test", "live", "open", "appearance light", "quit"};
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

    StandinWatcher watcher(temp.path() / "record");
    ASSERT_TRUE(watcher.ready());
    const auto ref = registeredItem();
    ASSERT_TRUE(ref.has_value()) << watcher.record();
    const auto props = propsWhen(*ref, [](const ItemProps& p) { return p.label == "HOT · 90°"; });
    EXPECT_EQ(props.label, "HOT · 90°");
    EXPECT_TRUE(item->hostPresent());
    // Said once while there was no host: the next line is the host's arrival.
    const std::vector<std::string> said{"ui: no tray host; the window is the only view",
                                        "ui: tray host found; the heat item is shown"};
    EXPECT_EQ(logLines, said);
}

}  // namespace
}  // namespace velmora::test
