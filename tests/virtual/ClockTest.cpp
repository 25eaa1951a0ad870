// The board's sample clock: its rate and steps, and what plays on it with no
// request in flight: free-running generators across the spans, idle and
// constant time slots, comfort noise, repeated HDLC blocks, and dials into
// nothing, whose time passes all the same.
#include <chrono>
#include <thread>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

class ClockTest : public VirtualBoardTest {
protected:
    static DeviceHandle slotPipe(uint32_t span, uint32_t slot) {
        DeviceHandle pipe = 0;
        EXPECT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
        EXPECT_EQ(RynDrvConnectPipe(pipe, 0, device(RYN_VB_DEVICE_T1E1, span), slot, nullptr, 0), 0u);
        return pipe;
    }
    static uint64_t boardTime() { return got<uint64_t>(RynDrvGetCurrentTime); }
};

TEST_F(ClockTest, RunsAtItsRateAndByStepsOfWholeFrames) {
    const DeviceHandle board = device(RYN_VB_DEVICE_BOARD);
    EXPECT_EQ(attribute(board, RYN_VB_ATTR_SAMPLE_CLOCK_RATE), RYN_VB_SAMPLE_CLOCK_STOPPED);
    const uint32_t frames = attribute(board, RYN_VB_ATTR_SAMPLE_CLOCK_FRAMES);
    const uint64_t before = boardTime();
    run(250);  // 25 frames
    EXPECT_EQ(attribute(board, RYN_VB_ATTR_SAMPLE_CLOCK_FRAMES), frames + 25);
    EXPECT_EQ(boardTime() - before, 25u * 100000u);  // 10 ms each, in 100-ns units
    EXPECT_EQ(
        errorOf(RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_RATE, RYN_VB_SAMPLE_CLOCK_RATE_MAX + 1)),
        9u);
    EXPECT_EQ(
        errorOf(RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_STEP, RYN_VB_SAMPLE_CLOCK_STEP_MAX + 1)),
        9u);
    uint32_t value = 0;
    EXPECT_EQ(errorOf(RynDrvGetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_STEP, &value)), 6u);
    // Running, the clock moves the board's time without any request.
    setClock(RYN_VB_SAMPLE_CLOCK_RATE_MAX);
    const uint64_t running = boardTime();
    for (int i = 0; i < 200 && boardTime() == running; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_GT(boardTime(), running);
    setClock(RYN_VB_SAMPLE_CLOCK_STOPPED);
}

// A sine-wave generator on span 0's slot 5 reaches a detector on span 1's,
// the clock running faster than real time and the test only waiting.
TEST_F(ClockTest, AFreeRunningToneCrossesTheSpansWhileTheApplicationWaits) {
    const DeviceHandle generator = block(RYN_VB_BLOCK_SINE_WAVE_GENERATOR),
                       detector = block(RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR);
    const SineToneParams tone{1004.0, -6.0, 0.0};
    const uint32_t hertz = 1004;
    ASSERT_EQ(RynToneSineWaveGeneratorInit(generator, 0, &tone, 1, 0), 0u);
    ASSERT_EQ(RynToneSingleDetectorInit(detector, 0, &hertz, 1, 0, 0, 0), 0u);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, slotPipe(0, 5), 0), 0u);
    ASSERT_EQ(RynDrvConnectLogicalDevice(slotPipe(1, 5), 0, detector, 0), 0u);
    EventListener heard(detector);
    setClock(20);
    EXPECT_EQ(heard.nextWith(RYN_VB_EVENT_TONE_DETECTED, 5000).word[4], detector);
    setClock(RYN_VB_SAMPLE_CLOCK_STOPPED);
}

