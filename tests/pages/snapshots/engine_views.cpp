#include <filesystem>
#include <string>

#include "app/core/presentation_rules.hpp"
#include "snapshot_parts.hpp"

namespace velmora::pages {

namespace {

constexpr double kCritical = 108;  // the OS critical state
constexpr double kNominal = 55;

nlohmann::json record(const std::string& name, const nlohmann::json& view,
                      bool wantSettings = false) {
    return {{"name", name}, {"mode", modeName(pickMode(view, wantSettings))}, {"view", view}};
}

std::filesystem::path freshDir(const std::filesystem::path& scratch, const std::string& name) {
    auto dir = scratch / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

void firstRun(nlohmann::json& out, const std::filesystem::path& dir) {
    EngineRig rig(dir, 0);
    rig.sensor->celsius = kNominal;
    out.push_back(record("engine-consent", rig.tickTo(0)));
    rig.engine->consent(true, EngineRig::wallAt(0.25));
    out.push_back(record("engine-home", rig.tickTo(0.5)));
    out.push_back(record("engine-settings", rig.tickTo(0.75), true));
    rig.engine->setAuto(false, EngineRig::wallAt(1));
    out.push_back(record("engine-settings-off", rig.tickTo(1.25), true));
}

void emergency(nlohmann::json& out, const std::filesystem::path& dir) {
    {
        EngineRig rig(dir, 0);
        rig.engine->consent(true, EngineRig::wallAt(0));
        rig.sensor->celsius = kCritical;
        out.push_back(record("engine-count", rig.tickTo(2.75)));
        out.push_back(record("engine-count-late", rig.tickTo(9.5)));
        out.push_back(record("engine-fired", rig.tickTo(10.5)));
        rig.engine->cancel(EngineRig::at(10.75));
        out.push_back(record("engine-fired-err", rig.tickTo(10.75)));
    }
    EngineRig relaunched(dir, 60);  // the marker left by the shutdown means relief
    relaunched.sensor->celsius = kNominal;
    out.push_back(record("engine-relief", relaunched.tickTo(60)));
}

void cancelledThenCooled(nlohmann::json& out, const std::filesystem::path& dir) {
    EngineRig rig(dir, 0);
    rig.engine->consent(true, EngineRig::wallAt(0));
    rig.sensor->celsius = kCritical;
    rig.tickTo(3);
    rig.engine->cancel(EngineRig::at(3.25));
    rig.sensor->celsius = kNominal;
    out.push_back(record("engine-relief-cancelled", rig.tickTo(5)));
}

void failedShutdown(nlohmann::json& out, const std::filesystem::path& dir,
                    const ShutdownError& error, const std::string& name) {
    EngineRig rig(dir, 0);
    rig.shutdowner->shutdownError = error;
    rig.engine->consent(true, EngineRig::wallAt(0));
    rig.sensor->celsius = kCritical;
    out.push_back(record(name, rig.tickTo(11)));
}

void deniedPermission(nlohmann::json& out, const std::filesystem::path& dir) {
    EngineRig rig(dir, 0);
    rig.shutdowner->probeAnswer = AutomationOutcome::denied("not authorized");
    rig.sensor->celsius = kNominal;
    rig.engine->consent(true, EngineRig::wallAt(0));
    out.push_back(record("engine-perm", rig.tickTo(0.5)));
    rig.engine->dismissPermission();
    out.push_back(record("engine-settings-denied", rig.tickTo(0.75), true));
}

void simulation(nlohmann::json& out, const std::filesystem::path& dir) {
    EngineRig rig(dir, 0);
    rig.sensor->celsius = kNominal;
    rig.engine->consent(true, EngineRig::wallAt(0));
    rig.engine->startSim(EngineRig::at(1));
    out.push_back(record("engine-lead", rig.tickTo(2)));
    out.push_back(record("engine-count-sim", rig.tickTo(8)));
    out.push_back(record("engine-simdone", rig.tickTo(16)));
}

}  // namespace

nlohmann::json engineViews(const std::filesystem::path& scratch) {
    nlohmann::json out = nlohmann::json::array();
    firstRun(out, freshDir(scratch, "first-run"));
    emergency(out, freshDir(scratch, "emergency"));
    cancelledThenCooled(out, freshDir(scratch, "cancelled"));
    failedShutdown(out, freshDir(scratch, "failed"),
                   ShutdownError::failed("logind PowerOff failed: Connection timed out"),
                   "engine-manual");
    failedShutdown(out, freshDir(scratch, "denied"),
                   ShutdownError::denied("Interactive authentication required"),
                   "engine-manual-perm");
    deniedPermission(out, freshDir(scratch, "perm"));
    simulation(out, freshDir(scratch, "simulation"));
    return out;
}

}  // namespace velmora::pages
