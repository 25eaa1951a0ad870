#include <gtest/gtest.h>

#include <string>

#include "RynHwDll.h"
#include "dsp/Spm.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using Spm = ConnectedTest;

constexpr DeviceHandle kDsp = 0x20000011;
constexpr uint32_t kHold = 0x99A, kStart = 0x99B, kBlock = 0x99C, kLoadImage = 0x9A0;

// The driver's answer to the DSP type query: the type at 8, the result at 12.
ScriptedReply dspType(uint32_t type, ResultCode result = 0) { return ScriptedReply{}.word(8, type).word(12, result); }

bool carries(std::span<const uint16_t> image, const std::string &text) {
    for (size_t i = 0; i + text.size() <= image.size(); ++i) {
        if (std::equal(text.begin(), text.end(), image.begin() + i,
                       [](char c, uint16_t w) { return w == static_cast<uint8_t>(c); }))
            return true;
    }
    return false;
}

// Every image ships as a board's loader takes it: one block write per record
// of at most 128 units, or one command-stream load of the whole image, then
// the start at the table's entry address with module flag 0.
TEST_F(Spm, EveryImageShipsWhole) {
    ASSERT_EQ(ryn::spm::modules().size(), 27u);
    for (const ryn::spm::Module &m : ryn::spm::modules()) {
        SCOPED_TRACE(::testing::Message() << "module " << m.module << ", DSP type " << m.dspType);
        driver.clear();
        driver.script(dspType(m.dspType));
        ASSERT_EQ(RynDspRunSpm_8(kDsp, m.module), 0u);
        const auto sent = driver.requests();
        ASSERT_GE(sent.size(), 4u);
        EXPECT_EQ(sent[0].function(), 0x9A4u);
        EXPECT_EQ(sent[1].function(), kHold);
        expectFields(sent.back(), {{16, kDsp}, {20, m.entry}, {24, 0}});
        EXPECT_EQ(sent.back().function(), kStart);
        EXPECT_TRUE(carries(m.image, m.text));
        if (m.form == ryn::spm::Form::CommandStream) {
            ASSERT_EQ(sent.size(), 4u);
            EXPECT_EQ(sent[2].function(), kLoadImage);
            ASSERT_EQ(sent[2].buffers.size(), 1u);
            EXPECT_EQ(sent[2].buffers[0].address, m.image.data());
            EXPECT_EQ(sent[2].buffers[0].length, 2 * m.image.size());
            continue;
        }
        uint64_t words = 5;
        for (size_t i = 2; i + 1 < sent.size(); ++i) {
            EXPECT_EQ(sent[i].function(), kBlock);
            const uint32_t units = sent[i].word(24);
            EXPECT_LE(units, 128u);
            words += 4 + (m.form == ryn::spm::Form::Records1 ? units : (units + 1) / 2);
        }
        EXPECT_EQ(words, m.image.size());
    }
    // Rows of the module table as published.
    EXPECT_EQ(ryn::spm::find(2, 1)->image.size(), 27200u);
    EXPECT_EQ(ryn::spm::find(2, 1)->entry, 0x7C8Du);
    EXPECT_EQ(ryn::spm::find(11, 5)->image.size(), 28716u);
    EXPECT_EQ(ryn::spm::find(0, 4)->entry, 0x2A8E8u);
}

TEST_F(Spm, ChecksInOrder) {
    const struct {
        uint32_t module, type;
        uint32_t error;
    } cases[] = {{7, 1, 9},   {14, 5, 9}, {0xFFFFFFFF, 1, 9}, {2, 3, 17}, {5, 3, 17},
                 {12, 1, 17}, {3, 2, 17}, {6, 5, 17},         {0, 0, 17}, {0, 6, 17}};
    for (const auto &c : cases) {
        driver.clear();
        driver.script(dspType(c.type));
        const ResultCode result = RynDspRunSpm_8(kDsp, c.module);
        EXPECT_EQ(RynResultErrorCode(result), c.error) << c.module << "/" << c.type;
        EXPECT_EQ(RynResultSourceId(result), 0x6Bu);
        EXPECT_EQ(driver.requestCount(), 1u);  // the query alone
    }
    driver.script(dspType(1, 0xE0000007));  // a failed query wins over a bad module
    EXPECT_EQ(RynDspRunSpm_8(kDsp, 7), 0xE0000007u);
    EXPECT_EQ(RynResultErrorCode(RynDspRunSpm_8(0x70000000, 0)), 11u);
}

// The undecorated entry point renumbers modules for older drivers.
TEST_F(Spm, OlderDriversRunRenumberedModules) {
    const struct {
        uint32_t level, module;
        int32_t runs;  // -1: refused with error 9
    } cases[] = {{10138, 2, 1}, {10138, 1, -1}, {10141, 2, -1}, {10141, 6, -1},
                 {10141, 3, 3}, {10142, 2, 2},  {10120, 2, 4},  {0, 13, 13}};
    for (const auto &c : cases) {
        ryn::setDriverVersionLevel(c.level);
        driver.clear();
        driver.script(dspType(1));
        const ResultCode result = RynDspRunSpm(kDsp, c.module);
        if (c.runs < 0) {
            EXPECT_EQ(result & 0x800000FFu, 0x80000009u) << c.level << "/" << c.module;
        } else {
            const auto *m = ryn::spm::find(static_cast<uint32_t>(c.runs), 1);
            const uint32_t entry = m != nullptr ? m->entry : 0;
            EXPECT_EQ(driver.lastRequest().word(20), entry) << c.level << "/" << c.module;
        }
    }
}

}  // namespace
