// FSK on the virtual board: a caller identification message that the test
// modulates itself, read byte by byte by the FSK detector and parsed, its
// checksum checked, by the caller identification detector.
#include <cmath>
#include <string>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

// 1200 baud, phase-continuous, -10 dB: the channel seizure (300 alternating
// bits), 180 bits of mark, the bytes framed by a start and a stop bit, then
// 10 mark bits and 50 ms of silence.
std::vector<int16_t> modulate(const std::string &bytes, double mark, double space) {
    std::vector<bool> bits;
    for (int i = 0; i < 300; ++i) bits.push_back(i % 2 == 1);
    bits.insert(bits.end(), 180, true);
    for (unsigned char byte : bytes) {
        bits.push_back(false);
        for (int b = 0; b < 8; ++b) bits.push_back((byte >> b) & 1);
        bits.push_back(true);
    }
    bits.insert(bits.end(), 10, true);
    // 20 samples per 3 bits; the vector is made at its full length, the
    // silence included, and filled in place.
    const size_t count = (bits.size() * 20 + 2) / 3;
    std::vector<int16_t> samples(count + 400);
    double phase = 0;
    for (size_t n = 0; n < count; ++n) {
        phase += 2 * M_PI * (bits[n * 3 / 20] ? mark : space) / RYN_VB_SAMPLE_RATE;
        samples[n] = static_cast<int16_t>(std::lround(1295 * std::sin(phase)));
    }
    return samples;
}

// A single data message: date and time, the number, the checksum (plus `error`).
std::string message(char error) {
    std::string m = std::string("\x04\x12") + "11231015" + "5551234567";
    char sum = 0;
    for (char c : m) sum = static_cast<char>(sum + c);
    return m + static_cast<char>(error - sum);
}

class FskTest : public VirtualBoardTest {};

TEST_F(FskTest, DetectorsReadACallerIdentificationMessage) {
    for (uint32_t format : {RYN_VB_FSK_BELL202, RYN_VB_FSK_V23}) {
        for (char error : {0, 1}) {
            const DeviceHandle fsk = block(RYN_VB_BLOCK_FSK_DETECTOR), cid = block(RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR);
            ASSERT_EQ(RynToneFskDetectorInit(fsk, format), 0u);
            ASSERT_EQ(RynCstCidDetectorInit(cid, format, 0), 0u);
            EventListener bytes(fsk), messages(cid);
            const std::string sent = message(error);
            const auto samples = format == RYN_VB_FSK_BELL202 ? modulate(sent, 1200, 2200) : modulate(sent, 1300, 2100);
            const uint32_t length = uint32_t(samples.size() * 2);
            for (DeviceHandle detector : {fsk, cid})
                ASSERT_EQ(RynDrvSetAttributeValue(detector, RYN_VB_ATTR_AUDIO_IN, samples.data(), length), 0u);
            // The seizure reads as 'U' (0x55) bytes; the message follows them.
            const std::string heard = bytes.reported(RYN_VB_EVENT_DATA_BYTE);
            ASSERT_GE(heard.size(), sent.size() + 25) << format;
            EXPECT_EQ(heard.substr(heard.size() - sent.size()), sent) << format;
            EXPECT_EQ(heard.substr(0, 25), std::string(25, 'U')) << format;
            EXPECT_EQ(attribute(fsk, RYN_VB_ATTR_FSK_COUNT), heard.size());
            char last[4] = {};
            EXPECT_EQ(RynDrvGetAttributeValue(fsk, RYN_VB_ATTR_FSK_BYTES, last, 4, nullptr), 0u);
            EXPECT_EQ(std::string(last, 4), sent.substr(sent.size() - 4));
            // The detector reads the message whatever its checksum, and tells whether it was right.
            const EventData record = messages.nextWith(RYN_VB_EVENT_CALLER_ID);
            EXPECT_EQ(record.word[5], RYN_VB_CID_SINGLE_MESSAGE) << format;
            EXPECT_EQ(record.word[6], error == 0 ? 1u : 0u) << format;
            EXPECT_EQ(attribute(cid, RYN_VB_ATTR_CID_CHECKSUM_OK), error == 0 ? 1u : 0u) << format;
            EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_DATE), "11231015") << format;
            EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_NUMBER), "5551234567") << format;
            EXPECT_EQ(text(cid, RYN_VB_ATTR_CID_NAME), "") << format;
            RynDrvClose(fsk);
            RynDrvClose(cid);
        }
    }
}

}  // namespace
}  // namespace vt
