// The line interfaces of the virtual board: two T1/E1 spans joined by a
// cable, the POTS and SLIC lines and their audio, the board controls and the
// JTAG chain.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "support/Goertzel.h"
#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

uint32_t layer1(DeviceHandle span) { return got(RynT1E1GetLayer1Status, span); }

using Samples = std::vector<int16_t>;

// The next `ms` of a line's audio, appended to `samples`, a second at a time.
Samples listen(DeviceHandle line, uint32_t ms, Samples samples = {}) {
    for (uint32_t done = 0; done < ms; done += 1000) {
        const size_t at = samples.size(), count = 8 * std::min(1000u, ms - done);
        samples.resize(at + count);
        uint32_t got = 0;
        EXPECT_EQ(RynDrvGetAttributeValue(line, RYN_VB_ATTR_AUDIO_OUT, &samples[at], uint32_t(count * 2), &got), 0u);
        EXPECT_EQ(got, count * 2);
    }
    return samples;
}

// For each `ms` of the samples, '#' when they sound (a peak above 1000), '.' when not.
std::string pattern(const Samples &samples, uint32_t ms) {
    std::string found;
    for (size_t at = 0; at + 8 * ms <= samples.size(); at += 8 * ms)
        found += *std::max_element(samples.begin() + at, samples.begin() + at + 8 * ms) > 1000 ? '#' : '.';
    return found;
}

using ryn::test::power;

TEST_F(VirtualBoardTest, SpanSettingsAreKeptPerSpan) {
    const DeviceHandle span0 = device(RYN_VB_DEVICE_T1E1, 0), span1 = device(RYN_VB_DEVICE_T1E1, 1);
    T1Configuration t1{};
    E1Configuration e1{};
    for (uint8_t i = 0; i < sizeof t1.bytes; ++i) t1.bytes[i] = uint8_t(i * 7 + 1);
    e1.bytes[55] = 0x5E;
    EXPECT_EQ(RynT1SetConfiguration(span0, &t1) | RynE1SetConfiguration(span1, &e1), 0u);
    EXPECT_TRUE(std::ranges::equal(got<T1Configuration>(RynT1GetConfiguration, span0).bytes, t1.bytes));
    EXPECT_EQ(got<T1Configuration>(RynT1GetConfiguration, span1).bytes[0], 0u);
    EXPECT_EQ(got<E1Configuration>(RynE1GetConfiguration, span1).bytes[55], 0x5E);
    EXPECT_EQ(RynT1E1SetLineTermination(span0, RYN_VB_T1E1_TERMINATION_75_OHM) | RynT1E1SetMonitorMode(span0, 1), 0u);
    const Layer1StatusEx ex = got<Layer1StatusEx>(RynT1E1GetLayer1StatusEx, span0);
    EXPECT_EQ(ex.bytes[18] * 10 + ex.bytes[19], 21);
    uint8_t bits = 0;
    EXPECT_EQ(errorOf(RynT1E1SetLiMode(span0, 2)), 9u);
    EXPECT_EQ(errorOf(RynT1SetChannelizedRobBitData(span0, 25, 1)), 9u);   // T1 has channels 1..24
    EXPECT_EQ(errorOf(RynE1GetChannelizedABCDBit(span0, 1, &bits)), 13u);  // not an E1 span
}

