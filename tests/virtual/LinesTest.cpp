// The line interfaces of the virtual board: two T1/E1 spans joined by a
// cable, the POTS and SLIC lines, the board controls and the JTAG chain.
#include <algorithm>
#include <string>
#include <tuple>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

enum : uint32_t { kLayer1 = 0x100, kAlarm = 0x101, kSignalling = 0x102, kHook = 0x200, kRingOn = 0x201, kRingOff };

uint32_t layer1(DeviceHandle span) { return got(RynT1E1GetLayer1Status, span); }

TEST_F(VirtualBoardTest, SpanSettingsAreKeptPerSpan) {
    const DeviceHandle span0 = device(kT1E1, 0), span1 = device(kT1E1, 1);
    T1Configuration t1{};
    E1Configuration e1{};
    for (uint8_t i = 0; i < sizeof t1.bytes; ++i) t1.bytes[i] = uint8_t(i * 7 + 1);
    e1.bytes[55] = 0x5E;
    EXPECT_EQ(RynT1SetConfiguration(span0, &t1) | RynE1SetConfiguration(span1, &e1), 0u);
    EXPECT_TRUE(std::ranges::equal(got<T1Configuration>(RynT1GetConfiguration, span0).bytes, t1.bytes));
    EXPECT_EQ(got<T1Configuration>(RynT1GetConfiguration, span1).bytes[0], 0u);
    EXPECT_EQ(got<E1Configuration>(RynE1GetConfiguration, span1).bytes[55], 0x5E);
    EXPECT_EQ(RynT1E1SetLineTermination(span0, 2) | RynT1E1SetMonitorMode(span0, 1), 0u);
    const Layer1StatusEx ex = got<Layer1StatusEx>(RynT1E1GetLayer1StatusEx, span0);
    EXPECT_EQ(ex.bytes[18] * 10 + ex.bytes[19], 21);
    uint8_t bits = 0;
    EXPECT_EQ(errorOf(RynT1E1SetLiMode(span0, 2)), 9u);
    EXPECT_EQ(errorOf(RynT1SetChannelizedRobBitData(span0, 25, 1)), 9u);   // T1 has channels 1..24
    EXPECT_EQ(errorOf(RynE1GetChannelizedABCDBit(span0, 1, &bits)), 13u);  // not an E1 span
}

TEST_F(VirtualBoardTest, SignallingCrossesTheCableAndLoopsBack) {
    const DeviceHandle span0 = device(kT1E1, 0), span1 = device(kT1E1, 1);
    EventListener listener(span1);
    EXPECT_EQ(RynT1SetChannelizedRobBitData(span0, 5, 0xA), 0u);
    const EventData record = listener.nextWith(kSignalling);
    EXPECT_EQ(record.word[5] * 0x100 + record.word[6] * 0x10 + record.word[7], 0x5A0u);
    EXPECT_EQ(got<RobBitData>(RynT1GetRobBitData, span1).bytes[2], 0xA0);  // slot 5: the high nibble of byte 2
    EXPECT_EQ(got<uint8_t>(RynT1GetChannelizedRobBitData, span0, 5), 0u);  // span 0 hears span 1
    EXPECT_EQ(RynT1E1SetLineLoop(span0, 1), 0u);
    EXPECT_EQ(got<uint8_t>(RynT1GetChannelizedRobBitData, span0, 5), 0xAu);

    // E1: both spans in E1 mode; slot 16 carries no channel; Sa bits travel too.
    EXPECT_EQ(RynT1E1SetLineLoop(span0, 0) | RynT1E1SetLiMode(span0, 1) | RynT1E1SetLiMode(span1, 1), 0u);
    EXPECT_EQ(errorOf(RynE1SetChannelizedABCDBit(span1, 16, 1)), 9u);
    EXPECT_EQ(RynE1SetChannelizedABCDBit(span1, 31, 0x3) | RynE1SetSaBit(span1, 4, 0x5A), 0u);
    EXPECT_EQ(got<uint8_t>(RynE1GetChannelizedABCDBit, span0, 31), 0x3u);
    EXPECT_EQ(got<uint8_t>(RynE1GetSaBit, span0, 4), 0x5Au);
}

TEST_F(VirtualBoardTest, Layer1StatusFollowsLoopsAlarmsAndTransmitters) {
    const DeviceHandle span[2] = {device(kT1E1, 0), device(kT1E1, 1)};
    EventListener listener(span[1]);
    // Bits: 0 sync, 1 loss of signal, 2 AIS, 3 RAI, 4 loop.
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
    const EventData alarm = listener.nextWith(kAlarm);
    EXPECT_EQ(alarm.word[5] * 0x100 + alarm.word[6], 0x0401u);
    EXPECT_EQ(listener.nextWith(kLayer1).word[5], 0x11u);
    ASSERT_EQ(RynDrvReset(span[0]), 0u);  // back to T1: span 1 is in sync again and told at once
    const auto changes = listener.drain(kLayer1);
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.back(), std::pair(0x01u, 0x00u));
}

