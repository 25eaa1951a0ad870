#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "RynHwDll.h"
#include "dsp/Spm.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using Spm = ConnectedTest;

constexpr DeviceHandle kDsp = 0x20000011;
constexpr uint32_t kHold = 0x99A, kStart = 0x99B, kBlock = 0x99C, kLoadImage = 0x9A0;

// The driver's answer to the DSP type query (a 20-byte request with the
// handle): the type at 8, the result at 12.
ScriptedReply dspType(uint32_t type, ResultCode result = 0) { return ScriptedReply{}.word(8, type).word(12, result); }

bool carries(std::span<const uint16_t> image, const std::string &text) {
    const auto same = [](uint16_t word, char c) { return word == static_cast<uint8_t>(c); };
    return std::search(image.begin(), image.end(), text.begin(), text.end(), same) != image.end();
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
        EXPECT_EQ(std::tuple(sent[0].function(), sent[0].input.size(), sent[0].word(16), sent[1].function(),
                             sent.back().function(), sent.back().word(16), sent.back().word(20), sent.back().word(24)),
                  std::tuple(0x9A4u, size_t{20}, kDsp, kHold, kStart, kDsp, m.entry, 0u));
        EXPECT_TRUE(carries(m.image, m.text));
        if (m.form == ryn::spm::Form::CommandStream) {
            ASSERT_EQ(std::pair(sent.size(), sent[2].buffers.size()), std::pair(size_t{4}, size_t{1}));
            EXPECT_EQ(std::tuple(sent[2].function(), sent[2].buffers[0].address, sent[2].buffers[0].length),
                      std::tuple(kLoadImage, static_cast<const void *>(m.image.data()), 2 * m.image.size()));
            continue;
        }
        uint64_t words = 5;  // the header, then each record's four fields and data
        for (size_t i = 2; i + 1 < sent.size(); ++i) {
            const uint32_t units = sent[i].word(24);
            EXPECT_EQ(sent[i].function(), kBlock);
            EXPECT_LE(units, 128u);
            words += 4 + (m.form == ryn::spm::Form::Records1 ? units : (units + 1) / 2);
        }
        EXPECT_EQ(words, m.image.size());
    }
    // Rows of the module table as published.
    EXPECT_EQ(std::tuple(ryn::spm::find(2, 1)->image.size(), ryn::spm::find(2, 1)->entry,
                         ryn::spm::find(11, 5)->image.size(), ryn::spm::find(0, 4)->entry),
              std::tuple(27200u, 0x7C8Du, 28716u, 0x2A8E8u));
}

// The query comes first; then unknown modules (error 9), then modules
// without an image for the DSP type (error 17).
TEST_F(Spm, ChecksInOrder) {
    // Module, DSP type, error.
    const std::tuple<uint32_t, uint32_t, uint32_t> cases[] = {{7, 1, 9},  {9, 1, 9},   {14, 5, 9}, {0xFFFFFFFF, 1, 9},
                                                              {2, 3, 17}, {12, 1, 17}, {0, 6, 17}};
    for (auto [module, type, error] : cases) {
        driver.clear();
        driver.script(dspType(type));
        const ResultCode result = RynDspRunSpm_8(kDsp, module);
        EXPECT_EQ(std::tuple(RynResultErrorCode(result), RynResultSourceId(result), driver.requestCount()),
                  std::tuple(error, 0x6Bu, size_t{1}))  // the query alone
            << module << "/" << type;
    }
    driver.script(dspType(1, 0xE0000007));  // a failed query wins over a bad module
    EXPECT_EQ(RynDspRunSpm_8(kDsp, 7), 0xE0000007u);
    EXPECT_EQ(RynResultErrorCode(RynDspRunSpm_8(0x70000000, 0)), 11u);
}

// The undecorated entry point renumbers modules for older drivers (here
// module 2 is 1 and 1 has no counterpart); the decorated one takes them as
// given.
TEST_F(Spm, OlderDriversRunRenumberedModules) {
    ryn::setDriverVersionLevel(10138);
    // The two entry points differ in calling convention on 32-bit Windows.
    using Run = std::function<ResultCode(DeviceHandle, uint32_t)>;
    for (const auto &[run, entry] : {std::pair{Run(RynDspRunSpm), 0x7C51u}, {Run(RynDspRunSpm_8), 0x7C8Du}}) {
        driver.script(dspType(1));
        EXPECT_EQ(run(kDsp, 2), 0u);
        EXPECT_EQ(driver.lastRequest().word(20), entry);
    }
    driver.script(dspType(1));
    EXPECT_EQ(RynDspRunSpm(kDsp, 1) & 0x800000FFu, 0x80000009u);
}

}  // namespace
