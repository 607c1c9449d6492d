#include "app/usage.hpp"

#include "policy/constants.hpp"

namespace velmora {

std::string usageText() {
    return std::string(SC::appName) + " " + std::string(SC::version) +
           " — watches how hot this computer is and, with your consent, powers it off in a "
           "heat emergency.\n"
           "\n"
           "Usage: velmora-heat-monitor [switches]\n"
           "\n"
           "  --data-dir PATH        keep heat.log, settings.json and the shutdown marker in "
           "PATH\n"
           "                         (default: $XDG_DATA_HOME/velmora-heat-monitor, else\n"
           "                         ~/.local/share/velmora-heat-monitor)\n"
           "  --consent on|off       record the answer to the automatic-shutdown question, as\n"
           "                         the consent page would, and keep running\n"
           "  --headless             run without a window, even when a display is available\n"
           "  --mute                 play no sounds; write each cue to the log instead\n"
           "  --no-menu-item         do not add the heat item to the menu bar or tray\n"
           "  --dry-run-shutdown     never power off: log what would be done (TEST MODE)\n"
           "  --test-emergency       run a simulated emergency right away (implies a dry run)\n"
           "  --simulate-denied      with a dry run: pretend the power-off permission is refused\n"
           "  --real-probe           with a dry run: ask the system whether power-off is "
           "permitted\n"
           "  --force-thermal NAME   pretend the thermal state is NAME (nominal, fair, serious,\n"
           "                         critical), for tests and demonstrations\n"
           "  --diagnose             print the sensor sources and one live snapshot, then exit\n"
           "  --metrics-file PATH    after every sample, write the live state to PATH in the\n"
           "                         Prometheus text format (for node_exporter's textfile\n"
           "                         collector; PATH should end in .prom)\n"
           "  --help                 print this text and exit\n"
           "  --version              print the version and exit\n"
           "\n"
           "Switches are matched whole; unknown arguments are ignored. SIGINT or SIGTERM ends\n"
           "the run cleanly.\n";
}

}  // namespace velmora
