// Tone blocks on the virtual board: diallers into detectors, the DTMF
// receiver's limits on samples the test makes itself, generators measured
// through the audio attributes, and detectors tuned by the library's
// coefficients.
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

constexpr char kDtmfKeys[] = "123A456B789C*0#D";
constexpr double kRows[] = {697, 770, 852, 941}, kColumns[] = {1209, 1336, 1477, 1633};

struct Tone {
    double hertz, db;  // level below a 4096-peak sine
    double phase = 0;
};
using Samples = std::vector<int16_t>;

// `ms` of the tones summed, then `gapMs` of silence.
Samples play(std::initializer_list<Tone> tones, int ms, int gapMs = 60) {
    Samples samples(static_cast<size_t>(8 * (ms + gapMs)), 0);
    for (size_t n = 0; n < static_cast<size_t>(8 * ms); ++n) {
        double sum = 0;
        for (const Tone &t : tones)
            sum += 4096 * std::pow(10, t.db / 20) * std::sin(2 * M_PI * t.hertz * n / 8000.0 + t.phase);
        samples[n] = static_cast<int16_t>(std::lround(sum));
    }
    return samples;
}

ResultCode send(DeviceHandle block, const Samples &samples) {
    return RynDrvSetAttributeValue(block, RYN_VB_ATTR_AUDIO_IN, samples.data(),
                                   static_cast<uint32_t>(samples.size() * 2));
}

Samples render(DeviceHandle block, size_t count) {
    Samples samples(count);
    uint32_t returned = 0;
    EXPECT_EQ(RynDrvGetAttributeValue(block, RYN_VB_ATTR_AUDIO_OUT, samples.data(), uint32_t(count * 2), &returned),
              0u);
    EXPECT_EQ(returned, count * 2);
    return samples;
}

class ToneTest : public VirtualBoardTest {};

TEST_F(ToneTest, DiallersReachTheirDetectorsDigitByDigit) {
    struct Case {
        int32_t dialler, detector;
        uint32_t event;
        std::string digits;
    };
    for (const Case &c :
         {Case{RYN_VB_BLOCK_DTMF_DIALLER, RYN_VB_BLOCK_DTMF_DETECTOR, RYN_VB_EVENT_DTMF_DIGIT, "1234#"},
          Case{RYN_VB_BLOCK_MF_DIALLER, RYN_VB_BLOCK_MF_DETECTOR, RYN_VB_EVENT_MF_DIGIT, "*1234567890#"}}) {
        const DeviceHandle dialler = block(c.dialler), detector = block(c.detector);
        // The MF dialler reaches its detector through a pipe.
        const DeviceHandle pipe = c.dialler == RYN_VB_BLOCK_MF_DIALLER ? got(RynDrvCreatePipe, 0) : detector;
        ASSERT_EQ(RynDrvConnectLogicalDevice(dialler, 0, pipe, 0), 0u);
        ASSERT_EQ(pipe == detector ? 0u : RynDrvConnectLogicalDevice(pipe, 0, detector, 0), 0u);
        EventListener heard(detector), done(dialler);
        const auto dial = c.dialler == RYN_VB_BLOCK_DTMF_DIALLER ? RynToneDtmfDial : RynToneMfDial;
        ASSERT_EQ(dial(dialler, c.digits.data(), int32_t(c.digits.size()), 0, 0), 0u);
        run(500);  // the dial takes its time: not all of it has played by now
        EXPECT_EQ(done.reported(RYN_VB_EVENT_DIALLING_FINISHED).size(), 0u);
        run(1500);
        EXPECT_EQ(heard.reported(c.event), c.digits);
        EXPECT_EQ(done.reported(RYN_VB_EVENT_DIALLING_FINISHED).size(), 1u);
        EXPECT_EQ(
            got<uint8_t>(c.detector == RYN_VB_BLOCK_DTMF_DETECTOR ? RynToneDtmfDetectorStatus : RynToneMfDetectorStatus,
                         detector),
            '#');
        EXPECT_EQ(errorOf(dial(dialler, "12x", 3, 0, 0)), 9u);  // refused whole
        EXPECT_EQ(heard.reported(c.event), "");
    }
}

