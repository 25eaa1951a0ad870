// Voice on the T1/E1 spans: a dialler on one span's time slot, a detector on
// the far span's, through pipes joined to the slots, with the cable's rules.
#include <string>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

TEST_F(VirtualBoardTest, VoiceCrossesTheSpansOnItsTimeSlot) {
    constexpr uint32_t T1 = RYN_VB_T1E1_MODE_T1, E1 = RYN_VB_T1E1_MODE_E1, kSame = 9;
    constexpr uint32_t kOn = RYN_VB_T1E1_TRANSMITTER_ON, kOff = RYN_VB_T1E1_TRANSMITTER_OFF;
    constexpr uint32_t kNoLoop = RYN_VB_T1E1_LOOP_NONE, kLocal = RYN_VB_T1E1_LOOP_LOCAL;
    struct Case {
        const char *what;
        uint32_t mode, law, sendSlot, hearSlot, loop, transmitter, farMode;
        const char *far, *near;  // what the far span's detector hears, and the sending span's own
    };
    const Case cases[] = {
        {"T1, mu-law, slot 5", T1, RYN_VB_LAW_MU, 5, 5, kNoLoop, kOn, kSame, "1234#", ""},
        {"E1, A-law, slot 17", E1, RYN_VB_LAW_A, 17, 17, kNoLoop, kOn, kSame, "1234#", ""},
        {"each slot its own channel", T1, RYN_VB_LAW_MU, 5, 6, kNoLoop, kOn, kSame, "", ""},
        {"E1 slot 16 carries no voice", E1, RYN_VB_LAW_A, 16, 16, kNoLoop, kOn, kSame, "", ""},
        {"T1 has 24 slots", T1, RYN_VB_LAW_MU, 25, 25, kNoLoop, kOn, kSame, "", ""},
        {"transmitter off", T1, RYN_VB_LAW_MU, 5, 5, kNoLoop, kOff, kSame, "", ""},
        {"no frame sync between modes", T1, RYN_VB_LAW_MU, 5, 5, kNoLoop, kOn, E1, "", ""},
        {"local loop: both ends hear it", T1, RYN_VB_LAW_MU, 5, 5, kLocal, kOn, kSame, "1234#", "1234#"},
    };
    // A pipe joined to a span's time slot.
    const auto slotPipe = [](uint32_t span, uint32_t slot) {
        DeviceHandle pipe = 0;
        EXPECT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
        EXPECT_EQ(RynDrvConnectPipe(pipe, 0, device(RYN_VB_DEVICE_T1E1, span), slot, nullptr, 0), 0u);
        return pipe;
    };
    for (const Case &c : cases) {
        const DeviceHandle near = device(RYN_VB_DEVICE_T1E1, 0), far = device(RYN_VB_DEVICE_T1E1, 1);
        ASSERT_EQ(RynBrdCodecSetLaw(device(RYN_VB_DEVICE_BOARD), c.law), 0u);
        ASSERT_EQ(RynT1E1SetLiMode(near, c.mode), 0u);
        ASSERT_EQ(RynT1E1SetLiMode(far, c.farMode != kSame ? c.farMode : c.mode), 0u);
        ASSERT_EQ(RynT1E1SetLineLoop(near, c.loop), 0u);
        ASSERT_EQ(RynT1E1XmitPinControl(near, c.transmitter), 0u);

        const DeviceHandle dialler = block(RYN_VB_BLOCK_DTMF_DIALLER), heard = block(RYN_VB_BLOCK_DTMF_DETECTOR),
                           echo = block(RYN_VB_BLOCK_DTMF_DETECTOR);
        const DeviceHandle sending = slotPipe(0, c.sendSlot), receiving = slotPipe(1, c.hearSlot);
        ASSERT_EQ(RynDrvConnectLogicalDevice(dialler, 0, sending, 0), 0u);  // the dialler sends on the slot
        ASSERT_EQ(RynDrvConnectLogicalDevice(receiving, 0, heard, 0), 0u);  // the far slot feeds a detector
        ASSERT_EQ(RynDrvConnectLogicalDevice(sending, 0, echo, 0), 0u);     // and the near slot another
        EventListener farDigits(heard), nearDigits(echo);
        ASSERT_EQ(RynToneDtmfDial(dialler, "1234#", 5, 0, 0), 0u);
        run(1000);
        EXPECT_EQ(farDigits.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), c.far) << c.what;
        EXPECT_EQ(nearDigits.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), c.near) << c.what;
        // Undone and done again: the pipe leaves the slot and keeps its detector.
        ASSERT_EQ(RynDrvDisconnectPipe(receiving, 0), 0u);
        ASSERT_EQ(RynToneDtmfDial(dialler, "9", 1, 0, 0), 0u);
        run(200);
        EXPECT_EQ(farDigits.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), "") << c.what;
        ASSERT_EQ(RynDrvConnectPipe(receiving, 0, far, c.hearSlot, nullptr, 0), 0u);
        ASSERT_EQ(RynToneDtmfDial(dialler, "9", 1, 0, 0), 0u);
        run(200);
        EXPECT_EQ(farDigits.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), c.far[0] != '\0' ? "9" : "") << c.what;
        nearDigits.reported(RYN_VB_EVENT_DTMF_DIGIT, 1);
        for (DeviceHandle object : {dialler, heard, echo, sending, receiving}) RynDrvClose(object);
        RynDrvClose(near);  // the devices return to their start
        RynDrvClose(far);
    }
}

}  // namespace
}  // namespace vt