// What a value sampler on span 1's slot hears from span 0's: the law's idle
// code while nothing plays into the slot, or the constant byte set on it.
TEST_F(ClockTest, SlotsWithNothingConnectedSendTheirIdleOrConstantByte) {
    struct Case {
        uint32_t law, slot;
        int constant;  // -1: none
        int16_t heard;
    };
    for (const Case &c :
         {Case{RYN_VB_LAW_A, 3, -1, 8}, Case{RYN_VB_LAW_MU, 4, 0x80, 32124}, Case{RYN_VB_LAW_A, 4, 0x2A, -32256}}) {
        const DeviceHandle controls = device(RYN_VB_DEVICE_BOARD), sampler = block(RYN_VB_BLOCK_VALUE_SAMPLER);
        ASSERT_EQ(RynBrdCodecSetLaw(controls, c.law), 0u);
        if (c.constant >= 0) {
            ASSERT_EQ(RynBrdTssConstByte(controls, 0, c.slot, uint8_t(c.constant)), 0u);
        }
        ASSERT_EQ(RynToneValSamplerInit(sampler, RYN_VB_SAMPLER_LATEST), 0u);
        const DeviceHandle pipe = slotPipe(1, c.slot);
        ASSERT_EQ(RynDrvConnectLogicalDevice(pipe, 0, sampler, 0), 0u);
        run(20);
        EXPECT_EQ(int16_t(got<uint16_t>(RynToneValSamplerReadData, sampler)), c.heard) << c.law << " " << c.slot;
        RynDrvClose(pipe);
        RynDrvClose(sampler);
    }
}

TEST_F(ClockTest, ComfortNoiseAndRepeatedBlocksGoOnWithTheClock) {
    const DeviceHandle noise = block(RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR),
                       voice = block(RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR);
    ASSERT_EQ(RynDrvConnectLogicalDevice(noise, 0, voice, 0), 0u);
    ASSERT_EQ(RynCstVoiceActivityDetectorInit(voice, 50), 0u);  // a floor 50 dB below full scale
    for (const auto &[levelDb, voiced] : {std::pair{30u, 1u}, {70u, 0u}}) {
        ASSERT_EQ(RynCstComfortNoiseGeneratorInit(noise, levelDb), 0u);
        run(500);
        EXPECT_EQ(got(RynCstVoiceActivityDetectorStatus, voice), voiced) << levelDb;
    }

    const DeviceHandle channel = device(RYN_VB_DEVICE_HDLC);
    ASSERT_EQ(RynHdlcSenderInit(channel, 0, 0, 0, 0, 0, 0), 0u);
    ASSERT_EQ(RynHdlcReceiverInit(channel, 0, 0, 0, 0, 0, 0, 0), 0u);
    ASSERT_EQ(RynHdlcStartRepeatData(channel, "rep", 3, 0, 0), 0u);
    run(100);
    EXPECT_EQ(attribute(channel, RYN_VB_ATTR_HDLC_RECEIVED), 11u);  // at the start, then once a frame
    ASSERT_EQ(RynHdlcStopRepeatData(channel), 0u);
    run(100);
    EXPECT_EQ(attribute(channel, RYN_VB_ATTR_HDLC_RECEIVED), 11u);
}

// A dial into nothing takes its time, and its samples stay whole for the
// audio-out attribute.
TEST_F(ClockTest, ADialIntoNothingEndsInTimeAndKeepsItsSamples) {
    const DeviceHandle dialler = block(RYN_VB_BLOCK_DTMF_DIALLER);
    EventListener done(dialler);
    ASSERT_EQ(RynToneDtmfDial(dialler, "5", 1, 0, 0), 0u);  // 80 ms of tone, 80 ms of pause
    run(150);
    EXPECT_EQ(done.reported(RYN_VB_EVENT_DIALLING_FINISHED, 1).size(), 0u);
    run(10);
    EXPECT_EQ(done.reported(RYN_VB_EVENT_DIALLING_FINISHED, 1).size(), 1u);
    int16_t samples[1280] = {};
    ASSERT_EQ(RynDrvGetAttributeValue(dialler, RYN_VB_ATTR_AUDIO_OUT, samples, sizeof samples, nullptr), 0u);
    const auto power = [&](size_t from, size_t to) {
        double sum = 0;
        for (size_t i = from; i < to; ++i) sum += double(samples[i]) * samples[i];
        return sum / double(to - from);
    };
    EXPECT_GT(power(0, 640), 1e5);   // the tone, from its first sample
    EXPECT_EQ(power(640, 1280), 0);  // the pause
}