TEST_F(VirtualBoardTest, SignallingCrossesTheCableAndLoopsBack) {
    const DeviceHandle span0 = device(RYN_VB_DEVICE_T1E1, 0), span1 = device(RYN_VB_DEVICE_T1E1, 1);
    EventListener listener(span1);
    EXPECT_EQ(RynT1SetChannelizedRobBitData(span0, 5, 0xA), 0u);
    const EventData record = listener.nextWith(RYN_VB_EVENT_SIGNALLING_CHANGED);
    EXPECT_EQ(record.word[5] * 0x100 + record.word[6] * 0x10 + record.word[7], 0x5A0u);
    EXPECT_EQ(got<RobBitData>(RynT1GetRobBitData, span1).bytes[2], 0xA0);  // slot 5: the high nibble of byte 2
    EXPECT_EQ(got<uint8_t>(RynT1GetChannelizedRobBitData, span0, 5), 0u);  // span 0 hears span 1
    EXPECT_EQ(RynT1E1SetLineLoop(span0, RYN_VB_T1E1_LOOP_LOCAL), 0u);
    EXPECT_EQ(got<uint8_t>(RynT1GetChannelizedRobBitData, span0, 5), 0xAu);

    // E1: both spans in E1 mode; slot 16 carries no channel; Sa bits travel too.
    EXPECT_EQ(RynT1E1SetLineLoop(span0, RYN_VB_T1E1_LOOP_NONE) | RynT1E1SetLiMode(span0, RYN_VB_T1E1_MODE_E1) |
                  RynT1E1SetLiMode(span1, RYN_VB_T1E1_MODE_E1), 0u);
    EXPECT_EQ(errorOf(RynE1SetChannelizedABCDBit(span1, 16, 1)), 9u);
    EXPECT_EQ(RynE1SetChannelizedABCDBit(span1, 31, 0x3) | RynE1SetSaBit(span1, 4, 0x5A), 0u);
    EXPECT_EQ(got<uint8_t>(RynE1GetChannelizedABCDBit, span0, 31), 0x3u);
    EXPECT_EQ(got<uint8_t>(RynE1GetSaBit, span0, 4), 0x5Au);
}

TEST_F(VirtualBoardTest, Layer1StatusFollowsLoopsAlarmsAndTransmitters) {
    const DeviceHandle span[2] = {device(RYN_VB_DEVICE_T1E1, 0), device(RYN_VB_DEVICE_T1E1, 1)};
    EventListener listener(span[1]);
    // Status words of RYN_VB_T1E1_STATUS_... bits: 0x01 sync, 0x02 loss of signal, 0x04 AIS, 0x08 RAI, 0x10 loop.
    const struct {
        ResultCode (*call)(DeviceHandle, uint32_t);
        int side;
        uint32_t value, status0, status1;
    } steps[] = {
        {RynT1E1AlarmOn, 0, 1, 0x09, 0x04},         // span 1 sees AIS, loses sync and answers with RAI
        {RynT1E1SetLineLoop, 1, 1, 0x01, 0x11},     // span 1 hears itself
        {RynT1E1AlarmOff, 0, 1, 0x01, 0x11},        // looped span 1 does not see the AIS end
        {RynT1E1XmitPinControl, 1, 0, 0x02, 0x11},  // span 1's transmitter off
        {RynT1E1SetLineLoop, 1, 0, 0x02, 0x09},     // span 0 without signal sends RAI
        {RynT1E1XmitPinControl, 1, 1, 0x01, 0x01},  // all well again
        {RynT1E1SetLiMode, 0, 1, 0x00, 0x00},       // E1 against T1: no frame alignment
    };
    EXPECT_EQ(layer1(span[0]) * 0x100 + layer1(span[1]), 0x0101u);
    for (const auto &step : steps) {
        EXPECT_EQ(step.call(span[step.side], step.value), 0u);
        EXPECT_EQ(layer1(span[0]) * 0x100 + layer1(span[1]), step.status0 * 0x100 + step.status1);
    }
    const EventData alarm = listener.nextWith(RYN_VB_EVENT_ALARM_CHANGED);
    EXPECT_EQ(alarm.word[5] * 0x100 + alarm.word[6], 0x0401u);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_LAYER1_CHANGED).word[5], 0x11u);
    ASSERT_EQ(RynDrvReset(span[0]), 0u);  // back to T1: span 1 is in sync again and told at once
    const auto changes = listener.drain(RYN_VB_EVENT_LAYER1_CHANGED);
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.back(), std::pair(0x01u, 0x00u));
}

