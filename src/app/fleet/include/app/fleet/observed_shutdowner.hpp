#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "actuators/shutdowner.hpp"

namespace velmora {

/// Passes every call to the real shutdowner, and tells `onShutdown` of each power-off request.
class ObservedShutdowner final : public Shutdowner {
  public:
    ObservedShutdowner(std::shared_ptr<Shutdowner> inner, std::function<void()> onShutdown)
        : inner_(std::move(inner)), onShutdown_(std::move(onShutdown)) {}

    void shutdown(ShutdownCompletion completion) override {
        if (onShutdown_) onShutdown_();
        inner_->shutdown(std::move(completion));
    }
    void probe(ProbeCompletion completion) override { inner_->probe(std::move(completion)); }

  private:
    std::shared_ptr<Shutdowner> inner_;
    std::function<void()> onShutdown_;
};

}  // namespace velmora