TEST_F(ToneTest, EveryKeyIsHeardFromTheApplicationsSamples) {
    const DeviceHandle dtmf = block(RYN_VB_BLOCK_DTMF_DETECTOR), mf = block(RYN_VB_BLOCK_MF_DETECTOR);
    EventListener heardDtmf(dtmf), heardMf(mf);
    for (int key = 0; key < 16; ++key)
        ASSERT_EQ(send(dtmf, play({{kRows[key / 4], -6}, {kColumns[key % 4], -6}}, 50)), 0u);
    EXPECT_EQ(heardDtmf.reported(RYN_VB_EVENT_DTMF_DIGIT), kDtmfKeys);
    for (const auto &[low, high] : {std::pair{1100, 1700}, {900, 1300}, {700, 1500}, {1500, 1700}})
        ASSERT_EQ(send(mf, play({{double(low), -8}, {double(high), -8}}, 68)), 0u);
    EXPECT_EQ(heardMf.reported(RYN_VB_EVENT_MF_DIGIT), "*57#");  // KP 5 7 ST
}

// Every case for each of the 16 keys, at random phases, after a random
// stretch of silence (so at every alignment to the receiver's windows).
TEST_F(ToneTest, DtmfReceiverHoldsItsLimits) {
    struct Case {
        const char *what;
        double lowShift, highShift, lowDb, highDb;
        int ms, gapMs;
        size_t digits;
        double voiceDb = -99;  // a third tone, as speech would bring
        double noiseDb = -99;  // white noise, its power against a sine's
    };
    const Case cases[] = {
        {"1.5% apart", 1.015, 0.985, -6, -6, 50, 60, 1},
        {"1.5% away", 0.985, 1.015, -6, -6, 50, 60, 1},
        {"low 3.5% off", 1.035, 1, -6, -6, 50, 60, 0},
        {"high 3.5% off", 1, 0.965, -6, -6, 50, 60, 0},
        // Normal twist: the low group louder; reverse: the high group louder.
        {"twist 7 dB", 1, 1, -5, -12, 50, 60, 1},
        {"twist 9 dB", 1, 1, -5, -14, 50, 60, 0},
        {"twist 7 dB, 1.5% off", 0.985, 1.015, -5, -12, 50, 60, 1},
        {"reverse 3.5 dB, 1.5% off", 1, 0.985, -8.5, -5, 50, 60, 1},
        {"reverse 5 dB", 1, 1, -10, -5, 50, 60, 0},
        {"-28 dB", 1, 1, -28, -28, 50, 60, 1},
        {"-32 dB", 1, 1, -32, -32, 50, 60, 0},
        {"40 ms", 1, 1, -6, -6, 40, 60, 1},
        {"25 ms", 1, 1, -6, -6, 25, 60, 0},
        {"20 ms break", 1, 1, -6, -6, 60, 20, 1},
        {"45 ms pause", 1, 1, -6, -6, 60, 45, 2},
        {"with voice", 1, 1, -6, -6, 50, 60, 1, -14},
        {"in voice", 1, 1, -6, -6, 50, 60, 0, -4},
        {"in noise", 1, 1, -10, -10, 50, 60, 1, -99, -25},
    };
    std::mt19937 random(2024);
    std::uniform_real_distribution<double> phase(0, 2 * M_PI);
    std::uniform_int_distribution<size_t> offset(0, 101);
    for (const Case &c : cases) {
        for (int key = 0; key < 16; ++key) {
            const DeviceHandle detector = block(RYN_VB_BLOCK_DTMF_DETECTOR);
            EventListener heard(detector);
            Samples digit = play({{kRows[key / 4] * c.lowShift, c.lowDb, phase(random)},
                                  {kColumns[key % 4] * c.highShift, c.highDb, phase(random)},
                                  {500, c.voiceDb}},
                                 c.ms, c.gapMs);
            std::normal_distribution<double> noise(0, 4096 * std::pow(10, c.noiseDb / 20) / std::sqrt(2));
            for (int16_t &sample : digit) sample = static_cast<int16_t>(std::lround(sample + noise(random)));
            ASSERT_EQ(send(detector, Samples(offset(random))), 0u);
            for (int times = c.gapMs < 60 ? 2 : 1; times > 0; --times) ASSERT_EQ(send(detector, digit), 0u);
            EXPECT_EQ(heard.reported(RYN_VB_EVENT_DTMF_DIGIT, 1), std::string(c.digits, kDtmfKeys[key]))
                << c.what << ", key " << kDtmfKeys[key];
            RynDrvClose(detector);
        }
    }
}

