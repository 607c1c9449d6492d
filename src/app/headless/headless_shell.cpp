#include "app/headless/headless_shell.hpp"

#include <ctime>

#include "app/headless/status_line.hpp"

namespace velmora {

namespace {

constexpr const char* clearLine = "\r\x1b[2K";

std::string clockText() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buffer[16] = {};
    std::strftime(buffer, sizeof buffer, "%H:%M:%S", &local);
    return buffer;
}

}  // namespace

HeadlessShell::HeadlessShell(std::FILE* out, bool interactive, std::shared_ptr<Sounder> cues,
                             std::function<void()> quit)
    : out_(out), interactive_(interactive), cues_(std::move(cues)), quit_(std::move(quit)) {}

void HeadlessShell::playSound(std::string_view name) {
    if (!cues_) return;
    // The presentation's chime is the short cue, its urgent alert the alarm.
    if (name == "Tink") {
        cues_->tick();
    } else {
        cues_->urgent();
    }
}

void HeadlessShell::terminate() {
    if (quit_) quit_();
}

void HeadlessShell::statusChanged(const StatusReport& report) {
    if (const auto line = changeLine(last_, report)) printLine(clockText() + " " + *line);
    last_ = report;
    drawStatus();
}

void HeadlessShell::printLine(const std::string& line) {
    write((interactive_ ? clearLine : "") + line + "\n");
    shownStatus_.clear();
}

void HeadlessShell::write(const std::string& text) {
    if (outputGone_) return;
    std::fputs(text.c_str(), out_);
    if (std::fflush(out_) != 0 || std::ferror(out_) != 0) outputGone_ = true;
}

void HeadlessShell::drawStatus() {
    if (!interactive_ || !last_) return;
    const auto text = statusLineText(*last_);
    if (text == shownStatus_) return;
    shownStatus_ = text;
    write(clearLine + text);
}

void HeadlessShell::finish() {
    if (!interactive_ || shownStatus_.empty()) return;
    write(clearLine);
    shownStatus_.clear();
}

}  // namespace velmora
