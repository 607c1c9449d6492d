#pragma once

#include <string>
#include <vector>

#include "actuators/sounder.hpp"

namespace velmora::testing {

/// Remembers the cues in the order they were played: "alarm", "urgent", "tick".
class RecordingSounder final : public Sounder {
  public:
    void alarm() override { cues.emplace_back("alarm"); }
    void urgent() override { cues.emplace_back("urgent"); }
    void tick() override { cues.emplace_back("tick"); }
    std::vector<std::string> cues;
};

}  // namespace velmora::testing