TEST_F(VirtualBoardTest, PotsLineHookRingingAndDialling) {
    const DeviceHandle pots = device(RYN_VB_DEVICE_POTS);
    EventListener listener(pots);
    const auto dial = [pots](const std::string &digits) {
        const auto *bytes = reinterpret_cast<const uint8_t *>(digits.data());
        return RynPotsPulseDial(pots, 0, 0, 0, bytes, static_cast<uint32_t>(digits.size()), 0, 0);
    };
    EXPECT_EQ(errorOf(dial("1")), 13u);
    EXPECT_EQ(RynDrvSetAttributeValueBool(pots, RYN_VB_ATTR_POTS_RINGING, 1), 0u);  // the exchange rings
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_RINGING_STARTED).word[5], 0u);
    EXPECT_EQ(RynPotsOffHook(pots), 0u);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_HOOK_CHANGED).word[5], RYN_VB_HOOK_OFF);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_RINGING_STOPPED).word[5], RYN_VB_RING_STOP_ANSWERED);
    EXPECT_EQ(errorOf(RynDrvSetAttributeValueBool(pots, RYN_VB_ATTR_POTS_RINGING, 1)), 13u);
    EXPECT_EQ((std::tuple{dial("0123"), errorOf(dial("9#"))}), std::tuple(0u, 5u));
    EXPECT_EQ(text(pots, RYN_VB_ATTR_POTS_DIALLED), "0123");
    EXPECT_EQ(RynPotsOnHook(pots), 0u);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_HOOK_CHANGED).word[5], RYN_VB_HOOK_ON);
    EXPECT_EQ(errorOf(RynPotsSetLiMode(pots, 3)), 9u);
    EXPECT_EQ(RynPotsSetLiMode(pots, RYN_VB_POTS_IMPEDANCE_COMPLEX), 0u);
    EXPECT_EQ(got(RynPotsGetLiMode, pots), RYN_VB_POTS_IMPEDANCE_COMPLEX);
}

TEST_F(VirtualBoardTest, SlicRingsUntilTheSimulatedHandsetIsLifted) {
    const DeviceHandle slic = device(RYN_VB_DEVICE_SLIC);
    EventListener listener(slic);
    uint32_t state = 0;
    EXPECT_EQ(got(RynSlicStartRingState, slic), RYN_VB_SLIC_STATE_RINGING);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_RINGING_STARTED).word[3], RYN_VB_EVENT_RINGING_STARTED);
    EXPECT_EQ(RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 1), 0u);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_HOOK_CHANGED).word[3], RYN_VB_EVENT_HOOK_CHANGED);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_RINGING_STOPPED).word[5], RYN_VB_RING_STOP_ANSWERED);
    EXPECT_EQ(got(RynSlicGetHookState, slic), RYN_VB_HOOK_OFF);
    EXPECT_EQ(errorOf(RynSlicStartRingState(slic, &state)), 13u);
    EXPECT_EQ(RynSlicEnableBusyTone(slic), 0u);
    EXPECT_EQ(attribute(slic, RYN_VB_ATTR_SLIC_TONE), RYN_VB_SLIC_TONE_BUSY);
    EXPECT_EQ(errorOf(RynSlicSetPhoneNumber(slic, "555123456x", &state)), 5u);
    EXPECT_EQ(RynSlicSetUserName(slic, "Ann", &state) | RynSlicSetPhoneNumber(slic, "5551234567", &state), 0u);
    EXPECT_EQ(RynSlicSendCallerID(slic, &state), 0u);
    EXPECT_EQ(text(slic, RYN_VB_ATTR_SLIC_CALLER_ID).substr(8), " 5551234567 Ann");  // after the stamp
}