// Every MF digit at random phases and alignments, at the edges of the
// receiver's limits: each tone 1.5% off, twist 6 dB either way, level -30 dB.
TEST_F(ToneTest, MfReceiverHoldsItsLimits) {
    constexpr double kMf[] = {700, 900, 1100, 1300, 1500, 1700};
    constexpr std::pair<int, int> kPairs[] = {{0, 1}, {0, 2}, {1, 2}, {0, 3}, {1, 3}, {2, 3}, {0, 4}, {1, 4},
                                              {2, 4}, {3, 4}, {2, 5}, {4, 5}, {1, 5}, {3, 5}, {0, 5}};
    constexpr char kDigits[] = "1234567890*#ABC";
    struct Case {
        const char *what;
        double lowShift, highShift, lowDb, highDb;
        bool heard;
    };
    const Case cases[] = {
        {"1.5% apart", 1.015, 0.985, -8, -8, true},
        {"low 4% off", 1.04, 1, -8, -8, false},
        {"low louder by 5 dB", 1, 1, -5, -10, true},
        {"low louder by 7 dB", 1, 1, -5, -12, false},
        {"high louder by 5 dB", 1, 1, -10, -5, true},
        {"high louder by 7 dB", 1, 1, -12, -5, false},
        {"-28 dB", 1, 1, -28, -28, true},
        {"-32 dB", 1, 1, -32, -32, false},
    };
    std::mt19937 random(68);
    std::uniform_real_distribution<double> phase(0, 2 * M_PI);
    std::uniform_int_distribution<size_t> offset(0, 159);
    for (const Case &c : cases) {
        for (size_t digit = 0; digit < std::size(kPairs); ++digit) {
            const DeviceHandle detector = block(RYN_VB_BLOCK_MF_DETECTOR);
            EventListener heard(detector);
            const auto [low, high] = kPairs[digit];
            ASSERT_EQ(send(detector, Samples(offset(random))), 0u);
            ASSERT_EQ(send(detector, play({{kMf[low] * c.lowShift, c.lowDb, phase(random)},
                                           {kMf[high] * c.highShift, c.highDb, phase(random)}},
                                          68)),
                      0u);
            EXPECT_EQ(heard.reported(RYN_VB_EVENT_MF_DIGIT, 1), c.heard ? std::string(1, kDigits[digit]) : "")
                << c.what << ", digit " << kDigits[digit];
            RynDrvClose(detector);
        }
    }
}

TEST_F(ToneTest, SineGeneratorPlaysTheLibrarysOscillator) {
    const DeviceHandle generator = block(RYN_VB_BLOCK_SINE_WAVE_GENERATOR);
    const SineToneParams tone{1000, 0, 0};
    ASSERT_EQ(RynToneSineWaveGeneratorInit(generator, 0, &tone, 1, 0), 0u);
    const Samples second = render(generator, 8000);
    int crossings = 0, peak = 0;
    for (size_t n = 1; n < second.size(); ++n) {
        crossings += (second[n - 1] < 0) != (second[n] < 0);
        peak = std::max(peak, std::abs(int(second[n])));
    }
    EXPECT_NEAR(crossings, 2000, 2);
    EXPECT_NEAR(peak, 4096, 60);
}

