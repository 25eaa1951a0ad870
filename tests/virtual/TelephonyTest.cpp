// Telephony blocks, the data converter and the DSP's POTS block on the
// virtual board: set-ups and their refusals, tones played from generators
// into detectors, and the POTS block's hook states.
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

using Values = std::vector<std::pair<uint32_t, uint32_t>>;

TEST_F(VirtualBoardTest, BlocksRefuseWhatIsNotTheirsOrNotYetPossible) {
    uint32_t status = 0;
    const struct {
        int32_t type;
        std::function<ResultCode(DeviceHandle)> call;
        uint32_t error;
    } cases[] = {
        {RYN_VB_BLOCK_CST_DTMF_DIALLER, [&](DeviceHandle b) { return RynCstCptDetectorStatus(b, &status); }, 6},
        {RYN_VB_BLOCK_CST_CPT_DETECTOR, [](DeviceHandle b) { return RynCstPotsOffHook(b, 0, 0); }, 6},
        {RYN_VB_BLOCK_DSP_POTS, [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 0); }, 6},
        {RYN_VB_BLOCK_DATA_CONVERTER, [](DeviceHandle b) { return RynCstEchoCancelInit(b, 0, 0); }, 6},
        {RYN_VB_BLOCK_CST_DTMF_DIALLER, [](DeviceHandle b) { return RynCstDtmfDial(b, "1", 1, 0, 0); }, 13},
        {RYN_VB_BLOCK_CST_CPT_GENERATOR, [](DeviceHandle b) { return RynCstCptGenerateTone(b, RYN_VB_CPT_BUSY); }, 13},
        {RYN_VB_BLOCK_DSP_POTS, [](DeviceHandle b) { return RynCstPotsOffHook(b, 0, 0); }, 13},
        {RYN_VB_BLOCK_CST_DTMF_DIALLER, [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 5); }, 9},
        // Set up first, then the refused request.
        {RYN_VB_BLOCK_CST_DTMF_DIALLER,
         [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 0), RynCstDtmfDial(b, "12X", 3, 0, 0); }, 9},
        {RYN_VB_BLOCK_CST_CPT_GENERATOR,
         [](DeviceHandle b) { return RynCstCptGeneratorInit(b, 0, 0), RynCstCptGenerateTone(b, 5); }, 9},
        {RYN_VB_BLOCK_CST_CPT_DETECTOR, [](DeviceHandle b) { return RynCstCptDetectorInit(b, 0, 51, 0); }, 9},
        {RYN_VB_BLOCK_CST_ECHO_CANCELLER, [](DeviceHandle b) { return RynCstEchoCancelInit(b, 129, 0); }, 9},
        {RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR, [](DeviceHandle b) { return RynCstCidDetectorInit(b, 2, 0); }, 9},
        {RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR,
         [](DeviceHandle b) { return RynCstComfortNoiseGeneratorInit(b, 91); }, 9},
        {RYN_VB_BLOCK_DATA_CONVERTER, [](DeviceHandle b) { return RynDataConverterInit(b, 3, 0); }, 9},
        {RYN_VB_BLOCK_CST_VOICE_MIXER,
         [](DeviceHandle b) { return RynCstVoiceMixerInitEX(b, nullptr, 0, nullptr, 0, -1); }, 9},
        {RYN_VB_BLOCK_DSP_POTS, [](DeviceHandle b) { return RynCstPotsInit(b, 0, 0), RynCstPotsHookFlash(b, 0, 0, 0); },
         13},
    };
    for (const auto &c : cases) {
        const DeviceHandle b = block(c.type);
        const ResultCode code = c.call(b);
        EXPECT_TRUE(failed(code) && sourceOf(code) == RYN_VB_SOURCE_ID && errorOf(code) == c.error)
            << "block " << c.type << " case " << (&c - cases) << ": " << std::hex << code;
        RynDrvClose(b);
    }
}