// What the lines play: the SLIC line's tones to its set, the POTS line's
// far end to the board. Each step is followed by 7 s of the line's audio:
// its first 200 ms must hold the two frequencies (of the four the tones are
// made of) and its 50 ms windows must sound as the cadence says.
TEST_F(VirtualBoardTest, LinesPlayTheExchangeTonesInTheirCadences) {
    const DeviceHandle slic = device(RYN_VB_DEVICE_SLIC), pots = device(RYN_VB_DEVICE_POTS);
    const auto dial = [pots] {
        return RynPotsPulseDial(pots, 0, 0, 0, reinterpret_cast<const uint8_t *>("42"), 2, 0, 0);
    };
    const struct {
        const char *what;
        DeviceHandle line;
        std::function<ResultCode()> step;
        double low, high;  // 0: silence
        uint32_t onMs, offMs;
    } steps[] = {
        {"SLIC dial tone", slic, [slic] { return RynSlicEnableDialTone(slic); }, 350, 440, 7000, 0},
        {"SLIC busy", slic, [slic] { return RynSlicEnableBusyTone(slic); }, 480, 620, 500, 500},
        {"SLIC reorder", slic, [slic] { return RynSlicEnableReorderTone(slic); }, 480, 620, 250, 250},
        {"SLIC congestion", slic, [slic] { return RynSlicEnableCongestionTone(slic); }, 480, 620, 200, 300},
        {"SLIC ring-back", slic, [slic] { return RynSlicEnableRingBackTone(slic); }, 440, 480, 2000, 4000},
        {"SLIC in reset", slic, [slic] { return RynSlicSetResetPin(slic, 1); }, 0, 0, 0, 0},
        {"POTS off hook", pots, [pots] { return RynPotsOffHook(pots); }, 350, 440, 7000, 0},
        {"POTS dialled", pots, dial, 440, 480, 2000, 4000},
        {"POTS flash", pots, [pots] { return RynPotsHookFlash(pots, 500, 0, 0); }, 350, 440, 7000, 0},
        {"POTS back on hook", pots, [pots] { return RynPotsOnHook(pots); }, 0, 0, 0, 0},
    };
    for (const auto &step : steps) {
        ASSERT_EQ(step.step(), 0u) << step.what;
        const Samples heard = listen(step.line, 7000);
        std::string expected;
        for (uint32_t ms = 0; ms < 7000; ms += 50)
            expected += step.low != 0 && ms % (step.onMs + step.offMs) < step.onMs ? '#' : '.';
        EXPECT_EQ(pattern(heard, 50), expected) << step.what;
        // The tone's two frequencies near -13 dBm0 (peak 5100), the others of the four not there.
        for (double hertz : {350.0, 440.0, 480.0, 620.0}) {
            const double share = step.low == 0 ? 0 : power(heard, 0, 1600, hertz) / std::pow(1600 * 5100 / 2.0, 2);
            EXPECT_NEAR(share, hertz == step.low || hertz == step.high ? 1 : 0, 0.1) << step.what << " " << hertz;
        }
    }
}

// The SLIC line sends a caller identification once, 500 ms into a pause of
// the ringing: the line's audio from the moment ringing starts holds the
// rings (20 Hz), the burst and silence, and the board's own caller
// identification detector reads the message from it.
TEST_F(VirtualBoardTest, SlicLineSendsCallerIdentificationInAPauseOfTheRinging) {
    const DeviceHandle slic = device(RYN_VB_DEVICE_SLIC);
    EXPECT_EQ(attribute(slic, RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT), RYN_VB_CID_MULTIPLE_MESSAGE);
    EXPECT_EQ(errorOf(RynDrvSetAttributeValueUint32(slic, RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT, 0x06)), 9u);
    constexpr uint32_t kSingle = RYN_VB_CID_SINGLE_MESSAGE, kMultiple = RYN_VB_CID_MULTIPLE_MESSAGE;
    const struct {
        uint32_t format;
        std::string number, name;
        int sentMs;         // after ringing started; -1 before, -2 before and the call answered 1 s in, then rung again
        std::string heard;  // the number and name read ('O': unavailable), "": no message
        std::string sounds;  // each 250 ms of the 12 s after ringing started: ring, burst, silence
    } cases[] = {
        {kMultiple, "5551234567", "Ann Smith", -1, "5551234567/Ann Smith",
         "########..###...........########................"},
        {kSingle, "5559876543", "Bob", 1000, "5559876543/",
         "########..###...........########................"},  // no name in a single message
        {kMultiple, "", "", 3000, "O/O",
         "########................########..###..........."},  // too late for the first pause
        {kMultiple, "5551234567", "Ann", -2, "",
         "########................########................"},  // answered: the message dropped
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.format) + " sent at " + std::to_string(c.sentMs));
        uint32_t state = 0;
        ASSERT_EQ(RynDrvReset(slic) | RynDrvSetAttributeValueUint32(slic, RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT, c.format),
                  0u);
        EXPECT_EQ((c.number.empty() ? 0 : RynSlicSetPhoneNumber(slic, c.number.c_str(), &state)) |
                      (c.name.empty() ? 0 : RynSlicSetUserName(slic, c.name.c_str(), &state)) |
                      (c.sentMs < 0 ? RynSlicSendCallerID(slic, &state) : 0) | RynSlicStartRingState(slic, &state),
                  0u);
        if (c.sentMs == -2) {
            listen(slic, 1000);
            EXPECT_EQ(RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 1) |
                          RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 0) |
                          RynSlicStartRingState(slic, &state),
                      0u);
        }
        Samples heard = listen(slic, uint32_t(std::max(c.sentMs, 0)));
        EXPECT_EQ(c.sentMs < 0 ? 0 : RynSlicSendCallerID(slic, &state), 0u);
        heard = listen(slic, 12000 - uint32_t(std::max(c.sentMs, 0)), std::move(heard));

        EXPECT_EQ(pattern(heard, 250), c.sounds);
        int crossings = 0;
        for (size_t n = 1; n < 16000; ++n) crossings += (heard[n - 1] < 0) != (heard[n] < 0);
        EXPECT_NEAR(crossings, 80, 2);  // 20 Hz

        const DeviceHandle cid = block(RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR);
        ASSERT_EQ(RynCstCidDetectorInit(cid, RYN_VB_FSK_BELL202, 0), 0u);
        EventListener messages(cid);
        for (size_t at = 0; at < heard.size(); at += 16000)
            EXPECT_EQ(RynDrvSetAttributeValue(cid, RYN_VB_ATTR_AUDIO_IN, &heard[at], 32000), 0u);
        const auto received = messages.drain(RYN_VB_EVENT_CALLER_ID);
        const std::vector<std::pair<uint32_t, uint32_t>> expected{{c.format, 1}};  // the checksum right
        EXPECT_EQ(received, c.heard.empty() ? decltype(expected){} : expected);
        if (!c.heard.empty()) {
            EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_DATE), text(slic, RYN_VB_ATTR_SLIC_CALLER_ID).substr(0, 8));
            EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_NUMBER) + "/" + text(cid, RYN_VB_ATTR_CID_NAME), c.heard);
        }
        RynDrvClose(cid);
    }
}