TEST_F(ToneTest, FrequencyDetectorsListenWithTheLibrarysCoefficients) {
    const DeviceHandle generator = block(RYN_VB_BLOCK_SINE_WAVE_GENERATOR),
                       right = block(RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR),
                       wrong = block(RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR);
    const SineToneParams tones[] = {{1000, -6, 0}, {1500, -6, 0}};
    const uint32_t rightHz[] = {1000, 1500}, wrongHz[] = {1000, 1560};
    ASSERT_EQ(RynToneSineWaveGeneratorInit(generator, 0, tones, 2, 0), 0u);
    ASSERT_EQ(RynToneDualDetectorInit(right, 0, rightHz, 2, 0, 0, 0), 0u);
    ASSERT_EQ(RynToneDualDetectorInit(wrong, 0, wrongHz, 2, 0, 0, 0), 0u);
    EXPECT_EQ(errorOf(RynToneDualDetectorInit(wrong, 0, wrongHz, 1, 0, 0, 0)), 9u);  // not a pair
    EventListener heardRight(right), heardWrong(wrong);
    for (DeviceHandle detector : {right, wrong}) ASSERT_EQ(RynDrvConnectLogicalDevice(generator, 0, detector, 0), 0u);
    render(generator, 1600);
    EXPECT_EQ(heardRight.reported(RYN_VB_EVENT_TONE_DETECTED), std::string(1, '\0'));
    EXPECT_EQ(heardWrong.reported(RYN_VB_EVENT_TONE_DETECTED), "");
    EXPECT_EQ(got<uint8_t>(RynToneDualDetectorStatus, right), 1u);
}

TEST_F(ToneTest, DialToneAndSilenceAreReportedWhileTheyLast) {
    const DeviceHandle dialTone = block(RYN_VB_BLOCK_DIAL_TONE_DETECTOR),
                       silence = block(RYN_VB_BLOCK_SILENCE_DETECTOR);
    EventListener heardTone(dialTone), heardSilence(silence);
    ASSERT_EQ(send(dialTone, play({{350, -10}, {440, -10}}, 300, 0)), 0u);
    ASSERT_EQ(send(silence, play({{1000, -10}}, 100, 300)), 0u);
    EXPECT_EQ(got(RynToneDialtoneDetectorStatus, dialTone), 1u);  // 350 + 440 Hz
    EXPECT_EQ(got(RynToneSilenceDetectorStatus, silence), 1u);
    EXPECT_EQ(heardTone.reported(RYN_VB_EVENT_TONE_DETECTED), std::string(1, '\0'));
    EXPECT_EQ(heardSilence.reported(RYN_VB_EVENT_SILENCE), "\1");
}

TEST_F(ToneTest, BlocksRefuseWhatIsNotTheirs) {
    const DeviceHandle dialler = block(RYN_VB_BLOCK_DTMF_DIALLER), detector = block(RYN_VB_BLOCK_DTMF_DETECTOR);
    uint8_t status = 0;
    EXPECT_EQ(errorOf(RynToneDtmfDetectorStatus(dialler, &status)), 6u);
    EXPECT_EQ(errorOf(RynToneMfDial(dialler, "1", 1, 0, 0)), 6u);
    EXPECT_EQ(errorOf(send(dialler, Samples(8))), 6u);
    EXPECT_EQ(errorOf(send(detector, Samples(32769))), 9u);
    EXPECT_EQ(errorOf(RynDrvSetAttributeValue(detector, RYN_VB_ATTR_AUDIO_IN, "abc", 3)), 9u);
    std::vector<uint8_t> out(65538);  // a detector has no output; a generator gives 64 KiB at most
    EXPECT_EQ(errorOf(RynDrvGetAttributeValue(detector, RYN_VB_ATTR_AUDIO_OUT, out.data(), 4, nullptr)), 6u);
    EXPECT_EQ(errorOf(RynDrvGetAttributeValue(dialler, RYN_VB_ATTR_AUDIO_OUT, out.data(), RYN_VB_AUDIO_MAX_BYTES + 2,
                                              nullptr)),
              9u);
    EXPECT_EQ(errorOf(RynToneDtmfDiallerInit(dialler, 2000, 0, 0, 0)), 9u);
}

}  // namespace
}  // namespace vt
