#pragma once

#include "actuators/shutdowner.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// How long to wait for logind, in seconds. The defaults match the Mac's scripting tool.
struct LogindTimeouts {
    double shutdown = 20;
    double probe = 120;
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
