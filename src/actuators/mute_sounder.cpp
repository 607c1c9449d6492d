#include "actuators/mute_sounder.hpp"

#include <string>
#include <utility>

#include "actuators/log_line.hpp"

namespace velmora {

MuteSounder::MuteSounder(LogSink log) : log_(std::move(log)) {}

void MuteSounder::alarm() {
    write("sound: alarm (muted)");
}

void MuteSounder::urgent() {
    write("sound: urgent alert (muted)");
}

void MuteSounder::tick() {
    write("sound: tick (muted)");
}

void MuteSounder::write(const char* line) const {
    logLine(log_, line);
}

}  // namespace velmora
