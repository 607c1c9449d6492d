#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>

#include "app/controller/history_recorder.hpp"
#include "app/controller/history_view.hpp"
#include "history/history_test_support.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::kHistoryStart;

/// The loop's side for the recorder: work posted from its worker waits here until run.
class PostedWork {
  public:
    Post post() {
        return [this](std::function<void()> work) {
            const std::lock_guard lock(mutex_);
            queue_.push_back(std::move(work));
        };
    }
    void run() {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(mutex_);
            work.swap(queue_);
        }
        for (auto& job : work)
            job();
    }

  private:
    std::mutex mutex_;
    std::vector<std::function<void()>> queue_;
};

LiveInputs inputsWith(double cpuTemp, double busy) {
    LiveInputs inputs;
    inputs.cpuTemp = TempReading{cpuTemp, "hwmon coretemp"};
    inputs.cpuBusy = busy;
    inputs.sensors = {NamedTemp{"GPU edge", cpuTemp + 5, "hwmon amdgpu"},
                      NamedTemp{"Package", cpuTemp, "hwmon coretemp"}};
    inputs.fans = {FanReading{1, 1200.0}, FanReading{2, 2400.0}};
    inputs.battery = BatteryInfo{.percent = 81};
    inputs.power = PowerReading{12.5, "CPU package", "RAPL"};
    return inputs;
}

nlohmann::json view(int level, const std::string& state = "idle", bool sim = false) {
    return {{"level", level}, {"state", state}, {"sim", sim}};
}

class HistoryRecorderTest : public ::testing::Test {
  protected:
    std::unique_ptr<HistoryRecorder> start() {
        auto recorder =
            std::make_unique<HistoryRecorder>(tmp.path(), tmp.path().string(), work.post(),
                                              [this](const std::string& l) { lines.push_back(l); });
        recorder->settle();
        work.run();
        return recorder;
    }
    std::size_t rowsOnDisk() {
        const auto reading = readHistory(tmp.path());
        return reading.store ? reading.store->rows().size() : 0;
    }
    void sample(HistoryRecorder& recorder, std::int64_t time) {
        recorder.sampled(inputsWith(50, 20), Timestamp::fromSeconds(static_cast<double>(time)));
    }

    testing::TempDir tmp{"history-recorder"};
    PostedWork work;
    std::vector<std::string> lines;
};

TEST(HistorySampleFrom, TakesTheHottestSensorTheFastestFanAndTheHeadlineFigures) {
    const auto s = historySample(inputsWith(60, 33), Timestamp::fromSeconds(100.7), Level::warm);
    EXPECT_EQ(s.time, 100);
    EXPECT_EQ(s.level, Level::warm);
    EXPECT_EQ(s.cpuTempC, 60.0);
    EXPECT_EQ(s.gpuTempC, std::nullopt);
    EXPECT_EQ(s.hottestC, 65.0);
    EXPECT_EQ(s.cpuPercent, 33.0);
    EXPECT_EQ(s.fanRpm, 2400.0);
    EXPECT_EQ(s.batteryPercent, 81.0);
    EXPECT_EQ(s.powerW, 12.5);
    EXPECT_EQ(historySample(LiveInputs{}, Timestamp::fromSeconds(1), std::nullopt).hottestC,
              std::nullopt);
}

TEST_F(HistoryRecorderTest, TakesOverTheFileAndTheSamplesThatCameWhileItWasRead) {
    testing::writeHistory(tmp.path(), kHistoryStart, 30, machineIdentity(tmp.path().string()));
    auto recorder =
        std::make_unique<HistoryRecorder>(tmp.path(), tmp.path().string(), work.post(), LogSink());
    recorder->settle();
    sample(*recorder, kHistoryStart + 100);  // before the loop took the file's history over
    EXPECT_FALSE(recorder->loaded());
    work.run();
    ASSERT_TRUE(recorder->loaded());
    const auto rows = recorder->store()->rows();
    ASSERT_EQ(rows.size(), 31U);
    EXPECT_EQ(rows.back().time, kHistoryStart + 100);
}

