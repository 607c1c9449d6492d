#include "app/cocoa/shell_events.hpp"

#include "app/controller/app_controller.hpp"

namespace velmora {

ShellEvents eventsFor(AppController& app) {
    return ShellEvents{
        .message = [&app](PageMessage message) { app.receive(std::move(message)); },
        .pageFinished = [&app](WebView view) { app.pageFinished(view); },
        .menu = [&app](MenuAction action) { app.menuAction(action); },
        .heatItemClicked = [&app] { app.toggleMenuPopover(); },
    };
}

}  // namespace velmora
