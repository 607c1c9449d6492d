#include "policy/mono_time.hpp"

namespace velmora {

MonoTime MonoTime::now() {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return MonoTime{std::chrono::duration_cast<Seconds>(since)};
}

}  // namespace velmora
