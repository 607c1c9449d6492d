#include "actuators/automation_outcome.hpp"

namespace velmora {

std::string describe(const AutomationOutcome& outcome) {
    switch (outcome.kind) {
        case AutomationOutcome::Kind::denied:
            return "denied(\"" + outcome.text + "\")";
        case AutomationOutcome::Kind::failed:
            return "failed(\"" + outcome.text + "\")";
        case AutomationOutcome::Kind::granted:
            break;
    }
    return "granted";
}

}  // namespace velmora