TEST_F(VirtualBoardTest, ExtendedSetUpsAreCheckedAndKept) {
    const DeviceHandle voice = block(RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR),
                       mixer = block(RYN_VB_BLOCK_CST_VOICE_MIXER), converter = block(RYN_VB_BLOCK_DATA_CONVERTER);
    int16_t words[13] = {13, 30, 100, 20};
    EXPECT_EQ(RynCstVoiceActivityDetectorInitEx(voice, words, 0), 0u);
    EXPECT_EQ(attribute(voice, RYN_VB_ATTR_CST_SET_UP), RYN_VB_CST_EXTENDED);
    words[2] = -1;
    EXPECT_EQ(errorOf(RynCstVoiceActivityDetectorInitEx(voice, words, 0)), 9u);

    const uint32_t inputs[] = {block(RYN_VB_BLOCK_CST_CPT_GENERATOR), block(RYN_VB_BLOCK_CST_DTMF_DIALLER)},
                   unknown[] = {0x2FFFFFFF};
    const uint16_t gains[] = {256, 128};
    EXPECT_EQ(RynCstVoiceMixerInitEX(mixer, inputs, 0, gains, 0, 2), 0u);
    EXPECT_EQ(attribute(mixer, RYN_VB_ATTR_CST_SET_UP), RYN_VB_CST_EXTENDED);
    EXPECT_EQ(errorOf(RynCstVoiceMixerInitEX(mixer, unknown, 0, gains, 0, 1)), 11u);
    EXPECT_EQ(errorOf(RynCstVoiceMixerInitEX(mixer, &mixer, 0, gains, 0, 1)), 11u);  // not itself

    EXPECT_EQ(RynDataConverterInit(converter, RYN_VB_CONVERT_A_LAW, 0), 0u);
    EXPECT_EQ(attribute(converter, RYN_VB_ATTR_CONVERTER_CONVERSION) * 10000 +
                  attribute(converter, RYN_VB_ATTR_CONVERTER_BLOCK),
              RYN_VB_CONVERT_A_LAW * 10000 + 160);
}

// The extended call-progress set-up as the library sends it (one tone, a
// 1000 Hz value, no segment), changed by `edit`, straight to the board.
ResultCode sendCptTable(DeviceHandle detector, const std::function<void(std::vector<uint8_t> &)> &edit) {
    std::vector<uint8_t> request(702);
    const auto put16 = [&](size_t offset, uint16_t value) { std::memcpy(&request[offset], &value, 2); };
    std::memcpy(&request[16], &detector, 4);
    put16(28, 335), put16(36, 1000), put16(124, 1), put16(694, 1);
    edit(request);
    OsaHandle connection = 0;
    RynDrvGetHandle(&connection);
    uint8_t reply[12] = {};
    uint32_t returned = 0, code = 0;
    OsaDeviceIoControl(connection, 0x220000u | (0x9B2u << 2), request.data(), 702, reply, 12, &returned);
    std::memcpy(&code, reply + 8, 4);
    return code;
}

TEST_F(VirtualBoardTest, CallProgressTablesAreCheckedAgainstTheirSlots) {
    const DeviceHandle detector = block(RYN_VB_BLOCK_CST_CPT_DETECTOR);
    const auto word = [](size_t offset, uint16_t value) {
        return [=](std::vector<uint8_t> &r) { std::memcpy(&r[offset], &value, 2); };
    };
    const auto segment = [](uint16_t steps, uint16_t start, uint16_t words) {  // one value: 4 words a step
        return [=](std::vector<uint8_t> &r) {
            const uint16_t fields[] = {7, steps, start, words, 1};
            std::memcpy(&r[128], fields, 8), std::memcpy(&r[126], &fields[4], 2);
        };
    };
    const struct {
        std::function<void(std::vector<uint8_t> &)> edit;
        uint32_t result;  // error number, 0 for success
    } cases[] = {
        {[](auto &) {}, 0},       {word(124, 33), 9},       {word(124, 0), 9},     {word(126, 17), 9},
        {word(694, 0), 9},        {word(694, 2), 9},        {word(28, 334), 5},    {word(36, 4000), 9},
        {segment(52, 2, 208), 0}, {segment(52, 3, 208), 9}, {segment(2, 0, 9), 5}, {word(694, 0xFFFF), 0},
    };
    for (const auto &c : cases) EXPECT_EQ(errorOf(sendCptTable(detector, c.edit)), c.result) << "case " << (&c - cases);
}

