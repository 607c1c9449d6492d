#include "actuators/linux/canberra_sounder.hpp"

#include <canberra.h>

#include <utility>

namespace velmora {
namespace {

ca_context* openContext() {
    ca_context* context = nullptr;
    if (ca_context_create(&context) != CA_SUCCESS) return nullptr;
    ca_context_change_props(context, CA_PROP_APPLICATION_NAME, "Velmora Heat Monitor",
                            CA_PROP_APPLICATION_ID, "velmora-heat-monitor", nullptr);
    return context;
}

}  // namespace

CanberraSounder::CanberraSounder(std::filesystem::path soundsDirectory)
    : directory_(std::move(soundsDirectory)),
      context_(openContext()),
      cues_({.alarm = "alarm", .tick = "tick"}, [this](const std::string& name) { play(name); }) {}

CanberraSounder::~CanberraSounder() {
    if (context_ != nullptr) ca_context_destroy(context_);
}

std::filesystem::path CanberraSounder::soundFile(const std::string& name) const {
    return directory_ / (name + ".wav");
}

// Each cue gets its own id so a new one never cancels one still playing; the file is named
// afresh every time and nothing is preloaded.
void CanberraSounder::play(const std::string& name) {
    if (context_ == nullptr) return;
    const std::string file = soundFile(name).string();
    static_cast<void>(ca_context_play(context_, nextId_++, CA_PROP_MEDIA_FILENAME, file.c_str(),
                                      CA_PROP_MEDIA_ROLE, "event", CA_PROP_EVENT_DESCRIPTION,
                                      name.c_str(), nullptr));
}

}  // namespace velmora
