#pragma once

#include <future>

#include "os/serial_worker.hpp"
#include "store/marker_store.hpp"

namespace velmora {

/// The marker's writes and removals, run in the order they were asked for on a thread of
/// their own, so that a slow disk never delays the shutdown call or the countdown. A removal
/// asked for after a write always happens after it.
class MarkerQueue {
  public:
    explicit MarkerQueue(MarkerStore store) : store_(std::move(store)) {}

    [[nodiscard]] const MarkerStore& store() const { return store_; }

    /// Starts the durable write; the caller decides how long to wait for its result.
    [[nodiscard]] std::shared_future<WriteError> write(const Marker& marker);
    /// Removes the marker once everything asked before is done.
    void clear();
    /// Waits until everything asked so far is done (tests, quit).
    void settle() { worker_.settle(); }

  private:
    MarkerStore store_;
    SerialWorker worker_;
};

}  // namespace velmora
