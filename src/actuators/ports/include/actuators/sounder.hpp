#pragma once

namespace velmora {

/// The countdown's audible cues. Each call returns at once; the sound plays on its own and a
/// sound that cannot be played is skipped without a word. Called on the main thread only.
class Sounder {
  public:
    Sounder() = default;
    virtual ~Sounder() = default;
    Sounder(const Sounder&) = delete;
    Sounder& operator=(const Sounder&) = delete;
    Sounder(Sounder&&) = delete;
    Sounder& operator=(Sounder&&) = delete;

    /// The emergency alarm and its repeats.
    virtual void alarm() = 0;
    /// A countdown has started.
    virtual void urgent() = 0;
    /// One countdown cue.
    virtual void tick() = 0;
};

}  // namespace velmora
