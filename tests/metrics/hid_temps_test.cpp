#include "metrics/macos/hid_temps.hpp"

#include <gtest/gtest.h>

#include "metrics/fakes/fake_hid.hpp"

namespace velmora {
namespace {

using testing::FakeHID;
using testing::FakeHIDState;

struct HIDFixture {
    std::shared_ptr<FakeHIDState> state = std::make_shared<FakeHIDState>();
    FakeHID port{state};
};

TEST(HIDTemps, BindsAllSixFunctionsInOrderAndMatchesTemperatureSensors) {
    HIDFixture f;
    HIDTemps hid(f.port);
    EXPECT_TRUE(hid.available());
    EXPECT_EQ(f.state->bound,
              (std::vector<std::string>{
                  "IOHIDEventSystemClientCreate", "IOHIDEventSystemClientSetMatching",
                  "IOHIDEventSystemClientCopyServices", "IOHIDServiceClientCopyEvent",
                  "IOHIDServiceClientCopyProperty", "IOHIDEventGetFloatValue"}));
    EXPECT_EQ(f.state->matching,
              (std::map<std::string, int>{{"PrimaryUsagePage", 65280}, {"PrimaryUsage", 5}}));
}

TEST(HIDTemps, UnboundFloatValueLeavesItUnavailableAndReadEmpty) {
    HIDFixture f;
    f.state->add("PMU tdie1", 50.0);
    f.state->missingSymbols.insert("IOHIDEventGetFloatValue");
    HIDTemps hid(f.port);
    EXPECT_FALSE(hid.available());
    EXPECT_TRUE(hid.read().empty());
}

TEST(HIDTemps, MissingFrameworkOrClientLeavesItUnavailable) {
    HIDFixture noFramework;
    noFramework.state->frameworkOpens = false;
    EXPECT_FALSE(HIDTemps(noFramework.port).available());
    HIDFixture noClient;
    noClient.state->clientCreated = false;
    EXPECT_FALSE(HIDTemps(noClient.port).available());
}

TEST(HIDTemps, ReadsServicesInOrderUnsortedWithDuplicates) {
    HIDFixture f;
    f.state->add("PMU tdie1", 45.5);
    f.state->add("GPU MTR Temp Sensor1", 52.0);
    f.state->add("PMU tdie1", 47.0);
    HIDTemps hid(f.port);
    const std::vector<NamedTemp> expected{
        {"PMU tdie1", 45.5, "IOHID PMU tdie1"},
        {"GPU MTR Temp Sensor1", 52.0, "IOHID GPU MTR Temp Sensor1"},
        {"PMU tdie1", 47.0, "IOHID PMU tdie1"}};
    EXPECT_EQ(hid.read(), expected);
}

TEST(HIDTemps, MissingProductIsNamedSensor) {
    HIDFixture f;
    f.state->add(std::nullopt, 40.0);
    f.state->services.push_back({RegistryValue{std::int64_t{7}}, 41.0});  // not a string
    HIDTemps hid(f.port);
    const std::vector<NamedTemp> expected{{"sensor", 40.0, "IOHID sensor"},
                                          {"sensor", 41.0, "IOHID sensor"}};
    EXPECT_EQ(hid.read(), expected);
}

TEST(HIDTemps, ReadingsOfExactlyOneOr150AreDropped) {
    HIDFixture f;
    f.state->add("a", 1.0);
    f.state->add("b", 150.0);
    f.state->add("c", 30.0);
    f.state->add("d", std::nullopt);  // no event
    HIDTemps hid(f.port);
    ASSERT_EQ(hid.read().size(), 1U);
    EXPECT_EQ(hid.read()[0].name, "c");
}

TEST(HIDTemps, NoServicesGiveAnEmptyList) {
    HIDFixture f;
    f.state->servicesCopied = false;
    HIDTemps hid(f.port);
    EXPECT_TRUE(hid.available());
    EXPECT_TRUE(hid.read().empty());
}

TEST(ClassifyHIDName, CpuNames) {
    for (const char* name :
         {"PMU tdie3", "PACC MTR Temp Sensor0", "SOC MTR Temp Sensor1", "eACC MTR Temp Sensor3"}) {
        EXPECT_EQ(classifyHIDName(name), "cpu") << name;
    }
}

TEST(ClassifyHIDName, GpuSsdBatteryAndNothing) {
    EXPECT_EQ(classifyHIDName("GPU MTR Temp Sensor1"), "gpu");
    EXPECT_EQ(classifyHIDName("NAND CH0 temp"), "ssd");
    EXPECT_EQ(classifyHIDName("gas gauge battery"), "battery");
    EXPECT_EQ(classifyHIDName("PMU tcal"), std::nullopt);
}

TEST(ClassifyHIDName, CpuWinsOverGpuInTheSameName) {
    EXPECT_EQ(classifyHIDName("PACC GPU shared"), "cpu");
}

}  // namespace
}  // namespace velmora
