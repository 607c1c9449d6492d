#pragma once

#include <chrono>

#include "actuators/shutdowner.hpp"
#include "policy/duration.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// How long to wait for logind. The defaults match the Mac's scripting tool.
struct LogindTimeouts {
    Seconds shutdown = std::chrono::seconds(20);
    Seconds probe = std::chrono::seconds(120);
};

/// Powers the machine off through systemd-logind on the system bus (polkit decides whether
/// this user may). Each request runs on a background thread; the completion goes to `post`.
class LogindShutdowner final : public Shutdowner {
  public:
    LogindShutdowner(LogSink log, Post post, LogindTimeouts timeouts = {});

    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;

  private:
    LogSink log_;
    Post post_;
    LogindTimeouts timeouts_;
};

}  // namespace velmora
