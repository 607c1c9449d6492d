#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "actuators/named_cue_sounder.hpp"
#include "policy/sinks.hpp"

struct ca_context;

namespace velmora {

/// Plays the project's own cue sounds, "alarm.wav" (alarm and urgent) and "tick.wav", from
/// `soundsDirectory` through libcanberra, which reaches PulseAudio, PipeWire or ALSA. Playing
/// is asynchronous. A cue that cannot be played (no sound server, missing file) is skipped
/// and, when `log` is given, falls back to a line in the log ("sound: cannot play alarm.wav
/// (Not available)"), once for each file and reason until a cue plays again.
class CanberraSounder final : public Sounder {
  public:
    explicit CanberraSounder(std::filesystem::path soundsDirectory, LogSink log = {});
    ~CanberraSounder() override;
    CanberraSounder(const CanberraSounder&) = delete;
    CanberraSounder& operator=(const CanberraSounder&) = delete;
    CanberraSounder(CanberraSounder&&) = delete;
    CanberraSounder& operator=(CanberraSounder&&) = delete;

    void alarm() override { cues_.alarm(); }
    void urgent() override { cues_.urgent(); }
    void tick() override { cues_.tick(); }

    /// The file a cue sound of that name is played from.
    [[nodiscard]] std::filesystem::path soundFile(const std::string& name) const;

  private:
    void play(const std::string& name);
    void notPlayed(const std::filesystem::path& file, const std::string& reason);

    std::filesystem::path directory_;
    LogSink log_;
    int contextError_ = 0;
    ca_context* context_ = nullptr;
    std::set<std::string> reported_;
    std::uint32_t nextId_ = 1;
    NamedCueSounder cues_;
};

}  // namespace velmora
