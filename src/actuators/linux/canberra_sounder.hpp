#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "actuators/named_cue_sounder.hpp"

struct ca_context;

namespace velmora {

/// Plays the project's own cue sounds, "alarm.wav" (alarm and urgent) and "tick.wav", from
/// `soundsDirectory` through libcanberra, which reaches PulseAudio, PipeWire or ALSA. Playing
/// is asynchronous and any failure (no sound server, missing file) is silent.
class CanberraSounder final : public Sounder {
  public:
    explicit CanberraSounder(std::filesystem::path soundsDirectory);
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

    std::filesystem::path directory_;
    ca_context* context_ = nullptr;
    std::uint32_t nextId_ = 1;
    NamedCueSounder cues_;
};

}  // namespace velmora
