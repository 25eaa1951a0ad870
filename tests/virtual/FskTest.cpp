// FSK on the virtual board: a caller identification message that the test
// modulates itself, read byte by byte by the FSK detector and parsed, its
// checksum checked, by the caller identification detector.
#include <cmath>
#include <string>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

constexpr int32_t kFskDetector = 112, kCallerId = 128, kAudioIn = 31;
enum : uint32_t { kByteEvent = 0x508, kCallerIdEvent = 0x509 };

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
    std::vector<int16_t> samples;
    double phase = 0;
    for (size_t n = 0; n * 3 / 20 < bits.size(); ++n) {
        phase += 2 * M_PI * (bits[n * 3 / 20] ? mark : space) / 8000;
        samples.push_back(static_cast<int16_t>(std::lround(1295 * std::sin(phase))));
    }
    samples.resize(samples.size() + 400);
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
    for (uint32_t format : {0u, 1u}) {
        for (char error : {0, 1}) {
            const DeviceHandle fsk = block(kFskDetector), cid = block(kCallerId);
            ASSERT_EQ(RynToneFskDetectorInit(fsk, format), 0u);
            ASSERT_EQ(RynCstCidDetectorInit(cid, format, 0), 0u);
            EventListener bytes(fsk), messages(cid);
            const std::string sent = message(error);
            const auto samples = format == 0 ? modulate(sent, 1200, 2200) : modulate(sent, 1300, 2100);
            const uint32_t length = uint32_t(samples.size() * 2);
            for (DeviceHandle detector : {fsk, cid})
                ASSERT_EQ(RynDrvSetAttributeValue(detector, kAudioIn, samples.data(), length), 0u);
            // The seizure reads as 'U' (0x55) bytes; the message follows them.
            const std::string heard = bytes.reported(kByteEvent);
            ASSERT_GE(heard.size(), sent.size() + 25) << format;
            EXPECT_EQ(heard.substr(heard.size() - sent.size()), sent) << format;
            EXPECT_EQ(heard.substr(0, 25), std::string(25, 'U')) << format;
            EXPECT_EQ(attribute(fsk, 40), heard.size());
            char last[4] = {};
            EXPECT_EQ(RynDrvGetAttributeValue(fsk, 41, last, 4, nullptr), 0u);
            EXPECT_EQ(std::string(last, 4), sent.substr(sent.size() - 4));
            // The detector reads the message whatever its checksum, and tells whether it was right.
            const EventData record = messages.nextWith(kCallerIdEvent);
            EXPECT_EQ(record.word[5], 4u) << format;
            EXPECT_EQ(record.word[6], error == 0 ? 1u : 0u) << format;
            EXPECT_EQ(attribute(cid, 44), error == 0 ? 1u : 0u) << format;
            EXPECT_EQ(text(cid, 41), "11231015") << format;
            EXPECT_EQ(text(cid, 42), "5551234567") << format;
            EXPECT_EQ(text(cid, 43), "") << format;
            RynDrvClose(fsk);
            RynDrvClose(cid);
        }
    }
}

}  // namespace
}  // namespace vt