TEST_F(HistoryRecorderTest, WritesAtMostEveryTenSeconds) {
    auto recorder = start();
    sample(*recorder, kHistoryStart);
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 1U);
    for (int i = 1; i < 10; ++i)
        sample(*recorder, kHistoryStart + i);
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 1U) << "nothing new before ten seconds";
    sample(*recorder, kHistoryStart + 10);
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 11U);
}

TEST_F(HistoryRecorderTest, ALevelRiseWritesAtOnce) {
    auto recorder = start();
    recorder->ticked(view(0));
    for (int i = 0; i < 5; ++i)
        sample(*recorder, kHistoryStart + i);
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 1U);
    recorder->ticked(view(1));
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 5U);
    sample(*recorder, kHistoryStart + 5);
    recorder->ticked(view(0));  // a fall waits for the next regular write
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 5U);
}

TEST_F(HistoryRecorderTest, ACountdownStartWritesAtOnceButARehearsalDoesNot) {
    auto recorder = start();
    recorder->ticked(view(4));
    sample(*recorder, kHistoryStart);
    sample(*recorder, kHistoryStart + 1);
    recorder->ticked(view(4, "countdown", true));
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 1U);
    recorder->ticked(view(4, "countdown"));
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 2U);
    EXPECT_EQ(recorder->store()->rows().back().level, Level::blowout);
}

TEST_F(HistoryRecorderTest, TheLastPointsAreWrittenWhenItStops) {
    auto recorder = start();
    for (int i = 0; i < 4; ++i)
        sample(*recorder, kHistoryStart + i);
    recorder.reset();
    EXPECT_EQ(rowsOnDisk(), 4U);
}

TEST_F(HistoryRecorderTest, AnUnusableFileIsLoggedOnceAndAFreshHistoryStarts) {
    testing::putText(tmp.path() / "history.bin", "not a history");
    auto recorder = start();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines.front().find("history: "), std::string::npos);
    EXPECT_NE(lines.front().find("set aside as"), std::string::npos);
    sample(*recorder, kHistoryStart);
    recorder->settle();
    EXPECT_EQ(rowsOnDisk(), 1U);
}

TEST(HistoryView, ARangeHoldsItsRowsTheBandsAndTheBusiestProcess) {
    HistoryStore store;
    for (int i = 0; i < 3000; ++i) {
        auto s = testing::patternSample(kHistoryStart + i);
        s.level = Level::hot;
        store.add(s, std::string_view("yes"));
    }
    const auto now = kHistoryStart + 2999;
    const auto view = historyView(store, "15m", now);
    EXPECT_EQ(view["span"], 900);
    EXPECT_EQ(view["bands"]["critical"], 100.0);
    const auto& rows = view["rows"];
    ASSERT_EQ(rows.size(), 901U) << "each second from 15 minutes ago to now";
    EXPECT_EQ(rows.back()[0], now);
    EXPECT_EQ(rows.back()[2], 2);
    EXPECT_EQ(rows.back()[12], "yes");
    EXPECT_EQ(historyView(store, "2h", now)["rows"].size(), 901U + 210U);
    EXPECT_FALSE(historyRangeSeconds("1y").has_value());
}

TEST(HistoryView, ThePopupGetsSixtyStepsOfFifteenSeconds) {
    HistoryStore store;
    for (int i = 0; i < 900; ++i) {
        if (i >= 400 && i < 500) continue;  // the watchdog was not running
        auto s = testing::patternSample(kHistoryStart + i);
        s.cpuPercent = i < 450 ? 10.0 : 90.0;
        store.add(s, std::nullopt);
    }
    const auto steps = recentCpu(store, kHistoryStart + 899);
    ASSERT_EQ(steps.size(), 60U);
    EXPECT_DOUBLE_EQ(steps.front().value(), 10.0);
    EXPECT_DOUBLE_EQ(steps[10].value(), 10.0);
    EXPECT_FALSE(steps[28].has_value()) << "a step without samples stays empty";
    EXPECT_DOUBLE_EQ(steps.back().value(), 90.0);
    EXPECT_NE(recentCpuCall(steps).find(",null,"), std::string::npos);
    EXPECT_EQ(recentCpuCall(steps).rfind("window.heatLive && window.heatLive.recent && ", 0), 0U);
}

}  // namespace
}  // namespace velmora
