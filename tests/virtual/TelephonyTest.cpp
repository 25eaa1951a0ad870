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

enum : int32_t {
    kDialler = 120,
    kVoiceDetector = 121,
    kDtmfDetector = 122,
    kNoise = 123,
    kMixer = 124,
    kEcho = 125,
    kCptDetector = 126,
    kCptGenerator = 127,
    kCallerId = 128,
    kConverter = 140,
    kDspPots = 150,
};
enum : uint32_t { kDialTone = 1, kBusy = 2, kRingback = 3, kReorder = 4 };
constexpr uint32_t kSetUpAttribute = 40;

using Values = std::vector<std::pair<uint32_t, uint32_t>>;

TEST_F(VirtualBoardTest, BlocksRefuseWhatIsNotTheirsOrNotYetPossible) {
    uint32_t status = 0;
    const struct {
        int32_t type;
        std::function<ResultCode(DeviceHandle)> call;
        uint32_t error;
    } cases[] = {
        {kDialler, [&](DeviceHandle b) { return RynCstCptDetectorStatus(b, &status); }, 6},
        {kCptDetector, [](DeviceHandle b) { return RynCstPotsOffHook(b, 0, 0); }, 6},
        {kDspPots, [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 0); }, 6},
        {kConverter, [](DeviceHandle b) { return RynCstEchoCancelInit(b, 0, 0); }, 6},
        {kDialler, [](DeviceHandle b) { return RynCstDtmfDial(b, "1", 1, 0, 0); }, 13},
        {kCptGenerator, [](DeviceHandle b) { return RynCstCptGenerateTone(b, kBusy); }, 13},
        {kDspPots, [](DeviceHandle b) { return RynCstPotsOffHook(b, 0, 0); }, 13},
        {kDialler, [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 5); }, 9},
        // Set up first, then the refused request.
        {kDialler, [](DeviceHandle b) { return RynCstDtmfDialerInit(b, 0), RynCstDtmfDial(b, "12X", 3, 0, 0); }, 9},
        {kCptGenerator, [](DeviceHandle b) { return RynCstCptGeneratorInit(b, 0, 0), RynCstCptGenerateTone(b, 5); }, 9},
        {kCptDetector, [](DeviceHandle b) { return RynCstCptDetectorInit(b, 0, 51, 0); }, 9},
        {kEcho, [](DeviceHandle b) { return RynCstEchoCancelInit(b, 129, 0); }, 9},
        {kCallerId, [](DeviceHandle b) { return RynCstCidDetectorInit(b, 2, 0); }, 9},
        {kNoise, [](DeviceHandle b) { return RynCstComfortNoiseGeneratorInit(b, 91); }, 9},
        {kConverter, [](DeviceHandle b) { return RynDataConverterInit(b, 3, 0); }, 9},
        {kMixer, [](DeviceHandle b) { return RynCstVoiceMixerInitEX(b, nullptr, 0, nullptr, 0, -1); }, 9},
        {kDspPots, [](DeviceHandle b) { return RynCstPotsInit(b, 0, 0), RynCstPotsHookFlash(b, 0, 0, 0); }, 13},
    };
    for (const auto &c : cases) {
        const DeviceHandle b = block(c.type);
        const ResultCode code = c.call(b);
        EXPECT_TRUE(failed(code) && sourceOf(code) == kBoardSource && errorOf(code) == c.error)
            << "block " << c.type << " case " << (&c - cases) << ": " << std::hex << code;
        RynDrvClose(b);
    }
}

TEST_F(VirtualBoardTest, ExtendedSetUpsAreCheckedAndKept) {
    const DeviceHandle voice = block(kVoiceDetector), mixer = block(kMixer), converter = block(kConverter);
    int16_t words[13] = {13, 30, 100, 20};
    EXPECT_EQ(RynCstVoiceActivityDetectorInitEx(voice, words, 0), 0u);
    EXPECT_EQ(attribute(voice, kSetUpAttribute), 2u);
    words[2] = -1;
    EXPECT_EQ(errorOf(RynCstVoiceActivityDetectorInitEx(voice, words, 0)), 9u);

    const uint32_t inputs[] = {block(kCptGenerator), block(kDialler)}, unknown[] = {0x2FFFFFFF};
    const uint16_t gains[] = {256, 128};
    EXPECT_EQ(RynCstVoiceMixerInitEX(mixer, inputs, 0, gains, 0, 2), 0u);
    EXPECT_EQ(attribute(mixer, kSetUpAttribute), 2u);
    EXPECT_EQ(errorOf(RynCstVoiceMixerInitEX(mixer, unknown, 0, gains, 0, 1)), 11u);
    EXPECT_EQ(errorOf(RynCstVoiceMixerInitEX(mixer, &mixer, 0, gains, 0, 1)), 11u);  // not itself

    EXPECT_EQ(RynDataConverterInit(converter, 2, 0), 0u);
    EXPECT_EQ(attribute(converter, 41) * 10000 + attribute(converter, 42), 20160u);
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
    const DeviceHandle detector = block(kCptDetector);
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
    const DeviceHandle generator = block(kCptGenerator), detector = block(kCptDetector), voice = block(kVoiceDetector);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, detector, 0), 0u);
    ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, voice, 0), 0u);
    EventListener tones(detector), voices(voice);
    ASSERT_EQ(RynCstCptGeneratorInit(generator, 0, 0), 0u);
    ASSERT_EQ(RynCstCptDetectorInit(detector, 0, 0, 0), 0u);
    const int16_t hangover300[13] = {13, 0, 300};  // longer than the reorder tone's pauses, shorter than busy's
    ASSERT_EQ(RynCstVoiceActivityDetectorInitEx(voice, hangover300, 0), 0u);

    for (uint32_t tone : {kBusy, kDialTone, kRingback, kReorder}) {
        ASSERT_EQ(RynCstCptGenerateTone(generator, tone), 0u);
        EXPECT_EQ(got(RynCstCptDetectorStatus, detector), tone);
    }
    EXPECT_EQ(tones.drain(0x0504), (Values{{kBusy, 0}, {kDialTone, 0}, {kRingback, 0}, {kReorder, 0}}));
    EXPECT_EQ(voices.drain(0x0505).size(), 4u);  // after the bursts of busy and ringback
    EXPECT_EQ(got(RynCstVoiceActivityDetectorStatus, voice), 1u);

    // Nine seconds of silence: the tone has ended.
    ASSERT_EQ(RynCstCptGeneratorInit(generator, 0, 9000), 0u);
    ASSERT_EQ(RynCstCptGenerateTone(generator, 0), 0u);
    EXPECT_EQ(tones.drain(0x0503), (Values{{kReorder, 0}}));
    EXPECT_EQ(voices.drain(0x0505).size(), 1u);
    EXPECT_EQ(got(RynCstCptDetectorStatus, detector), 0u);
}

