#pragma once

#include <functional>

#include "app/core/menu_model.hpp"
#include "app/core/shell.hpp"

namespace velmora {

class AppController;

/// What the Mac shell reports, as plain functions: the shell exists before the controller
/// that listens to it, and reports nothing until it is connected.
struct ShellEvents {
    std::function<void(PageMessage)> message;
    std::function<void(WebView)> pageFinished;
    std::function<void(MenuAction)> menu;
    std::function<void()> heatItemClicked;
};

/// Events that reach `app`; `app` must outlive every call.
ShellEvents eventsFor(AppController& app);

}  // namespace velmora
