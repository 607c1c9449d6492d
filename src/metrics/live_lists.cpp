#include "metrics/live_lists.hpp"

#include <string>

#include "metrics/live_model.hpp"
#include "metrics/number_text.hpp"

namespace velmora::LiveModel {

nlohmann::json powerList(const std::vector<PowerReading>& sources) {
    nlohmann::json list = nlohmann::json::array();
    for (const PowerReading& p : sources) {
        list.push_back(
            {{"label", p.label}, {"value", fixedText(p.watts, 1) + " W"}, {"source", p.source}});
    }
    return list;
}

nlohmann::json batteryList(const std::vector<BatteryPack>& batteries) {
    nlohmann::json list = nlohmann::json::array();
    for (const BatteryPack& pack : batteries) {
        const auto& percent = pack.info.percent;
        list.push_back({{"name", pack.name},
                        {"value", percent ? std::to_string(*percent) + "%" : std::string(na)},
                        {"fill", percent ? *percent / 100.0 : 0.0},
                        {"state", pack.status.value_or(std::string(na))},
                        {"source", pack.source}});
    }
    return list;
}

}  // namespace velmora::LiveModel
