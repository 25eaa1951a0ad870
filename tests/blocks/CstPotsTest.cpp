#include <chrono>

#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using DspBlocks = ConnectedTest;
constexpr DeviceHandle kBlock = 0x2FFFFFFF, kLine = 0x1FFFFFFF;  // kinds 2 and 1, each at its top

// Every request's layout (the calls that do not check the handle's kind pass
// any handle), and what the library refuses on its own, sending nothing.
TEST_F(DspBlocks, LayoutsAndRefusals) {
    uint32_t s = 0;
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{(codes & 0xFF8000FFu)...}; };
    expectLayouts(
        driver,
        {{[] { return RynDataConverterInit_12(kBlock, 1, 2); }, 0x99A, 28, 12, {{16, kBlock}, {20, 1}, {24, 2}}},
         {[] { return RynCstPotsInit_12(0x20000000, 3, -1); }, 0x9A9, 28, 12, {{16, 0x20000000}, {24, ~0u}}},
         {[] { return RynCstPotsOffHook_12(kLine, 4, 5); }, 0x9AA, 28, 12, {{16, kLine}, {20, 4}, {24, 5}}},
         {[] { return RynCstPotsOnHook_12(0, 6, 7); }, 0x9AB, 28, 12, {{16, 0}, {20, 6}, {24, 7}}},
         {[] { return RynCstPotsHookFlash_16(~0u, 1, 2, 3); }, 0x9AC, 32, 12, {{16, ~0u}, {24, 2}, {28, 3}}},
         {[] { return RynCstPotsPulseDial_16(9, 4, 5, 6); }, 0x9AD, 32, 12, {{16, 9}, {20, 4}, {28, 6}}},
         {[] { return RynCstPotsOnHookLineMon_12(kLine, 7, 8); }, 0x9AE, 28, 12, {{20, 7}, {24, 8}}},
         {[] { return RynCstPotsSenseLine_12(kLine, 9, 10); }, 0x9AF, 28, 12, {{20, 9}, {24, 10}}},
         {[&] { return RynCstPotsWriteDaa_24(kLine, 1, 2, 0xAB, 0xCD, &s); }, 0x9B4, 30, 16, {{26, 0xCDAB0000}}}});
    // The kind checks (error 11 of the mixer's and the telephony module), the
    // mixer's set-up never provided (error 6) and a null status (error 10).
    driver.clear();
    for (DeviceHandle h : {0x0u, kLine, 0x30000000u, 0xF0000000u})
        EXPECT_EQ(errors(RynDataConverterInit_12(h, 0, 0), RynCstPotsInit_12(h, 0, 4), RynDataMixerInit(kBlock),
                         RynCstPotsWriteDaa_24(h, 0, 0, 0, 0, nullptr)),
                  (std::vector<uint32_t>{0xB480000B, 0xC680000B, 0xB4800006, 0xC680000A}));
    EXPECT_EQ(driver.requestCount(), 0u);
    driver.script(failedCall(16).word(8, 9));  // the status is stored whatever the result
    EXPECT_EQ(RynCstPotsWriteDaa(kLine, 0, 0, 0, 0, &s), RYN_RESULT_CALL_FAILED);
    EXPECT_EQ(s, 9u);
}

// The set-up's DAA writes by mode, their early stops, and the pause that
// comes only between two writes. Each case: the mode; the driver's answers
// (set-up result, then status and result of each write); the call's result;
// the writes made, {register, value} each. F and G are failures, W the
// warning that the DAA did not take a value (status above 1).
TEST_F(DspBlocks, DaaSequences) {
    const uint32_t F = 0xE0000001, G = 0xE0000002, W = 0x4680001A;
    const uint32_t cases[][8] = {{0, 5, 0, 0, 0, 0, 5, 0},      {6, 5, 0, 0, 0, 0, 5, 0},
                                 {4, F, 0, 0, 0, 0, F, 0},      {1, 0, 1, 0, 0, 7, 7, 0x100C1110},
                                 {2, 0, 2, 0, 0, 0, W, 0x100C}, {3, 3, 0, G, 0, 0, G, 0x100C},
                                 {4, 0, 0, 4, 0, 0, 4, 0x1064}, {5, 3, 0, 0, 0, 0, 0, 0x1004}};
    for (const auto &c : cases) {
        const uint32_t writes = (c[7] != 0) + (c[7] > 0xFFFF);
        driver.clear(), driver.script(resultReply(c[1]));
        for (uint32_t i = 0; i < writes; ++i)
            driver.script(ScriptedReply{}.word(8, c[2 + 2 * i]).word(12, c[3 + 2 * i]));
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(RynCstPotsInit_12(kBlock, 0, static_cast<int32_t>(c[0])) & 0xFF8000FFu, c[6]) << c[0];
        EXPECT_EQ(std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(300), c[7] > 0xFFFF) << c[0];
        uint64_t made = 0;
        for (const RecordedRequest &r : driver.requests())
            if (r.function() == 0x9B4 && r.word(16) == kBlock && r.word(20) == 2 && r.word(24) == 500)
                made = made << 16 | r.input[28] << 8 | r.input[29];
        EXPECT_EQ(made, c[7]) << c[0];
        EXPECT_EQ(driver.requestCount(), 1 + writes) << c[0];
    }
}

}  // namespace
