#include "app/controller/start_report.hpp"

#include <cstdio>

#include "app/core/data_dir_check.hpp"
#include "engine/engine.hpp"

namespace velmora {

std::vector<std::string> startProblems(const AppController& app) {
    std::vector<std::string> problems;
    if (auto problem = dataDirProblem(app.options().dataDir)) {
        problems.push_back(std::move(*problem));
    }
    // The engine takes the answer for the run before it saves it, so only the save itself
    // says whether it reached the disk.
    if (app.options().consent && !app.startConsentSaved() && app.engine() != nullptr) {
        problems.push_back("could not save the consent answer in " +
                           app.engine()->settingsFile().string() +
                           "; it holds until this run ends");
    }
    return problems;
}

void reportStartProblems(const AppController& app) {
    for (const auto& problem : startProblems(app)) {
        std::fprintf(stderr, "velmora-heat-monitor: %s\n", problem.c_str());
    }
}

}  // namespace velmora
