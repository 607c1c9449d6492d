#include "metrics/macos/smc.hpp"

#include <gtest/gtest.h>

#include "metrics/fakes/fake_smc.hpp"

namespace velmora {
namespace {

using testing::FakeSMCState;
using testing::FakeSMCTransport;
using testing::fpe2;
using testing::sp78;

std::unique_ptr<SMC> openWith(const std::shared_ptr<FakeSMCState>& state) {
    return SMC::open(std::make_unique<FakeSMCTransport>(state));
}

std::shared_ptr<FakeSMCState> typicalMac() {
    auto state = std::make_shared<FakeSMCState>();
    state->add("TA0P", "sp78", sp78(30));            // ambient: no class
    state->add("TC0P", "sp78", sp78(55.5));          // cpu
    state->add("TCGC", "sp78", sp78(61));            // gpu, despite TC
    state->add("TCTD", "sp78", sp78(70));            // excluded
    state->add("Tp01", "flt ", {0, 0, 0x5C, 0x42});  // 55.0 as a little-endian float
    state->add("TG0D", "fpe2", fpe2(48));
    state->add("TC1C", "ui8 ", {40});  // cpu name, but not a temperature type
    state->add("FNum", "ui8 ", {2});
    return state;
}

TEST(SMC, NoTransportMeansNoObject) {
    EXPECT_EQ(SMC::open(nullptr), nullptr);
}

TEST(SMC, DiscoversClassifiedKeysThatDecodeInEnumerationOrder) {
    const auto smc = openWith(typicalMac());
    ASSERT_NE(smc, nullptr);
    const std::vector<SMCTempKey> expected{{"TC0P", SMCClass::cpu, "sp78"},
                                           {"TCGC", SMCClass::gpu, "sp78"},
                                           {"Tp01", SMCClass::cpu, "flt "},
                                           {"TG0D", SMCClass::gpu, "fpe2"}};
    EXPECT_EQ(smc->tempKeys(), expected);
}

TEST(SMC, KeyCountOfZeroLeavesNoKeysButAnObject) {
    auto state = typicalMac();
    state->keyCount = 0;
    const auto smc = openWith(state);
    ASSERT_NE(smc, nullptr);
    EXPECT_TRUE(smc->tempKeys().empty());
}

TEST(SMC, KeyCountOf5000OrMoreLeavesNoKeys) {
    for (const std::uint32_t count : {5000U, 5001U, 0xFFFFFFFFU}) {
        auto state = typicalMac();
        state->keyCount = count;
        const auto smc = openWith(state);
        ASSERT_NE(smc, nullptr);
        EXPECT_TRUE(smc->tempKeys().empty()) << count;
    }
}

TEST(SMC, KeyCountOf4999IsStillEnumerated) {
    auto state = typicalMac();
    state->keyCount = 4999;
    const auto smc = openWith(state);
    EXPECT_EQ(smc->tempKeys().size(), 4U);
}

TEST(SMC, UnreadableKeyCountSkipsDiscovery) {
    auto state = typicalMac();
    state->failingKeys.insert("#KEY");
    const auto smc = openWith(state);
    ASSERT_NE(smc, nullptr);
    EXPECT_TRUE(smc->tempKeys().empty());
}

TEST(SMC, ReadSendsKeyInfoThenBytesWithTheSize) {
    auto state = typicalMac();
    const auto smc = openWith(state);
    state->sent.clear();
    const auto value = smc->read("TC0P");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->type, "sp78");
    EXPECT_EQ(value->bytes, sp78(55.5));
    ASSERT_EQ(state->sent.size(), 2U);
    const SMCParamBlock info = decodeSMCBlock(state->sent[0]);
    EXPECT_EQ(info.command, 9);
    EXPECT_EQ(info.key, fourCharCode("TC0P"));
    EXPECT_EQ(info.dataSize, 0U);
    const SMCParamBlock bytes = decodeSMCBlock(state->sent[1]);
    EXPECT_EQ(bytes.command, 5);
    EXPECT_EQ(bytes.dataSize, 2U);
}

TEST(SMC, ReadFailsOnKernelFailureOrResultByte) {
    auto state = typicalMac();
    const auto smc = openWith(state);
    EXPECT_FALSE(smc->read("ZZZZ"));  // result byte 132
    state->kernelFails = true;
    EXPECT_FALSE(smc->read("TC0P"));
}

TEST(SMC, ReadRefusesSizesOutsideOneToThirtyTwo) {
    auto state = typicalMac();
    state->add("BIG!", "ch8*", std::vector<std::uint8_t>(33, 1));
    state->add("NONE", "ui8 ", {});
    const auto smc = openWith(state);
    EXPECT_FALSE(smc->read("BIG!"));
    EXPECT_FALSE(smc->read("NONE"));
}

TEST(SMC, NumberPrefersTemperatureTypesThenUnsignedIntegers) {
    auto state = typicalMac();
    state->add("F0Ac", "fpe2", fpe2(1800));
    state->add("UI16", "ui16", {0x12, 0x34});
    state->add("UI32", "ui32", {0x00, 0x01, 0x00, 0x02});
    state->add("SI8 ", "si8 ", {5});
    const auto smc = openWith(state);
    EXPECT_EQ(smc->number("F0Ac"), 1800.0);
    EXPECT_EQ(smc->number("FNum"), 2.0);
    EXPECT_EQ(smc->number("UI16"), 0x1234);
    EXPECT_EQ(smc->number("UI32"), 65538.0);
    EXPECT_FALSE(smc->number("SI8 "));
    EXPECT_FALSE(smc->number("MISS"));
}

TEST(SMC, HottestPicksTheHottestPlausibleKeyOfTheClass) {
    const auto smc = openWith(typicalMac());
    EXPECT_EQ(smc->hottest(SMCClass::cpu), (TempReading{55.5, "SMC TC0P"}));
    EXPECT_EQ(smc->hottest(SMCClass::gpu), (TempReading{61.0, "SMC TCGC"}));
}

TEST(SMC, EqualHottestValuesNameTheEarlierKey) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("TC0P", "sp78", sp78(60));
    state->add("TC1P", "sp78", sp78(60));
    const auto smc = openWith(state);
    EXPECT_EQ(smc->hottest(SMCClass::cpu)->source, "SMC TC0P");
}