TEST_F(VirtualBoardTest, BoardControlsAndTheJtagChain) {
    const DeviceHandle board = device(RYN_VB_DEVICE_BOARD), jtag = device(RYN_VB_DEVICE_JTAG);
    EXPECT_EQ(RynBrdSetClocks(board, RYN_VB_CLOCK_SOURCE_SPAN1, RYN_VB_CLOCK_MODE_FOLLOW) |
                  RynBrdCodecSetLaw(board, RYN_VB_LAW_A) | RynBrdTssConstByte(board, 7, 31, 0xD5), 0u);
    EXPECT_EQ(errorOf(RynBrdTssConstByte(board, 8, 0, 0)), 9u);
    uint32_t length = 0;
    uint8_t constants[8] = {};
    EXPECT_EQ(attribute(board, RYN_VB_ATTR_CLOCK_SOURCE), RYN_VB_CLOCK_SOURCE_SPAN1);
    EXPECT_EQ(RynDrvGetAttributeValue(board, RYN_VB_ATTR_CONSTANT_SLOTS, constants, sizeof constants, &length), 0u);
    EXPECT_EQ(length * 0x1000000 + constants[0] * 0x10000 + constants[1] * 0x100 + constants[2], 0x04071FD5u);

    // IDCODE is selected after a reset; the instruction register captures 0001.
    char out[40] = {};
    EXPECT_EQ(RynJtagScanDr(jtag, 0, std::string(32, '0').c_str(), out), 0u);
    uint32_t idcode = 0;
    for (int bit = 31; bit >= 0; --bit) idcode = idcode << 1 | (out[bit] == '1');
    EXPECT_EQ(idcode, RYN_VB_JTAG_IDCODE);
    EXPECT_EQ((std::tuple{RynJtagScanIr(jtag, 0, "1111", out), std::string(out)}), std::tuple(0u, "1000"));  // BYPASS
    EXPECT_EQ((std::tuple{RynJtagScanDr(jtag, 0, "110", out), std::string(out)}), std::tuple(0u, "011"));
    EXPECT_EQ(errorOf(RynJtagScanDr(jtag, 0, "012", out)), 5u);
    EXPECT_EQ(RynJtagControl(jtag, RYN_VB_JTAG_DISABLE), 0u);
    EXPECT_EQ(errorOf(RynJtagScanIr(jtag, 0, "0100", out)), 13u);
}

}  // namespace
}  // namespace vt
