#include "actuators/linux/canberra_sounder.hpp"

#include <canberra.h>

#include <system_error>
#include <utility>

namespace velmora {
namespace {

ca_context* openContext(int& error) {
    ca_context* context = nullptr;
    error = ca_context_create(&context);
    if (error != CA_SUCCESS) return nullptr;
    ca_context_change_props(context, CA_PROP_APPLICATION_NAME, "Velmora Heat Monitor",
                            CA_PROP_APPLICATION_ID, "velmora-heat-monitor", nullptr);
    return context;
}

}  // namespace

CanberraSounder::CanberraSounder(std::filesystem::path soundsDirectory, LogSink log)
    : directory_(std::move(soundsDirectory)),
      log_(std::move(log)),
      context_(openContext(contextError_)),
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
    const std::filesystem::path file = soundFile(name);
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        notPlayed(file, "the file is missing");
        return;
    }
    if (context_ == nullptr) {
        notPlayed(file, ca_strerror(contextError_));
        return;
    }
    const int result = ca_context_play(context_, nextId_++, CA_PROP_MEDIA_FILENAME, file.c_str(),
                                       CA_PROP_MEDIA_ROLE, "event", CA_PROP_EVENT_DESCRIPTION,
                                       name.c_str(), nullptr);
    if (result == CA_SUCCESS) {
        reported_.clear();
    } else {
        notPlayed(file, ca_strerror(result));
    }
}

// A sound system that is missing stays missing: one line per file and reason is enough.
void CanberraSounder::notPlayed(const std::filesystem::path& file, const std::string& reason) {
    if (!log_) return;
    std::string line = "sound: cannot play " + file.filename().string() + " (" + reason + ")";
    if (!reported_.insert(line).second) return;
    log_(line);
}

}  // namespace velmora
