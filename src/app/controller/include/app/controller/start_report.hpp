#pragma once

#include <string>
#include <vector>

#include "app/controller/app_controller.hpp"

namespace velmora {

/// Start-up problems the log cannot tell, because they may keep the log from being written: a
/// data directory that is missing or not writable, a "--consent" answer that did not reach
/// the disk. One line each, for the person who started the program.
std::vector<std::string> startProblems(const AppController& app);

/// Writes startProblems to standard error after the program's name; every run calls it once
/// its controller has started.
void reportStartProblems(const AppController& app);

}  // namespace velmora
