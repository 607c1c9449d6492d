#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/fleet/watchdog_observer.hpp"
#include "os/serial_worker.hpp"
#include "policy/sinks.hpp"
#include "store/history_file.hpp"
#include "store/history_tiers.hpp"

namespace velmora {

/// The figures of one live sample as history keeps them.
HistorySample historySample(const LiveInputs& inputs, Timestamp now, std::optional<Level> level);

/// Keeps the month of history: every sample goes into the tiers in memory on the loop, and a
/// worker thread of its own reads the file at start and writes the changed slots at most
/// every `writeEvery`, so the loop never waits for the disk. A level rise and the start of a
/// countdown write and flush at once: a power cut in an emergency keeps the minutes before it.
class HistoryRecorder final : public WatchdogObserver {
  public:
    static constexpr std::chrono::seconds writeEvery{10};

    /// `post` runs work on the loop from any thread; the file is read on the worker, and so is
    /// the machine's identity below `machineRoot` (see machineIdentity).
    HistoryRecorder(std::filesystem::path dir, std::string machineRoot, Post post, LogSink log);
    /// Writes and flushes what is left, then waits for the worker.
    ~HistoryRecorder() override;
    HistoryRecorder(const HistoryRecorder&) = delete;
    HistoryRecorder& operator=(const HistoryRecorder&) = delete;
    HistoryRecorder(HistoryRecorder&&) = delete;
    HistoryRecorder& operator=(HistoryRecorder&&) = delete;

    void ticked(const nlohmann::json& view) override;
    void sampled(const LiveInputs& inputs, Timestamp now) override;
    /// Every second sample of a calm watchdog is enough; the 1 s tier then has gaps of 1 s.
    bool followsEverySample() const override { return false; }

    /// Adds one sample; `busiest` names the busiest process while the level is above NORMAL.
    void record(const HistorySample& sample, std::optional<std::string_view> busiest);

    /// The history; none until the file was read, so that only one ever takes memory.
    const HistoryStore* store() const { return store_.get(); }
    /// Whether the file was read (or found unusable) and its history taken over.
    bool loaded() const { return loaded_; }
    /// Waits for the file work queued so far.
    void settle() { worker_.settle(); }

  private:
    struct Disk;

    void adopt(std::unique_ptr<HistoryStore> loaded, const std::vector<std::string>& notes);
    void write(bool sync);

    std::unique_ptr<HistoryStore> store_;
    Post post_;
    LogSink log_;
    bool loaded_ = false;
    /// Samples taken before the file was read, added again to the history read from it.
    std::vector<std::pair<HistorySample, std::optional<std::string>>> early_;
    std::array<std::uint64_t, HistoryStore::tierCount> written_{};
    std::optional<std::int64_t> lastWrite_;
    std::optional<Level> level_;
    bool inCountdown_ = false;
    std::shared_ptr<Disk> disk_;
    std::shared_ptr<HistoryRecorder*> self_ = std::make_shared<HistoryRecorder*>(this);
    /// Last, so that it is stopped (and its queue run) before anything its jobs use goes.
    SerialWorker worker_;
};

}  // namespace velmora