// A pipe joined to the SLIC line feeds what the set hears to the board's
// caller identification detector, the line playing on the clock.
TEST_F(ClockTest, TheRingingLinesCallerIdentificationReachesADetectorThroughAPipe) {
    const DeviceHandle slic = device(RYN_VB_DEVICE_SLIC), cid = block(RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR);
    DeviceHandle pipe = 0;
    uint32_t state = 0;
    ASSERT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
    ASSERT_EQ(RynDrvConnectPipe(pipe, 0, slic, 0, nullptr, 0), 0u);
    ASSERT_EQ(RynDrvConnectLogicalDevice(pipe, 0, cid, 0), 0u);
    ASSERT_EQ(RynCstCidDetectorInit(cid, RYN_VB_FSK_BELL202, 0), 0u);
    ASSERT_EQ(RynSlicSetUserName(slic, "VIRTUAL CALLER", &state), 0u);
    ASSERT_EQ(RynSlicSetPhoneNumber(slic, "5550123456", &state), 0u);
    ASSERT_EQ(RynSlicSendCallerID(slic, &state), 0u);
    EventListener heard(cid);
    ASSERT_EQ(RynSlicStartRingState(slic, &state), 0u);
    run(2000);  // the first ring
    EXPECT_EQ(heard.drain(RYN_VB_EVENT_CALLER_ID, 1).size(), 0u);
    run(2000);  // the pause, with the message in it
    EXPECT_EQ(heard.drain(RYN_VB_EVENT_CALLER_ID, 1),
              (std::vector<std::pair<uint32_t, uint32_t>>{{RYN_VB_CID_MULTIPLE_MESSAGE, 1}}));
    EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_NUMBER), "5550123456");
    EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_NAME), "VIRTUAL CALLER");
}

// Digits cross the lines both ways through pipes joined to them: the
// exchange behind the POTS line dials the DTMF a dialler plays into its pipe
// (while the line plays dial tone into the same pipe), and a detector on the
// SLIC line's pipe hears the digits the set dials over its dial tone.
TEST_F(ClockTest, DigitsCrossTheLinesBothWays) {
    const auto joined = [](DeviceHandle line) {
        DeviceHandle pipe = 0;
        EXPECT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
        EXPECT_EQ(RynDrvConnectPipe(pipe, 0, line, 0, nullptr, 0), 0u);
        return pipe;
    };
    const DeviceHandle pots = device(RYN_VB_DEVICE_POTS), dialler = block(RYN_VB_BLOCK_DTMF_DIALLER);
    ASSERT_EQ(RynDrvConnectLogicalDevice(dialler, 0, joined(pots), 0), 0u);
    ASSERT_EQ(RynToneDtmfDial(dialler, "1", 1, 0, 0), 0u);
    run(200);
    EXPECT_EQ(text(pots, RYN_VB_ATTR_POTS_DIALLED), "");  // on hook: nobody listens
    ASSERT_EQ(RynPotsOffHook(pots), 0u);
    ASSERT_EQ(RynToneDtmfDial(dialler, "5#8", 3, 0, 0), 0u);
    run(600);
    EXPECT_EQ(text(pots, RYN_VB_ATTR_POTS_DIALLED), "5#8");

    const DeviceHandle slic = device(RYN_VB_DEVICE_SLIC), detector = block(RYN_VB_BLOCK_DTMF_DETECTOR);
    ASSERT_EQ(RynDrvConnectLogicalDevice(joined(slic), 0, detector, 0), 0u);
    EXPECT_EQ(errorOf(RynDrvSetAttributeValueSz(slic, RYN_VB_ATTR_SLIC_SET_DIGITS, "7")), 13u);  // on hook
    ASSERT_EQ(RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 1), 0u);
    ASSERT_EQ(RynSlicEnableDialTone(slic), 0u);
    EXPECT_EQ(errorOf(RynDrvSetAttributeValueSz(slic, RYN_VB_ATTR_SLIC_SET_DIGITS, "7x")), 5u);
    EventListener heard(detector);
    ASSERT_EQ(RynDrvSetAttributeValueSz(slic, RYN_VB_ATTR_SLIC_SET_DIGITS, "7*0D"), 0u);
    run(700);
    EXPECT_EQ(heard.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), "7*0D");
}
}  // namespace
}  // namespace vt