TEST_F(VirtualBoardTest, ToneTablesOfTheApplicationReplaceTheBuiltInTones) {
    const DeviceHandle generator = block(kCptGenerator), detector = block(kCptDetector);
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
    for (uint32_t tone : {kBusy, kRingback, kDialTone}) ASSERT_EQ(RynCstCptGenerateTone(generator, tone), 0u);
    EXPECT_EQ(tones.drain(0x0504), (Values{{9, 0}}));
}

TEST_F(VirtualBoardTest, DialledDigitsReachTheDtmfDetector) {
    const DeviceHandle dialler = block(kDialler), echo = block(kEcho), detector = block(kDtmfDetector);
    ASSERT_EQ(RynDrvConnectLogicalDevice(dialler, 0, echo, 0), 0u);  // through a canceller
    ASSERT_EQ(RynDrvConnectLogicalDevice(echo, 0, detector, 0), 0u);
    EventListener digits(detector), dialled(dialler);
    ASSERT_EQ(RynCstDtmfDialerInit(dialler, 0), 0u);
    ASSERT_EQ(RynCstEchoCancelInit(echo, 0, 0), 0u);
    ASSERT_EQ(RynCstDtmfDetectorInit(detector, 0, 0), 0u);
    ASSERT_EQ(RynCstDtmfDial(dialler, "1559#*0d", 8, 0, 0), 0u);
    Values expected;
    for (char key : std::string("1559#*0D")) expected.emplace_back(static_cast<uint8_t>(key), 0);
    EXPECT_EQ(digits.drain(0x0500), expected);
    EXPECT_EQ(dialled.drain(0x0506), (Values{{8, 0}}));
    EXPECT_EQ(got<uint8_t>(RynCstDtmfDetectorStatus, detector), 'D');
    // Digits too short for the detector's shortest digit go unnoticed.
    ASSERT_EQ(RynCstDtmfDetectorInit(detector, 100, 0), 0u);
    ASSERT_EQ(RynCstDtmfDial(dialler, "7", 1, 60, 0), 0u);
    EXPECT_TRUE(digits.drain(0x0500).empty());
}

TEST_F(VirtualBoardTest, MixerPassesOnItsInputsAtTheirGains) {
    const DeviceHandle listed = block(kDialler), muted = block(kDialler), other = block(kDialler);
    const DeviceHandle mixer = block(kMixer), detector = block(kDtmfDetector);
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
    EXPECT_EQ(digits.drain(0x0500), (Values{{'1', 0}}));  // muted and unlisted inputs are not heard
}

TEST_F(VirtualBoardTest, DspPotsBlockKeepsItsHookAndDaa) {
    const DeviceHandle line = block(kDspPots);
    EventListener hooks(line);
    ASSERT_EQ(RynCstPotsInit(line, 0, 2), 0u);  // the library writes DAA registers 16 and 17
    uint8_t daa[64] = {};
    EXPECT_EQ(RynDrvGetAttributeValue(line, 42, daa, sizeof daa, nullptr), 0u);
    EXPECT_EQ(daa[16] * 256 + daa[17], 0x0C10);
    EXPECT_EQ(got(RynCstPotsWriteDaa, line, 2, 500, 17, 0x10), 1u);  // already held
    EXPECT_EQ(got(RynCstPotsWriteDaa, line, 2, 500, 0x40, 1), 2u);   // no such register

    EXPECT_EQ(RynCstPotsOffHook(line, 0, 0) | RynCstPotsOffHook(line, 0, 0), 0u);  // the second: no change, no event
    EXPECT_EQ(RynCstPotsHookFlash(line, 0, 0, 0), 0u);
    EXPECT_EQ(RynCstPotsPulseDial(line, 0, 0, 0), 0u);
    EXPECT_EQ(attribute(line, 40), 1u);
    EXPECT_EQ(RynCstPotsOnHookLineMon(line, 0, 0), 0u);
    EXPECT_EQ(attribute(line, 41), 1u);
    EXPECT_EQ(RynCstPotsSenseLine(line, 0, 0), 0u);
    EXPECT_EQ(hooks.drain(0x0200), (Values{{1, 0}, {1, 1}, {0, 2}, {0, 3}}));
    EXPECT_EQ(errorOf(RynCstPotsPulseDial(line, 3, 0, 0)), 13u);  // on hook
}

}  // namespace
}  // namespace vt
