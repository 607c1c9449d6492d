#include "policy/timestamp.hpp"

#include <chrono>

namespace velmora {

Timestamp Timestamp::now() {
    using namespace std::chrono;
    const auto since = system_clock::now().time_since_epoch();
    return Timestamp{duration<double>(since).count()};
}

}  // namespace velmora
