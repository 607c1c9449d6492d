#include "metrics/cause_factory.hpp"

namespace velmora {

// The Mac has no process readers yet: no heat cause is shown there.
std::unique_ptr<CauseReader> makePlatformCauseReader(const std::string& /*root*/) {
    return nullptr;
}

}  // namespace velmora
