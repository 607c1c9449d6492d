#include "actuators/background.hpp"

#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora {

void runOffThread(std::function<AutomationOutcome()> work,
                  std::function<void(AutomationOutcome)> deliver) {
    // Shared, because a thread that fails to start destroys what it was given.
    auto receiver = std::make_shared<std::function<void(AutomationOutcome)>>(std::move(deliver));
    try {
        std::thread([work = std::move(work), receiver] { (*receiver)(work()); }).detach();
    } catch (const std::system_error& error) {
        (*receiver)(AutomationOutcome::failed(std::string("could not start a background thread: ") +
                                              error.what()));
    }
}

}  // namespace velmora