TEST_F(VirtualBoardTest, CallProgressTonesAreRecognisedInOrder) {
    const DeviceHandle generator = block(RYN_VB_BLOCK_CST_CPT_GENERATOR),
                       detector = block(RYN_VB_BLOCK_CST_CPT_DETECTOR),
                       voice = block(RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, detector, 0), 0u);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, voice, 0), 0u);
    EventListener tones(detector), voices(voice);
    ASSERT_EQ(RynCstCptGeneratorInit(generator, 0, 0), 0u);
    ASSERT_EQ(RynCstCptDetectorInit(detector, 0, 0, 0), 0u);
    const int16_t hangover300[13] = {13, 0, 300};  // longer than the reorder tone's pauses, shorter than busy's
    ASSERT_EQ(RynCstVoiceActivityDetectorInitEx(voice, hangover300, 0), 0u);

    // Each tone plays two cadence cycles (a steady one a second), one after the other.
    for (const auto &[tone, ms] : {std::pair{RYN_VB_CPT_BUSY, 2000u},
                                   {RYN_VB_CPT_DIAL, 1000u},
                                   {RYN_VB_CPT_RINGBACK, 12000u},
                                   {RYN_VB_CPT_REORDER, 1000u}}) {
        ASSERT_EQ(RynCstCptGenerateTone(generator, tone), 0u);
        run(ms);
        EXPECT_EQ(got(RynCstCptDetectorStatus, detector), tone);
    }
    EXPECT_EQ(tones.drain(RYN_VB_EVENT_CALL_PROGRESS),
              (Values{{RYN_VB_CPT_BUSY, 0}, {RYN_VB_CPT_DIAL, 0}, {RYN_VB_CPT_RINGBACK, 0}, {RYN_VB_CPT_REORDER, 0}}));
    EXPECT_EQ(voices.drain(RYN_VB_EVENT_SILENCE).size(), 4u);  // after the bursts of busy and ringback
    EXPECT_EQ(got(RynCstVoiceActivityDetectorStatus, voice), 1u);

    // Nine seconds of silence: the tone has ended.
    ASSERT_EQ(RynCstCptGeneratorInit(generator, 0, 9000), 0u);
    ASSERT_EQ(RynCstCptGenerateTone(generator, 0), 0u);
    run(9000);
    EXPECT_EQ(tones.drain(RYN_VB_EVENT_TONE_ENDED), (Values{{RYN_VB_CPT_REORDER, 0}}));
    EXPECT_EQ(voices.drain(RYN_VB_EVENT_SILENCE).size(), 1u);
    EXPECT_EQ(got(RynCstCptDetectorStatus, detector), 0u);
}

