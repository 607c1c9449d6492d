#pragma once

#include "actuators/sounder.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Plays nothing; writes one log line per cue instead, so that a silent run still shows
/// which cue would have sounded.
class MuteSounder final : public Sounder {
  public:
    explicit MuteSounder(LogSink log);

    void alarm() override;   // "sound: alarm (muted)"
    void urgent() override;  // "sound: urgent alert (muted)"
    void tick() override;    // "sound: tick (muted)"

  private:
    void write(const char* line) const;

    LogSink log_;
};

}  // namespace velmora