TEST_F(VirtualBoardTest, PotsLineHookRingingAndDialling) {
    const DeviceHandle pots = device(kPots);
    EventListener listener(pots);
    const auto dial = [pots](const std::string &digits) {
        const auto *bytes = reinterpret_cast<const uint8_t *>(digits.data());
        return RynPotsPulseDial(pots, 0, 0, 0, bytes, static_cast<uint32_t>(digits.size()), 0, 0);
    };
    EXPECT_EQ(errorOf(dial("1")), 13u);
    EXPECT_EQ(RynDrvSetAttributeValueBool(pots, 40, 1), 0u);  // the exchange rings
    EXPECT_EQ(listener.nextWith(kRingOn).word[5], 0u);
    EXPECT_EQ(RynPotsOffHook(pots), 0u);
    EXPECT_EQ(listener.nextWith(kHook).word[5], 1u);
    EXPECT_EQ(listener.nextWith(kRingOff).word[5], 1u);  // answered
    EXPECT_EQ(errorOf(RynDrvSetAttributeValueBool(pots, 40, 1)), 13u);
    EXPECT_EQ((std::tuple{dial("0123"), errorOf(dial("9#"))}), std::tuple(0u, 5u));
    EXPECT_EQ(text(pots, 42), "0123");  // the digits dialled
    EXPECT_EQ(RynPotsOnHook(pots), 0u);
    EXPECT_EQ(listener.nextWith(kHook).word[5], 0u);
    EXPECT_EQ(errorOf(RynPotsSetLiMode(pots, 3)), 9u);
    EXPECT_EQ(RynPotsSetLiMode(pots, 2), 0u);
    EXPECT_EQ(got(RynPotsGetLiMode, pots), 2u);
}

TEST_F(VirtualBoardTest, SlicRingsUntilTheSimulatedHandsetIsLifted) {
    const DeviceHandle slic = device(kSlic);
    EventListener listener(slic);
    uint32_t state = 0;
    EXPECT_EQ(got(RynSlicStartRingState, slic), 2u);  // ringing
    EXPECT_EQ(listener.nextWith(kRingOn).word[3], kRingOn);
    EXPECT_EQ(RynDrvSetAttributeValueBool(slic, 40, 1), 0u);
    EXPECT_EQ(listener.nextWith(kHook).word[3], kHook);
    EXPECT_EQ(listener.nextWith(kRingOff).word[5], 1u);  // answered
    EXPECT_EQ(got(RynSlicGetHookState, slic), 1u);
    EXPECT_EQ(errorOf(RynSlicStartRingState(slic, &state)), 13u);
    EXPECT_EQ(RynSlicEnableBusyTone(slic), 0u);
    EXPECT_EQ(attribute(slic, 41), 2u);
    EXPECT_EQ(errorOf(RynSlicSetPhoneNumber(slic, "555123456x", &state)), 5u);
    EXPECT_EQ(RynSlicSetUserName(slic, "Ann", &state) | RynSlicSetPhoneNumber(slic, "5551234567", &state), 0u);
    EXPECT_EQ(RynSlicSendCallerID(slic, &state), 0u);
    EXPECT_EQ(text(slic, 42).substr(8), " 5551234567 Ann");  // after the stamp
}

TEST_F(VirtualBoardTest, BoardControlsAndTheJtagChain) {
    const DeviceHandle board = device(kBoard), jtag = device(kJtag);
    EXPECT_EQ(RynBrdSetClocks(board, 2, 1) | RynBrdCodecSetLaw(board, 1) | RynBrdTssConstByte(board, 7, 31, 0xD5), 0u);
    EXPECT_EQ(errorOf(RynBrdTssConstByte(board, 8, 0, 0)), 9u);
    uint32_t length = 0;
    uint8_t constants[8] = {};
    EXPECT_EQ(attribute(board, 40), 2u);
    EXPECT_EQ(RynDrvGetAttributeValue(board, 43, constants, sizeof constants, &length), 0u);
    EXPECT_EQ(length * 0x1000000 + constants[0] * 0x10000 + constants[1] * 0x100 + constants[2], 0x04071FD5u);

    // IDCODE is selected after a reset; the instruction register captures 0001.
    char out[40] = {};
    EXPECT_EQ(RynJtagScanDr(jtag, 0, std::string(32, '0').c_str(), out), 0u);
    uint32_t idcode = 0;
    for (int bit = 31; bit >= 0; --bit) idcode = idcode << 1 | (out[bit] == '1');
    EXPECT_EQ(idcode, 0x1D00A0F1u);
    EXPECT_EQ((std::tuple{RynJtagScanIr(jtag, 0, "1111", out), std::string(out)}), std::tuple(0u, "1000"));  // BYPASS
    EXPECT_EQ((std::tuple{RynJtagScanDr(jtag, 0, "110", out), std::string(out)}), std::tuple(0u, "011"));
    EXPECT_EQ(errorOf(RynJtagScanDr(jtag, 0, "012", out)), 5u);
    EXPECT_EQ(RynJtagControl(jtag, 2), 0u);
    EXPECT_EQ(errorOf(RynJtagScanIr(jtag, 0, "0100", out)), 13u);
}

}  // namespace
}  // namespace vt