TEST_F(VirtualBoardTest, ToneTablesOfTheApplicationReplaceTheBuiltInTones) {
    const DeviceHandle generator = block(RYN_VB_BLOCK_CST_CPT_GENERATOR),
                       detector = block(RYN_VB_BLOCK_CST_CPT_DETECTOR);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, detector, 0), 0u);
    EventListener tones(detector);
    // Values 440, 350 and 480 Hz; tone 9: the first two, not the third, for 300 ms at least.
    const uint16_t values[] = {440, 350, 480}, steps[] = {300, 0, 0, 0x0011};
    const CptSegment segment{9, 1, steps};
    CptToneTable table{values, 0, 0, {}, &segment, nullptr};
    table.tableWords[11] = 3, table.tableWords[12] = 1;
    const CptDetectorConfig config{0, 0, 0, &table, 1, 0};
    ASSERT_EQ(RynCstCptDetectorInitEx(detector, 0, 0, &config, 0), 0u);
    ASSERT_EQ(RynCstCptGeneratorInit(generator, 0, 0), 0u);
    for (uint32_t tone : {RYN_VB_CPT_BUSY, RYN_VB_CPT_RINGBACK, RYN_VB_CPT_DIAL})
        ASSERT_EQ(RynCstCptGenerateTone(generator, tone), 0u);
    run(20000);
    EXPECT_EQ(tones.drain(RYN_VB_EVENT_CALL_PROGRESS), (Values{{9, 0}}));
}

TEST_F(VirtualBoardTest, DialledDigitsReachTheDtmfDetector) {
    const DeviceHandle dialler = block(RYN_VB_BLOCK_CST_DTMF_DIALLER), echo = block(RYN_VB_BLOCK_CST_ECHO_CANCELLER),
                       detector = block(RYN_VB_BLOCK_CST_DTMF_DETECTOR);
    const DeviceHandle mixer = block(RYN_VB_BLOCK_CST_VOICE_MIXER);
    DeviceHandle pipes[2] = {};
    for (DeviceHandle &pipe : pipes) ASSERT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
    // Through a canceller, which also feeds a loop back to itself through a
    // mixer, and a loop of pipes that reaches the detector a second way:
    // every digit is still heard once.
    const std::pair<DeviceHandle, DeviceHandle> links[] = {
        {dialler, echo},  {echo, detector},     {echo, mixer},        {mixer, echo},
        {echo, pipes[0]}, {pipes[0], pipes[1]}, {pipes[1], pipes[0]}, {pipes[1], detector}};
    for (const auto &[from, to] : links) ASSERT_EQ(RynDrvConnectLogicalDevice(from, 0, to, 0), 0u);
    ASSERT_EQ(RynCstVoiceMixerInit(mixer, 0, 0), 0u);
    EventListener digits(detector), dialled(dialler);
    ASSERT_EQ(RynCstDtmfDialerInit(dialler, 0), 0u);
    ASSERT_EQ(RynCstEchoCancelInit(echo, 0, 0), 0u);
    ASSERT_EQ(RynCstDtmfDetectorInit(detector, 0, 0), 0u);
    ASSERT_EQ(RynCstDtmfDial(dialler, "1559#*0d", 8, 0, 0), 0u);
    run(1500);
    Values expected;
    for (char key : std::string("1559#*0D")) expected.emplace_back(static_cast<uint8_t>(key), 0);
    EXPECT_EQ(digits.drain(RYN_VB_EVENT_DTMF_DIGIT), expected);
    EXPECT_EQ(dialled.drain(RYN_VB_EVENT_DIALLING_FINISHED), (Values{{8, 0}}));
    EXPECT_EQ(got<uint8_t>(RynCstDtmfDetectorStatus, detector), 'D');
    // Digits too short for the detector's shortest digit go unnoticed.
    ASSERT_EQ(RynCstDtmfDetectorInit(detector, 100, 0), 0u);
    ASSERT_EQ(RynCstDtmfDial(dialler, "7", 1, 60, 0), 0u);
    run(200);
    EXPECT_TRUE(digits.drain(RYN_VB_EVENT_DTMF_DIGIT).empty());
}

