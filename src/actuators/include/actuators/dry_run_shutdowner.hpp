#pragma once

#include <functional>
#include <string_view>

#include "actuators/shutdowner.hpp"
#include "policy/duration.hpp"
#include "policy/platform_texts.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Runs the platform's real, harmless permission check and blocks for at most `timeout`.
using BlockingProbe = std::function<AutomationOutcome(Seconds timeout)>;

/// How a dry run behaves.
struct DryRunOptions {
    /// Pretend that the permission is refused (wins over `realProbe`).
    bool denied = false;
    /// Run the real, harmless probe instead of pretending it was granted.
    bool realProbe = false;
};

/// Never shuts anything down: logs what it would do and answers at once, so the emergency
/// path can be tried and demonstrated safely. Only the optional real probe runs in the
/// background; its completion goes through `post`.
class DryRunShutdowner final : public Shutdowner {
  public:
    /// The refusal it pretends, in the words the Mac's scripting tool uses.
    static constexpr std::string_view deniedText = macosTexts.simulatedDeniedText;

    /// `realProbe` is called on a background thread with a 60-second limit; `texts` chooses the
    /// platform's wording of the log lines and of the pretended refusal.
    DryRunShutdowner(LogSink log, DryRunOptions options, Post post, BlockingProbe realProbe,
                     const PlatformTexts& texts = velmora::texts());

    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;

  private:
    void runRealProbe(ProbeCompletion completion);
    void write(const std::string& line) const;

    LogSink log_;
    DryRunOptions options_;
    Post post_;
    BlockingProbe realProbe_;
    const PlatformTexts& texts_;
};

}  // namespace velmora
