// The DSPs on the virtual board: built-in modules, hand-built images, corrupt
// images, messages to the running program, the host port and restart.
#include <cstring>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

using Words = std::vector<uint16_t>;
using Values = std::vector<uint32_t>;

// What the board reports of a DSP's program: module, entry address, state.
Values program(DeviceHandle dsp) {
    return {attribute(dsp, RYN_VB_ATTR_DSP_MODULE), attribute(dsp, RYN_VB_ATTR_DSP_ENTRY), attribute(dsp, RYN_VB_ATTR_DSP_PROGRAM_STATE)};
}
const Values kNothing{RYN_VB_DSP_NO_MODULE, 0, RYN_VB_DSP_PROGRAM_NONE};

// One command-stream block of `words` at `address` of program memory.
Words streamBlock(uint16_t address, const Words &words) {
    Words out{4, 0x0FFF, 2, 0, 2, address, 2, static_cast<uint16_t>(words.size() - 1), 2, 0x1004};
    for (uint16_t w : words) out.insert(out.end(), {2, w});
    out.insert(out.end(), {0, 0x0808, 0xFFFF, 0xFFFF});
    return out;
}
// A record image of one record.
Words records(uint16_t version, uint16_t address, uint16_t count, const Words &data) {
    Words out{0x54AB, 0x6D2E, 0x1010, 0x1C1C, version, 0, address, 0, count};
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

ResultCode run(DeviceHandle dsp, const Words &image, uint32_t entry) {
    return RynDspRunImage(dsp, image.data(), static_cast<uint16_t>(image.size()), entry);
}

TEST_F(VirtualBoardTest, BuiltInModulesRunOnTheDspOfTheirType) {
    const Values cases[] = {{0, 2, RYN_VB_DSP_TYPE_WORD, 0x7C8D},  // DSP, module, type, entry
                            {1, 11, RYN_VB_DSP_TYPE_BYTE, 0x1751F},
                            {1, 5, RYN_VB_DSP_TYPE_BYTE, 0x188A5}};
    for (const Values &c : cases) {
        const DeviceHandle dsp = device(RYN_VB_DEVICE_DSP, c[0]);
        EventListener listener(dsp);
        EXPECT_EQ(attribute(dsp, RYN_VB_ATTR_DSP_TYPE), c[2]);
        ASSERT_EQ(RynDspRunSpm(dsp, c[1]), 0u) << "module " << c[1];
        EXPECT_EQ(program(dsp), (Values{c[1], c[3], RYN_VB_DSP_PROGRAM_RUNNING}));
        EXPECT_EQ(listener.drain(RYN_VB_EVENT_PROGRAM_STARTED), (std::vector{std::pair(c[1], c[3])}));
    }
    // The DSP type answered decides which modules exist; a refused module leaves module 5 running.
    EXPECT_EQ(errorOf(RynDspRunSpm(device(RYN_VB_DEVICE_DSP, 1), 2)) << 8 | errorOf(RynDspRunSpm(device(RYN_VB_DEVICE_DSP), 5)), 17u << 8 | 17u);
    EXPECT_EQ(attribute(device(RYN_VB_DEVICE_DSP, 1), RYN_VB_ATTR_DSP_MODULE), 5u);
    EventListener stopped(device(RYN_VB_DEVICE_DSP, 1));
    ASSERT_EQ(RynDrvReset(device(RYN_VB_DEVICE_DSP, 1)), 0u);  // the running program ends with its event
    EXPECT_EQ(stopped.drain(RYN_VB_EVENT_PROGRAM_STOPPED), (std::vector{std::pair(5u, 0x188A5u)}));
}

TEST_F(VirtualBoardTest, HandBuiltImagesLandInDspMemory) {
    const DeviceHandle dsp0 = device(RYN_VB_DEVICE_DSP, 0), dsp1 = device(RYN_VB_DEVICE_DSP, 1);
    const Words stream = streamBlock(0x200, {0x1111, 0x2222, 0x3333});
    ASSERT_EQ(run(dsp0, stream, 0x201), 0u);
    EXPECT_EQ(program(dsp0), (Values{RYN_VB_DSP_NO_MODULE, 0x201, RYN_VB_DSP_PROGRAM_RUNNING}));
    EXPECT_EQ(attribute(dsp0, RYN_VB_ATTR_DSP_UNITS_LOADED), 3u);
    uint32_t first = 0, second = 0;
    EXPECT_EQ(RynDspReadData(dsp0, 0, 0x201, 2, &first, &second), 0u);
    EXPECT_EQ(first << 16 | second, 0x22223333u);
    // The entry must lie in loaded program memory.
    EXPECT_EQ(run(dsp0, stream, 0x203) & 0xFF8000FFu, 0xB9000005u);  // board failure, error 5
    EXPECT_EQ(program(dsp0), kNothing);
    // Byte records on DSP 1: three bytes at 0x1000.
    ASSERT_EQ(run(dsp1, records(2, 0x1000, 3, {0x2211, 0x0033}), 0x1002), 0u);
    EXPECT_EQ(RynDspReadData(dsp1, 0, 0x1001, 2, &first, &second), 0u);
    EXPECT_EQ(first << 16 | second, 0x00220033u);
    EXPECT_EQ(attribute(dsp1, RYN_VB_ATTR_DSP_UNITS_LOADED), 3u);
}

TEST_F(VirtualBoardTest, CorruptImagesAreRefusedAndNothingRuns) {
    const DeviceHandle dsp0 = device(RYN_VB_DEVICE_DSP, 0), dsp1 = device(RYN_VB_DEVICE_DSP, 1);
    const Words good = streamBlock(0x300, {1, 2});
    // Word index and value: opening, page, count, data tag, closing pairs.
    const Words breaks[] = {{0, 5}, {3, 2}, {7, 128}, {10, 3}, {15, 0x0809}, {17, 0}};
    for (const Words &b : breaks) {
        ASSERT_EQ(RynDspRunSpm(dsp0, 0), 0u);
        Words image = good;
        image[b[0]] = b[1];
        const ResultCode code = run(dsp0, image, 0x300);
        EXPECT_EQ(sourceOf(code) << 8 | errorOf(code), RYN_VB_SOURCE_ID << 8 | 5) << "word " << b[0];
        EXPECT_EQ(program(dsp0), kNothing);
    }
    // DSP 1: a record past the image's end (refused before shipping), a
    // command stream and word records (not its form).
    ASSERT_EQ(RynDspRunSpm(dsp1, 4), 0u);
    EXPECT_EQ(errorOf(run(dsp1, records(2, 0x1000, 5, {0x2211, 0x4433}), 0x1000)), 12u);
    EXPECT_EQ(program(dsp1), kNothing);
    EXPECT_EQ(errorOf(run(dsp1, good, 0x300)), 5u);
    EXPECT_EQ(errorOf(run(dsp1, records(1, 0x1000, 1, {0x2211}), 0x1000)), 5u);
}

TEST_F(VirtualBoardTest, RunningProgramAnswersMessagesHostPortAndRestart) {
    const DeviceHandle dsp = device(RYN_VB_DEVICE_DSP, 0);
    char out[8];
    uint32_t length = 0;
    const ResultCode idle = RynDspIoControl(dsp, 0, "hi", 2, out, 8, &length, 0, 0);  // nothing runs
    EXPECT_EQ(errorOf(idle) << 8 | errorOf(RynDspRestartProgram(dsp)), 13u << 8 | 13u);
    ASSERT_EQ(RynDspRunSpm(dsp, 3), 0u);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(RynDspIoControl(dsp, RYN_VB_DSP_MESSAGE_ECHO, "0123456789", 10, out, 4, &length, 0, 0), 0u);
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(std::memcmp(out, "0123xxxx", 8), 0);
    uint32_t answer[2] = {};
    EXPECT_EQ(RynDspIoControl(dsp, RYN_VB_DSP_MESSAGE_PROGRAM, nullptr, 0, answer, sizeof answer, nullptr, 0, 0), 0u);
    EXPECT_EQ((Values{answer[0], answer[1]}), (Values{3, 0x7AE2}));
    EXPECT_EQ(errorOf(RynDspIoControl(dsp, 7, nullptr, 0, out, 8, &length, 0, 0)), 6u);

    // The host port writes DSP memory and reads it into its register window.
    EXPECT_EQ(RynDspWriteHpi(dsp, 1, 0x500, 0xABCD), 0u);
    EXPECT_EQ(RynDspReadHpi(dsp, 1, 0x4FF, 2), 0u);
    EXPECT_EQ(got(RynDrvReadReg16, dsp, 0x1002), 0xABCDu);
    EXPECT_EQ(errorOf(RynDspWriteHpi(dsp, 1, 0x500, 0x10000)), 9u);
    // Disabling halts the program; restart runs it again.
    RynDrvDisable(dsp, 0, 0);
    EXPECT_EQ(attribute(dsp, RYN_VB_ATTR_DSP_PROGRAM_STATE), RYN_VB_DSP_PROGRAM_HALTED);
    EXPECT_EQ(RynDspRestartProgram(dsp), 0u);
    EXPECT_EQ(program(dsp), (Values{3, 0x7AE2, RYN_VB_DSP_PROGRAM_RUNNING}));
}

}  // namespace
}  // namespace vt
