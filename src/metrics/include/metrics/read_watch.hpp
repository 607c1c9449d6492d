#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "policy/mono_time.hpp"

namespace velmora {

/// What a sampling thread is reading right now, so that another thread can tell which file
/// hangs when a sample does not come back. Readers mark each open and read with a `Scope`; it
/// costs nothing on a thread that has no watch bound.
class ReadWatch {
  public:
    /// Marks one open or read of `path` on the calling thread for as long as it lives.
    class Scope {
      public:
        explicit Scope(const std::string& path);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        Scope(Scope&&) = delete;
        Scope& operator=(Scope&&) = delete;

      private:
        ReadWatch* watch_;
    };

    /// Makes `watch` the calling thread's watch (nullptr unbinds it).
    static void bind(ReadWatch* watch);

    /// The path being opened or read now; empty between reads.
    std::string current() const;
    /// How long the current open or read has been under way; nothing between reads.
    std::optional<Seconds> currentFor(MonoTime now) const;

  private:
    void begin(const std::string& path);
    void end();

    mutable std::mutex mutex_;
    const std::string* path_ = nullptr;
    MonoTime since_;
};

/// Paths whose open or read hung once: they are never opened again by this process, because a
/// thread blocked in such a read cannot be taken back.
void quarantineRead(const std::string& path);
bool readQuarantined(const std::string& path);

}  // namespace velmora
