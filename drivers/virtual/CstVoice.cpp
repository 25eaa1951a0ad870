// The telephony voice activity detector (type 121) and comfort noise
// generator (type 123).
#include <cmath>

#include "Cst.h"

namespace vb {
namespace {

using namespace cst;

// ---- Voice activity detector --------------------------------------------------

constexpr size_t kVoiceFrame = 160;  // 20 ms
constexpr uint32_t kVoiceFrameMs = 20;
constexpr uint32_t kDefaultHangoverMs = 200, kLongestHangoverMs = 5000;
constexpr uint32_t kDefaultMinSpeechMs = 20, kLongestMinSpeechMs = 1000;
// The extended set-up's block of 13 words: word 0 its length, 1 the floor,
// 2 the hangover, 3 the shortest speech, 4..12 not used here.
using Extended = VoiceActivityDetectorInitEx;

struct VoiceActivity : Block {
    uint32_t floorDb = kDefaultFloorDb;
    uint32_t hangoverMs = kDefaultHangoverMs;
    uint32_t minSpeechMs = kDefaultMinSpeechMs;
    Framer framer;
    uint32_t loudMs = 0, quietMs = 0;
    bool voice = false;  // the status
};

uint32_t startVoice(Call &call, uint32_t setUp, uint32_t floorDb, uint32_t hangoverMs, uint32_t minSpeechMs) {
    auto &detector = call.object->as<VoiceActivity>();
    detector = VoiceActivity{};
    detector.floorDb = floorDb;
    detector.hangoverMs = hangoverMs;
    detector.minSpeechMs = minSpeechMs;
    detector.setUp = setUp;
    return 0;
}

// param1: floor in dB below full scale (0: 40; 1..90).
uint32_t voiceInit(Call &call) {
    const auto floor =
        setting(call.in.u32(VoiceActivityDetectorInit::kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    if (!floor) return VB_FAILURE(kOutOfRange);
    return startVoice(call, kBasicSetUp, *floor, kDefaultHangoverMs, kDefaultMinSpeechMs);
}

// Word 0 must be 13; words 1 to 3 as above, 0 asking for the default, a
// negative value refused; param2 (at 46) is not used.
uint32_t voiceInitEx(Call &call) {
    if (signedWord(call.in, Extended::kWord0) != Extended::kParamWords) return VB_FAILURE(kOutOfRange);
    const auto word = [&](uint32_t offset) { return static_cast<uint32_t>(signedWord(call.in, offset)); };
    const auto floor = setting(word(Extended::kWord1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto hangover = setting(word(Extended::kWord2), kDefaultHangoverMs, 1, kLongestHangoverMs);
    const auto minSpeech = setting(word(Extended::kWord3), kDefaultMinSpeechMs, 1, kLongestMinSpeechMs);
    if (!floor || !hangover || !minSpeech) return VB_FAILURE(kOutOfRange);
    return startVoice(call, kExtendedSetUp, *floor, *hangover, *minSpeech);
}

// 1 while voice is present (from the shortest speech time on, until the
// hangover has passed without it), else 0.
uint32_t voiceStatus(Call &call) {
    call.out.u32(VoiceActivityDetectorStatus::kReplyStatus, call.object->as<VoiceActivity>().voice ? 1 : 0);
    return 0;
}

void voiceFrame(Board &board, Object &block, VoiceActivity &detector, Samples frame) {
    const bool loud = signal::energy(frame) / static_cast<double>(frame.size()) >= meanPowerFloor(detector.floorDb);
    if (loud) {
        detector.quietMs = 0;
        detector.loudMs += kVoiceFrameMs;
        if (detector.loudMs >= detector.minSpeechMs) detector.voice = true;
        return;
    }
    detector.loudMs = 0;
    if (!detector.voice) return;
    detector.quietMs += kVoiceFrameMs;
    if (detector.quietMs < detector.hangoverMs) return;
    detector.voice = false;
    board.post(block, kEventSilence);
}

// ---- Comfort noise generator --------------------------------------------------

constexpr uint32_t kDefaultNoiseDb = 60;

struct ComfortNoise : Block {
    uint32_t levelDb = kDefaultNoiseDb;
    std::optional<signal::EffectSource> noise;  // made by the set-up
};

// param1: noise level in dB below full scale (0: 60; 1..90). Once set up,
// the block plays white noise of that mean power in every frame.
uint32_t comfortNoiseInit(Call &call) {
    const auto level = setting(call.in.u32(ComfortNoiseGeneratorInit::kParam1), kDefaultNoiseDb, 1, kLowestFloorDb);
    if (!level) return VB_FAILURE(kOutOfRange);
    auto &noise = call.object->as<ComfortNoise>();
    noise.levelDb = *level;
    // White noise uniform within ±peak has the mean power peak² / 3.
    const double peak = std::min(std::sqrt(3.0 * meanPowerFloor(*level)), 32767.0);
    noise.noise.emplace(signal::Effect::Noise, static_cast<int16_t>(std::lround(peak)), 0);
    noise.setUp = kBasicSetUp;
    return 0;
}

bool makesNoise(const Object &block) { return block.type == kComfortNoiseGenerator; }

bool playNoise(Board &, Object &block, std::span<int16_t> out) {
    auto &noise = block.as<ComfortNoise>();
    if (!noise.noise || !running(block)) return false;
    for (int16_t &s : out) s = noise.noise->next();
    return true;
}

constexpr Row kRows[] = {
    row<VoiceActivityDetectorInit>(only<kVoiceActivityDetector, voiceInit>),
    row<VoiceActivityDetectorStatus>(only<kVoiceActivityDetector, voiceStatus>),
    row<ComfortNoiseGeneratorInit>(only<kComfortNoiseGenerator, comfortNoiseInit>),
    row<VoiceActivityDetectorInitEx>(only<kVoiceActivityDetector, voiceInitEx>),
};

constexpr const Audio &kDetector = kListening<kVoiceActivityDetector, inFrames<VoiceActivity, kVoiceFrame, voiceFrame>>;
constexpr Audio kAudio{kDetector.takes, kDetector.arrive, makesNoise, playNoise};

}  // namespace

const Family kCstVoiceFamily = blockPair<kVoiceActivityDetector, VoiceActivity, kComfortNoiseGenerator, ComfortNoise>(
    "Telephony voice", kRows, kAudio);

}  // namespace vb
