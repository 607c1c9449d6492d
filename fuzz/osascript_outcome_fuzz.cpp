// One finished run of the Mac's scripting tool as the process runner hands it over: an exit
// status, whether it timed out, and its standard error, which is whatever the tool printed (the
// runner keeps it only when it is valid UTF-8). The input is the status (4 bytes), the time-out
// flag (1 byte) and the standard error.

#include <cstddef>
#include <cstdint>
#include <string>

#include "actuators/classify_osascript.hpp"
#include "fuzz_support.hpp"
#include "os/utf8.hpp"

namespace {

using velmora::AutomationOutcome;
using velmora::fuzz::asciiLowered;
using velmora::fuzz::require;

bool namesRefusal(std::string_view standardError) {
    const std::string lowered = asciiLowered(standardError);
    return standardError.find("-1743") != std::string_view::npos ||
           standardError.find("-1744") != std::string_view::npos ||
           lowered.find("not authorized to send apple events") != std::string::npos ||
           lowered.find("not allowed to send apple events") != std::string::npos;
}

bool hasOuterBlank(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r\v\f";
    return !text.empty() && (blanks.find(text.front()) != std::string_view::npos ||
                             blanks.find(text.back()) != std::string_view::npos);
}

void checkOutcome(const AutomationOutcome& outcome, std::int32_t status, bool timedOut,
                  std::string_view standardError) {
    if (timedOut) {
        require(outcome.kind == AutomationOutcome::Kind::failed, "a time-out is a failure");
        return;
    }
    if (status == 0) {
        require(outcome == AutomationOutcome::granted(), "exit status 0 is success, without text");
        return;
    }
    require(!outcome.isGranted(), "a non-zero exit status is never success");
    require(!outcome.text.empty(), "a refusal or failure always says why");
    require(!hasOuterBlank(outcome.text), "the reason is trimmed");
    require((outcome.kind == AutomationOutcome::Kind::denied) == namesRefusal(standardError),
            "exactly the Automation error codes and wordings mean the permission was refused");
    if (outcome.kind == AutomationOutcome::Kind::denied) {
        require(standardError.find(outcome.text) != std::string_view::npos,
                "a refusal quotes the tool's own words");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::fuzz::ByteReader input(data, size);
    const auto status = input.take<std::int32_t>();
    const bool timedOut = input.takeBool();
    const std::string_view raw = input.rest();

    const std::string standardError = velmora::utf8OrEmpty(std::string(raw));
    require(standardError == raw || standardError.empty(),
            "the runner keeps standard error whole or not at all");
    require(velmora::isValidUtf8(standardError), "kept standard error is valid UTF-8");

    const AutomationOutcome outcome = velmora::classifyOsascript(status, standardError, timedOut);
    checkOutcome(outcome, status, timedOut, standardError);
    require(velmora::isValidUtf8(outcome.text), "the reason can be logged and shown as text");
    return 0;
}
