#pragma once

#include <gtk/gtk.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/temp_dir.hpp"

namespace velmora::test {

/// Runs the GTK main context for `span`.
void pumpFor(std::chrono::milliseconds span);

/// Runs `work` on another thread while this one keeps serving the main context (the item under
/// test answers on it), and returns its result.
template <class Work>
auto whilePumping(Work work) {
    auto result = std::async(std::launch::async, std::move(work));
    while (result.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) {
        g_main_context_iteration(nullptr, FALSE);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return result.get();
}

/// Serves the main context until `done` holds (checked every 50 ms) or `limit` passes.
bool pumpUntil(const std::function<bool()>& done,
               std::chrono::milliseconds limit = std::chrono::seconds(15));

/// The test watcher program running on the session bus, stopped on destruction.
class StandinWatcher {
  public:
    explicit StandinWatcher(std::filesystem::path record);
    ~StandinWatcher();
    StandinWatcher(const StandinWatcher&) = delete;
    StandinWatcher& operator=(const StandinWatcher&) = delete;
    StandinWatcher(StandinWatcher&&) = delete;
    StandinWatcher& operator=(StandinWatcher&&) = delete;

    /// True once it owns the watcher name.
    bool ready() const { return ready_; }
    /// The lines it recorded ("item BUS/PATH", "host NAME", "gone BUS/PATH").
    std::string record() const;
    void stop();

  private:
    std::filesystem::path record_;
    pid_t pid_ = -1;
    bool ready_ = false;
};

/// The test notification server on the session bus, stopped on destruction.
class StandinNotifications {
  public:
    /// `options`: "--slow MS", "--fail".
    explicit StandinNotifications(std::filesystem::path record,
                                  const std::vector<std::string>& options = {});
    ~StandinNotifications();
    StandinNotifications(const StandinNotifications&) = delete;
    StandinNotifications& operator=(const StandinNotifications&) = delete;
    StandinNotifications(StandinNotifications&&) = delete;
    StandinNotifications& operator=(StandinNotifications&&) = delete;

    bool ready() const { return ready_; }
    /// Every call it recorded, in order.
    std::vector<nlohmann::json> calls() const;
    /// Only the Notify calls.
    std::vector<nlohmann::json> notifies() const;
    /// Acts as the user choosing an action, or closing one, in the server's window. Blocking:
    /// call from another thread than the one the notifier lives on.
    bool invokeAction(std::uint32_t id, const std::string& key) const;
    bool dismiss(std::uint32_t id) const;

  private:
    std::filesystem::path record_;
    pid_t pid_ = -1;
    bool ready_ = false;
};

using velmora::testing::TempDir;

}  // namespace velmora::test
