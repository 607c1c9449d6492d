#pragma once

#include <functional>
#include <string>

namespace velmora {

/// Where a component's log lines go: one call per line, from any thread.
using LogSink = std::function<void(const std::string& line)>;

/// Hands a piece of work to the owner's main loop; completions of background work arrive
/// through it so that the engine and the shell only ever run on one thread.
using Post = std::function<void(std::function<void()> work)>;

}  // namespace velmora