TEST_F(VirtualBoardTest, MixerPassesOnItsInputsAtTheirGains) {
    const DeviceHandle listed = block(RYN_VB_BLOCK_CST_DTMF_DIALLER), muted = block(RYN_VB_BLOCK_CST_DTMF_DIALLER),
                       other = block(RYN_VB_BLOCK_CST_DTMF_DIALLER);
    const DeviceHandle mixer = block(RYN_VB_BLOCK_CST_VOICE_MIXER), detector = block(RYN_VB_BLOCK_CST_DTMF_DETECTOR);
    for (DeviceHandle dialler : {listed, muted, other}) {
        ASSERT_EQ(RynCstDtmfDialerInit(dialler, 0), 0u);
        ASSERT_EQ(RynDrvConnectLogicalDevice(dialler, 0, mixer, 0), 0u);
    }
    ASSERT_EQ(RynDrvConnectLogicalDevice(mixer, 0, detector, 0), 0u);
    ASSERT_EQ(RynCstDtmfDetectorInit(detector, 0, 0), 0u);
    const uint32_t inputs[] = {listed, muted};
    const uint16_t gains[] = {512, 0};
    ASSERT_EQ(RynCstVoiceMixerInitEX(mixer, inputs, 0, gains, 0, 2), 0u);
    EventListener digits(detector);
    for (const auto &[dialler, key] : {std::pair(listed, "1"), {muted, "2"}, {other, "3"}})
        ASSERT_EQ(RynCstDtmfDial(dialler, key, 1, 0, 0), 0u);
    run(300);  // the three play at once, and the mixer sums them at their gains
    EXPECT_EQ(digits.drain(RYN_VB_EVENT_DTMF_DIGIT), (Values{{'1', 0}}));  // muted and unlisted inputs are not heard
}

TEST_F(VirtualBoardTest, DspPotsBlockKeepsItsHookAndDaa) {
    const DeviceHandle line = block(RYN_VB_BLOCK_DSP_POTS);
    EventListener hooks(line);
    ASSERT_EQ(RynCstPotsInit(line, 0, 2), 0u);  // the library writes DAA registers 16 and 17
    uint8_t daa[64] = {};
    EXPECT_EQ(RynDrvGetAttributeValue(line, RYN_VB_ATTR_DSP_POTS_DAA, daa, sizeof daa, nullptr), 0u);
    EXPECT_EQ(daa[16] * 256 + daa[17], 0x0C10);
    EXPECT_EQ(got(RynCstPotsWriteDaa, line, 2, 500, 17, 0x10), RYN_VB_DAA_UNCHANGED);
    EXPECT_EQ(got(RynCstPotsWriteDaa, line, 2, 500, 0x40, 1), RYN_VB_DAA_NO_REGISTER);

    EXPECT_EQ(RynCstPotsOffHook(line, 0, 0) | RynCstPotsOffHook(line, 0, 0), 0u);  // the second: no change, no event
    EXPECT_EQ(RynCstPotsHookFlash(line, 0, 0, 0), 0u);
    EXPECT_EQ(RynCstPotsPulseDial(line, 0, 0, 0), 0u);
    EXPECT_EQ(attribute(line, RYN_VB_ATTR_DSP_POTS_HOOK), RYN_VB_HOOK_OFF);
    EXPECT_EQ(RynCstPotsOnHookLineMon(line, 0, 0), 0u);
    EXPECT_EQ(attribute(line, RYN_VB_ATTR_DSP_POTS_MONITOR), 1u);
    EXPECT_EQ(RynCstPotsSenseLine(line, 0, 0), 0u);
    EXPECT_EQ(hooks.drain(RYN_VB_EVENT_HOOK_CHANGED), (Values{{RYN_VB_HOOK_OFF, RYN_VB_HOOK_CAUSE_REQUEST},
                                                              {RYN_VB_HOOK_OFF, RYN_VB_HOOK_CAUSE_FLASH},
                                                              {RYN_VB_HOOK_ON, RYN_VB_HOOK_CAUSE_LINE_MONITOR},
                                                              {RYN_VB_HOOK_ON, RYN_VB_HOOK_CAUSE_SENSE}}));
    EXPECT_EQ(errorOf(RynCstPotsPulseDial(line, 3, 0, 0)), 13u);  // on hook
}

}  // namespace
}  // namespace vt