TEST(SMC, HottestSkipsImplausibleAndUnreadableKeys) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("TC0P", "sp78", sp78(40));
    state->add("TC1P", "sp78", sp78(0.5));
    state->add("TC2P", "sp78", sp78(60));
    const auto smc = openWith(state);
    state->keys[2].bytes = sp78(127);  // still decodes, and 127 is plausible
    state->failingKeys.insert("TC2P");
    EXPECT_EQ(smc->hottest(SMCClass::cpu), (TempReading{40.0, "SMC TC0P"}));
    state->failingKeys.clear();
    state->keys[2].bytes = {0xA0, 0x00};  // -96 °C
    EXPECT_EQ(smc->hottest(SMCClass::cpu), (TempReading{40.0, "SMC TC0P"}));
    state->failingKeys.insert("TC0P");
    EXPECT_FALSE(smc->hottest(SMCClass::cpu));
}

TEST(SMC, DiscoveryKeepsAKeyWhoseValueIsImplausibleButDecodes) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("TC0P", "sp78", {0, 0});
    EXPECT_EQ(openWith(state)->tempKeys().size(), 1U);
}

TEST(SMC, StringOfACode) {
    EXPECT_EQ(SMC::string(fourCharCode("TG0D")), "TG0D");
}

TEST(DecodeSMCTemperature, Sp78IsSignedBigEndianOver256) {
    EXPECT_EQ(decodeSMCTemperature("sp78", {0xFF, 0x80}), -0.5);
    EXPECT_EQ(decodeSMCTemperature("sp78", {0x2A, 0x80}), 42.5);
}

TEST(DecodeSMCTemperature, Fpe2IsUnsignedBigEndianOverFour) {
    EXPECT_EQ(decodeSMCTemperature("fpe2", {0x00, 0x64}), 25.0);
}

TEST(DecodeSMCTemperature, FltIsAHostOrderSingle) {
    // 42.5f is 0x422A0000; the SMC hands it over in little-endian order.
    EXPECT_EQ(decodeSMCTemperature("flt ", {0x00, 0x00, 0x2A, 0x42}), 42.5);
    EXPECT_NE(decodeSMCTemperature("flt ", {0x42, 0x2A, 0x00, 0x00}), 42.5);
}

TEST(DecodeSMCTemperature, TooFewBytesDecodeToNothing) {
    EXPECT_FALSE(decodeSMCTemperature("flt ", {0x42}));
    EXPECT_FALSE(decodeSMCTemperature("sp78", {0x2A}));
    EXPECT_FALSE(decodeSMCTemperature("fpe2", {}));
}

TEST(DecodeSMCTemperature, TypeIsComparedExactly) {
    EXPECT_FALSE(decodeSMCTemperature("flt", {0, 0, 0x2A, 0x42}));
    EXPECT_FALSE(decodeSMCTemperature("SP78", {0x2A, 0x80}));
    EXPECT_FALSE(decodeSMCTemperature("ui16", {0x2A, 0x80}));
}

TEST(ClassifySMCKey, TcgcIsGpuAndTctdIsNothing) {
    EXPECT_EQ(classifySMCKey("TCGC"), SMCClass::gpu);
    EXPECT_EQ(classifySMCKey("TCTD"), std::nullopt);
}

TEST(ClassifySMCKey, CpuPrefixes) {
    for (const char* key : {"TC0P", "Tp01", "Te05"}) {
        EXPECT_EQ(classifySMCKey(key), SMCClass::cpu) << key;
    }
}

TEST(ClassifySMCKey, GpuPrefixes) {
    for (const char* key : {"Tg0f", "TG0D"})
        EXPECT_EQ(classifySMCKey(key), SMCClass::gpu) << key;
}

TEST(ClassifySMCKey, OthersHaveNoClass) {
    for (const char* key : {"TA0P", "TC0", "TC0PP", "TP01", "tC0P", "FNum", ""}) {
        EXPECT_EQ(classifySMCKey(key), std::nullopt) << key;
    }
}

}  // namespace
}  // namespace velmora
