// Telephony blocks of the virtual board.
//
// Block types (RYN_VB_BLOCK_CST_...), created on a DSP with
// RynDrvCreateLogicalDevice: DTMF dialler, voice activity detector, DTMF
// detector, comfort noise generator, voice mixer, echo canceller,
// call-progress tone detector and generator, caller identification detector.
// Types after these, up to 139, are kept for later blocks: such a block can be created but
// answers no request. Each type answers its own requests only; another
// type's request is refused as not provided (the function numbers of these
// blocks and of the DSP's POTS block are shared; the block type tells them
// apart).
//
// A block runs once set up: before its set-up a generator refuses to play
// (error 13), a detector ignores the samples it is given and its status
// reads 0. A set-up may be repeated; it starts the block afresh.
//
// Signals are 16-bit samples at 8 kHz. A generator plays all of its samples
// during the request that asks for them, in 20 ms frames handed to the blocks
// connected after it (Board::deliver), and the board's clock advances with
// each frame, so that event times follow the samples. Detectors analyse
// their input in frames with a small Goertzel bank: a frequency is present in
// a frame when it holds a tenth of the frame's energy or more (a lone tone
// holds a half, each of two equal tones a quarter) and the frame's level is
// above the detector's floor. The caller identification detector is the
// exception: it demodulates FSK sample by sample (see its section).
// Attribute 31 hands the application's samples to a block that takes them.
//
// The sources, the DTMF digits and the Goertzel measure are the tone
// family's (Signal.h); what is the telephony blocks' own is their framing,
// their floors and their rules for what a frame holds.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "Families.h"
#include "Signal.h"

namespace vb {
namespace {

enum TelephonyType : int32_t {
    kDtmfDialler = RYN_VB_BLOCK_CST_DTMF_DIALLER,
    kVoiceActivityDetector = RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR,
    kDtmfDetector = RYN_VB_BLOCK_CST_DTMF_DETECTOR,
    kComfortNoiseGenerator = RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR,
    kVoiceMixer = RYN_VB_BLOCK_CST_VOICE_MIXER,
    kEchoCanceller = RYN_VB_BLOCK_CST_ECHO_CANCELLER,
    kCptDetector = RYN_VB_BLOCK_CST_CPT_DETECTOR,
    kCptGenerator = RYN_VB_BLOCK_CST_CPT_GENERATOR,
    kCallerIdDetector = RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR,
};

// Request fields common to the set-ups; status replies carry the status at 8.
constexpr uint32_t kParam1 = 20;
constexpr uint32_t kParam2 = 24;
constexpr uint32_t kStatus = 8;

// RYN_VB_ATTR_CST_SET_UP: how the block was set up.
enum SetUp : uint32_t { kNotSetUp = RYN_VB_CST_NOT_SET_UP, kBasicSetUp = RYN_VB_CST_BASIC, kExtendedSetUp = RYN_VB_CST_EXTENDED };

struct Block : ObjectState {
    uint32_t setUp = kNotSetUp;
};

int16_t signedWord(const Input &in, uint32_t offset) { return static_cast<int16_t>(in.u16(offset)); }

// ---- Signals --------------------------------------------------------------

constexpr double kFullScale = 32767;
constexpr double kPresentShare = 0.1;
constexpr size_t kPlayFrame = 160;     // 20 ms
constexpr size_t kLongestFrame = 400;  // the call-progress detector's 50 ms

// Levels are given in dB below full scale (a sine's peak at full scale),
// where the tone family's are below its reference peak.
double amplitude(uint32_t dbBelow) { return signal::peakOf(dbBelow) * kFullScale / signal::kReferencePeak; }
double meanPowerFloor(uint32_t dbBelow) {
    const double peak = amplitude(dbBelow);
    return peak * peak / 2;  // a sine's
}

// The generators' oscillators always play at this peak, two of them within
// 16 bits, and their sum is scaled to the level asked for: the integer
// oscillator keeps its frequency only at peaks well above its rounding, and
// the quietest level (a peak of 33) is not.
constexpr double kOscillatorPeak = 16383;
double scaleOf(uint32_t dbBelow) { return amplitude(dbBelow) / kOscillatorPeak; }

// The frequencies of `list` present in the frame: bit i for list[i]; none in
// a frame quieter than `floor` (a mean power).
uint32_t presentMask(std::span<const int16_t> frame, std::span<const double> list, double floor) {
    const double total = signal::energy(frame);
    if (frame.empty() || total / static_cast<double>(frame.size()) < floor) return 0;
    uint32_t mask = 0;
    for (size_t i = 0; i < list.size() && i < 32; ++i)
        if (signal::powerAt(frame, list[i]) / (static_cast<double>(frame.size()) * total) >= kPresentShare)
            mask |= 1u << i;
    return mask;
}

// Collects a detector's input into frames of its analysis length.
class Framer {
public:
    template <typename OnFrame>
    void feed(std::span<const int16_t> samples, size_t length, OnFrame &&onFrame) {
        length = std::min(length, buffer_.size());
        for (int16_t sample : samples) {
            buffer_[count_++] = sample;
            if (count_ < length) continue;
            count_ = 0;
            onFrame(std::span<const int16_t>(buffer_.data(), length));
        }
    }

private:
    std::array<int16_t, kLongestFrame> buffer_{};
    size_t count_ = 0;
};

// Plays the next `ms` of `source`, scaled by `scale`, from `block` on the
// board's sample clock.
void play(Board &board, const Object &block, signal::Source &source, double scale, uint32_t ms) {
    const auto next = [&] {
        return static_cast<int16_t>(std::clamp(std::lround(source.next() * scale), -32768l, 32767l));
    };
    std::array<int16_t, kPlayFrame> frame{};
    for (uint64_t left = signal::samplesOf(ms); left > 0;) {
        const size_t count = static_cast<size_t>(std::min<uint64_t>(left, frame.size()));
        std::generate_n(frame.begin(), count, next);
        left -= count;
        board.deliver(block, std::span<const int16_t>(frame.data(), count));
        board.advance(count * kSampleInterval);
    }
}

// Output levels of the generators: 6 to 60 dB below full scale for each
// frequency, 10 by default.
constexpr uint32_t kDefaultLevelDb = 10, kLoudestDb = 6, kQuietestDb = 60;
// Detector floors: 1 to 90 dB below full scale, 40 by default.
constexpr uint32_t kDefaultFloorDb = 40, kHighestFloorDb = 1, kLowestFloorDb = 90;

// ---- DTMF dialler and detector --------------------------------------------

constexpr uint32_t kMaxDialDigits = 127;
constexpr uint32_t kDialDigits = 20, kDialCount = 148, kDialOnMs = 152, kDialPauseMs = 156;
constexpr uint32_t kDefaultDigitMs = 80, kShortestDigitMs = 20, kLongestDigitMs = 2000;
constexpr size_t kDtmfFrame = 205;  // 25.6 ms
constexpr uint32_t kDefaultMinDigitMs = 40, kShortestMinDigitMs = 10, kLongestMinDigitMs = 1000;

// The key of a frame with one row and one column frequency, else 0.
char dtmfKey(uint32_t mask) {
    const uint32_t rows = mask & ((1u << signal::kDtmfGroup) - 1), columns = mask >> signal::kDtmfGroup;
    if (std::popcount(rows) != 1 || std::popcount(columns) != 1) return 0;
    const int symbol = static_cast<int>(signal::kDtmfGroup) * std::countr_zero(rows) + std::countr_zero(columns);
    return static_cast<char>(signal::DtmfReceiver::character(symbol));
}

struct DtmfDialler : Block {
    uint32_t levelDb = kDefaultLevelDb;
};

// param1: level of each frequency in dB below full scale (0: 10; 6..60).
uint32_t diallerInit(Call &call) {
    const auto level = setting(call.in.u32(kParam1), kDefaultLevelDb, kLoudestDb, kQuietestDb);
    if (!level) return VB_FAILURE(kOutOfRange);
    auto &dialler = call.object->as<DtmfDialler>();
    dialler.levelDb = *level;
    dialler.setUp = kBasicSetUp;
    return 0;
}

// Each digit's pair for the digit time, then the pause; digit by digit, so
// that the frames played break where the digits and pauses do.
void playDigits(Board &board, const Object &block, std::span<const uint8_t> digits, uint32_t levelDb, uint32_t onMs,
                uint32_t pauseMs) {
    const signal::DialTiming timing{signal::samplesOf(onMs), signal::samplesOf(pauseMs), 0, kOscillatorPeak,
                                    kOscillatorPeak};
    for (uint8_t key : digits) {
        const signal::Pair pair = *signal::dtmfPair(key);
        signal::Playback digit(signal::dial({&pair, 1}, timing));
        play(board, block, digit, scaleOf(levelDb), onMs);
        play(board, block, digit, scaleOf(levelDb), pauseMs);
    }
}

// The digits 0-9, *, #, A-D (either case); digit time at 152 (0: 80 ms;
// 20..2000), pause after each digit at 156 (0: the digit time; at most 2000).
// Every character is checked before anything is played.
uint32_t dtmfDial(Call &call) {
    auto &dialler = call.object->as<DtmfDialler>();
    if (dialler.setUp == kNotSetUp) return VB_FAILURE(kFailed);
    const uint32_t count = call.in.u32(kDialCount);
    if (count > kMaxDialDigits) return VB_FAILURE(kOutOfRange);
    const auto onMs = setting(call.in.u32(kDialOnMs), kDefaultDigitMs, kShortestDigitMs, kLongestDigitMs);
    const auto pauseMs = setting(call.in.u32(kDialPauseMs), onMs.value_or(0), 1, kLongestDigitMs);
    if (!onMs || !pauseMs) return VB_FAILURE(kOutOfRange);
    const auto digits = call.in.bytes(kDialDigits, count);
    if (!std::all_of(digits.begin(), digits.end(), [](uint8_t key) { return signal::dtmfPair(key).has_value(); }))
        return VB_FAILURE(kOutOfRange);
    playDigits(call.board, *call.object, digits, dialler.levelDb, *onMs, *pauseMs);
    call.board.post(*call.object, kEventDialDone, count);
    return 0;
}

struct DtmfDetector : Block {
    uint32_t minDigitMs = kDefaultMinDigitMs;
    uint32_t floorDb = kDefaultFloorDb;
    Framer framer;
    char candidate = 0;
    uint32_t frames = 0;  // in a row with the candidate
    char last = 0;        // the status
};

// param1: shortest digit in ms (0: 40; 10..1000); param2: floor in dB below
// full scale (0: 40; 1..90).
uint32_t dtmfDetectorInit(Call &call) {
    const auto minMs = setting(call.in.u32(kParam1), kDefaultMinDigitMs, kShortestMinDigitMs, kLongestMinDigitMs);
    const auto floor = setting(call.in.u32(kParam2), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    if (!minMs || !floor) return VB_FAILURE(kOutOfRange);
    auto &detector = call.object->as<DtmfDetector>();
    detector = DtmfDetector{};
    detector.minDigitMs = *minMs;
    detector.floorDb = *floor;
    detector.setUp = kBasicSetUp;
    return 0;
}

// The last digit detected, as its character; 0 before the first.
uint32_t dtmfDetectorStatus(Call &call) {
    call.out.u8(kStatus, static_cast<uint8_t>(call.object->as<DtmfDetector>().last));
    return 0;
}

// A digit counts once, when it has lasted the shortest digit time.
void dtmfFrame(Board &board, Object &block, DtmfDetector &detector, std::span<const int16_t> frame) {
    const char key = dtmfKey(presentMask(frame, signal::dtmfFrequencies(), meanPowerFloor(detector.floorDb)));
    if (key != detector.candidate) {
        detector.candidate = key;
        detector.frames = 0;
    }
    if (key == 0) return;
    const uint32_t needed =
        static_cast<uint32_t>((signal::samplesOf(detector.minDigitMs) + kDtmfFrame - 1) / kDtmfFrame);
    if (++detector.frames != std::max(needed, 1u)) return;
    detector.last = key;
    board.post(block, kEventDtmfDigit, static_cast<uint8_t>(key));
}

// ---- Voice activity detector ----------------------------------------------

constexpr size_t kVoiceFrame = 160;  // 20 ms
constexpr uint32_t kVoiceFrameMs = 20;
constexpr uint32_t kDefaultHangoverMs = 200, kLongestHangoverMs = 5000;
constexpr uint32_t kDefaultMinSpeechMs = 20, kLongestMinSpeechMs = 1000;
// The extended set-up's block of 13 words at 20: word 0 its length, 1 the
// floor, 2 the hangover, 3 the shortest speech, 4..12 not used here.
constexpr int16_t kVoiceWords = 13;
constexpr uint32_t kVoiceLength = 20, kVoiceFloor = 22, kVoiceHangover = 24, kVoiceMinSpeech = 26;

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
    const auto floor = setting(call.in.u32(kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    if (!floor) return VB_FAILURE(kOutOfRange);
    return startVoice(call, kBasicSetUp, *floor, kDefaultHangoverMs, kDefaultMinSpeechMs);
}

// Word 0 must be 13; words 1 to 3 as above, 0 asking for the default, a
// negative value refused; param2 (at 46) is not used.
uint32_t voiceInitEx(Call &call) {
    if (signedWord(call.in, kVoiceLength) != kVoiceWords) return VB_FAILURE(kOutOfRange);
    const auto word = [&](uint32_t offset) { return static_cast<uint32_t>(signedWord(call.in, offset)); };
    const auto floor = setting(word(kVoiceFloor), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto hangover = setting(word(kVoiceHangover), kDefaultHangoverMs, 1, kLongestHangoverMs);
    const auto minSpeech = setting(word(kVoiceMinSpeech), kDefaultMinSpeechMs, 1, kLongestMinSpeechMs);
    if (!floor || !hangover || !minSpeech) return VB_FAILURE(kOutOfRange);
    return startVoice(call, kExtendedSetUp, *floor, *hangover, *minSpeech);
}

// 1 while voice is present (from the shortest speech time on, until the
// hangover has passed without it), else 0.
uint32_t voiceStatus(Call &call) {
    call.out.u32(kStatus, call.object->as<VoiceActivity>().voice ? 1 : 0);
    return 0;
}

void voiceFrame(Board &board, Object &block, VoiceActivity &detector, std::span<const int16_t> frame) {
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

// ---- Comfort noise generator, voice mixer, echo canceller ------------------

constexpr uint32_t kDefaultNoiseDb = 60;

struct ComfortNoise : Block {
    uint32_t levelDb = kDefaultNoiseDb;
};

// param1: noise level in dB below full scale (0: 60; 1..90). The board has no
// free-running sample clock, so the block keeps its level and plays nothing.
uint32_t comfortNoiseInit(Call &call) {
    const auto level = setting(call.in.u32(kParam1), kDefaultNoiseDb, 1, kLowestFloorDb);
    if (!level) return VB_FAILURE(kOutOfRange);
    auto &noise = call.object->as<ComfortNoise>();
    noise.levelDb = *level;
    noise.setUp = kBasicSetUp;
    return 0;
}

constexpr uint32_t kUnityGain = 256, kLargestGain = 4096;  // gains in 1/256

// A block that hands its input on to the blocks after it (the mixer, the
// echo canceller). A loop of such blocks ends at the block already passing.
struct PassThrough : Block {
    uint32_t gain = kUnityGain;
    bool passing = false;
};

void passOn(Board &board, Object &block, PassThrough &state, std::span<const int16_t> samples) {
    if (state.setUp == kNotSetUp || state.passing) return;
    std::vector<int16_t> scaled(samples.size());
    std::transform(samples.begin(), samples.end(), scaled.begin(), [&](int16_t x) {
        return static_cast<int16_t>(std::clamp<int64_t>(int64_t{x} * state.gain / kUnityGain, -32768, 32767));
    });
    state.passing = true;
    board.deliver(block, scaled);
    state.passing = false;
}

constexpr int32_t kMixSlots = 128;
constexpr uint32_t kMixItems = 20, kMixGain = 532, kMixValues = 536, kMixCount = 794;

struct VoiceMixer : PassThrough {
    std::vector<uint32_t> inputs;      // handles of the blocks mixed
    std::vector<uint16_t> inputGains;  // in 1/256, kept with the inputs
};

// param1: output gain in 1/256 (0: unity; at most 4096); param2 not used.
uint32_t mixerInit(Call &call) {
    const auto gain = setting(call.in.u32(kParam1), kUnityGain, 1, kLargestGain);
    if (!gain) return VB_FAILURE(kOutOfRange);
    auto &mixer = call.object->as<VoiceMixer>();
    mixer = VoiceMixer{};
    mixer.gain = *gain;
    mixer.setUp = kBasicSetUp;
    return 0;
}

// mixItems: the handles of the input blocks (objects of the board, not the
// mixer itself); param2: output gain as above; mixValues: each input's gain
// in 1/256; param4 (at 792) not used; mixCount 0..128. Once inputs are
// listed, the mixer passes on only what they play, each scaled by its own
// gain and then by the output gain; with none listed (the basic set-up, or a
// count of 0) it passes on whatever reaches it, scaled by the output gain.
uint32_t mixerInitEx(Call &call) {
    const int32_t count = call.in.i32(kMixCount);
    if (count < 0 || count > kMixSlots) return VB_FAILURE(kOutOfRange);
    const auto gain = setting(call.in.u32(kMixGain), kUnityGain, 1, kLargestGain);
    if (!gain) return VB_FAILURE(kOutOfRange);
    VoiceMixer mixed;
    for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) {
        const uint32_t handle = call.in.u32(kMixItems + 4 * i);
        if (handle == call.object->handle || call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
        mixed.inputs.push_back(handle);
        mixed.inputGains.push_back(call.in.u16(kMixValues + 2 * i));
    }
    mixed.gain = *gain;
    mixed.setUp = kExtendedSetUp;
    call.object->as<VoiceMixer>() = std::move(mixed);
    return 0;
}

// Samples that reach the mixer from `from` (0: the application).
void mix(Board &board, Object &block, std::span<const int16_t> samples, uint32_t from) {
    const VoiceMixer &mixer = block.as<VoiceMixer>();
    if (mixer.inputs.empty()) return passOn(board, block, block.as<VoiceMixer>(), samples);
    const auto input = std::find(mixer.inputs.begin(), mixer.inputs.end(), from);
    if (input == mixer.inputs.end()) return;  // not one of the inputs mixed
    const uint32_t gain = mixer.inputGains[static_cast<size_t>(input - mixer.inputs.begin())];
    std::vector<int16_t> scaled(samples.size());
    std::transform(samples.begin(), samples.end(), scaled.begin(), [&](int16_t x) {
        return static_cast<int16_t>(std::clamp<int64_t>(int64_t{x} * gain / kUnityGain, -32768, 32767));
    });
    passOn(board, block, block.as<VoiceMixer>(), scaled);
}

constexpr uint32_t kDefaultTailMs = 64, kLongestTailMs = 128;

struct EchoCanceller : PassThrough {
    uint32_t tailMs = kDefaultTailMs;
    uint32_t flags = 0;
};

// param1: echo tail in ms (0: 64; 1..128); param2: flags, kept. The board's
// lines make no echo, so the canceller hands its input on unchanged.
uint32_t echoInit(Call &call) {
    const auto tail = setting(call.in.u32(kParam1), kDefaultTailMs, 1, kLongestTailMs);
    if (!tail) return VB_FAILURE(kOutOfRange);
    auto &canceller = call.object->as<EchoCanceller>();
    canceller.tailMs = *tail;
    canceller.flags = call.in.u32(kParam2);
    canceller.setUp = kBasicSetUp;
    return 0;
}

// ---- Call-progress tones --------------------------------------------------

// The tones of the generator, and of the detector's built-in table.
struct ProgressTone {
    uint32_t number;
    signal::Pair pair;     // 0 Hz: none
    uint32_t onMs, offMs;  // offMs 0: a steady tone
};
constexpr uint32_t kNoTone = RYN_VB_CPT_SILENCE;
constexpr ProgressTone kProgressTones[] = {
    {RYN_VB_CPT_DIAL, {350, 440}, 0, 0},
    {RYN_VB_CPT_BUSY, {480, 620}, 500, 500},
    {RYN_VB_CPT_RINGBACK, {440, 480}, 2000, 4000},
    {RYN_VB_CPT_REORDER, {480, 620}, 250, 250},  // congestion
};
constexpr double kProgressFrequencies[] = {350, 440, 480, 620};
constexpr uint32_t kSteadyToneMs = 500;  // a steady tone is recognised after this long
constexpr uint32_t kDefaultSteadyLengthMs = 1000;
constexpr uint32_t kDefaultCycles = 2;
constexpr uint32_t kLongestToneMs = 60000;

const ProgressTone *progressTone(uint32_t number) {
    for (const ProgressTone &tone : kProgressTones)
        if (tone.number == number) return &tone;
    return nullptr;
}

// ---- Call-progress tone generator

struct CptGenerator : Block {
    uint32_t levelDb = kDefaultLevelDb;
    uint32_t lengthMs = 0;  // 0: the tone's own length
};

// A tone's bursts and pauses (steady without pauses), each burst from the
// start of its oscillators; silence for a tone without frequencies.
signal::ToneBurst progressSource(const ProgressTone &tone) {
    std::vector<signal::Oscillator> oscillators;
    for (double hertz : {tone.pair.low, tone.pair.high})
        if (hertz > 0) oscillators.push_back(signal::Oscillator::tone(hertz, kOscillatorPeak));
    return signal::ToneBurst(std::move(oscillators), signal::samplesOf(tone.onMs), signal::samplesOf(tone.offMs),
                             tone.offMs != 0);
}

// Plays `lengthMs` of the tone at `levelDb`, burst by burst and pause by pause.
void playCadence(Board &board, const Object &block, const ProgressTone &tone, uint32_t levelDb, uint32_t lengthMs) {
    signal::ToneBurst source = progressSource(tone);
    const double scale = scaleOf(levelDb);
    if (tone.offMs == 0) return play(board, block, source, scale, lengthMs);
    for (uint32_t done = 0; done < lengthMs;) {
        const uint32_t on = std::min(tone.onMs, lengthMs - done);
        play(board, block, source, scale, on);
        done += on;
        const uint32_t off = std::min(tone.offMs, lengthMs - done);
        play(board, block, source, scale, off);
        done += off;
    }
}

// param1: level of each frequency as for the DTMF dialler; param2: length of
// every tone played, in ms (0: two cadence cycles, one second of a steady
// tone; at most 60000).
uint32_t cptGeneratorInit(Call &call) {
    const auto level = setting(call.in.u32(kParam1), kDefaultLevelDb, kLoudestDb, kQuietestDb);
    const uint32_t length = call.in.u32(kParam2);
    if (!level || length > kLongestToneMs) return VB_FAILURE(kOutOfRange);
    auto &generator = call.object->as<CptGenerator>();
    generator.levelDb = *level;
    generator.lengthMs = length;
    generator.setUp = kBasicSetUp;
    return 0;
}

// param1: the tone number (0 plays silence); "Sequence sent" follows with the
// number in word 5.
uint32_t cptGenerateTone(Call &call) {
    auto &generator = call.object->as<CptGenerator>();
    if (generator.setUp == kNotSetUp) return VB_FAILURE(kFailed);
    const uint32_t number = call.in.u32(kParam1);
    const ProgressTone silence{kNoTone, {}, 0, 0};
    const ProgressTone *tone = number == kNoTone ? &silence : progressTone(number);
    if (tone == nullptr) return VB_FAILURE(kOutOfRange);
    const uint32_t ownLength = tone->offMs == 0 ? kDefaultSteadyLengthMs : kDefaultCycles * (tone->onMs + tone->offMs);
    const uint32_t length = generator.lengthMs != 0 ? generator.lengthMs : ownLength;
    playCadence(call.board, *call.object, *tone, generator.levelDb, length);
    call.board.post(*call.object, kEventSequenceDone, number);
    return 0;
}

// ---- Call-progress tone detector
//
// The detector follows a table of tones. Each tone is a list of steps; a step
// is a run of frames in which exactly the step's frequencies of the table's
// list are present (none for a pause), lasting from its shortest to its
// longest time. A tone is recognised when its last step has lasted its
// shortest time after the steps before it, in order; the detector then posts
// "Call progress tone detected" with the tone's number in word 5, unless the
// number is the one it reported last. Its status is that number. After 8 s
// without any of the frequencies it posts "Tone ended" with the number and
// its status returns to 0.

constexpr size_t kCptFrame = 400;  // 50 ms: 20 Hz apart at 8 kHz
constexpr uint32_t kCptFrameMs = 50;
constexpr uint32_t kToneGoneMs = 8000;
constexpr uint32_t kDefaultTolerance = 20, kLargestTolerance = 50;  // percent
constexpr size_t kAwaitRunEnd = SIZE_MAX;

struct CptStep {
    uint32_t minMs, maxMs;  // maxMs 0: no limit
    uint32_t mask;          // the frequencies present
};

struct CptTone {
    uint32_t number;
    std::vector<CptStep> steps;
};

struct CptTable {
    std::vector<double> frequencies;  // Hz
    std::vector<CptTone> tones;
};

struct CptDetector : Block {
    CptTable table;
    uint32_t floorDb = kDefaultFloorDb;
    Framer framer;
    uint32_t runMask = 0, runMs = 0;
    std::vector<size_t> position;  // per tone: the step being matched
    uint32_t last = kNoTone;       // the status
};

uint32_t progressBit(double frequency) {
    const auto *found = std::find(std::begin(kProgressFrequencies), std::end(kProgressFrequencies), frequency);
    return 1u << (found - std::begin(kProgressFrequencies));
}

// The generator's tones: a steady tone after 500 ms, a cadence by one tone
// burst and the pause after it, each within `tolerance` percent.
CptTable builtInTable(uint32_t tolerance) {
    CptTable table{{std::begin(kProgressFrequencies), std::end(kProgressFrequencies)}, {}};
    const auto window = [&](uint32_t ms, uint32_t mask) {
        return CptStep{ms * (100 - tolerance) / 100, ms * (100 + tolerance) / 100, mask};
    };
    for (const ProgressTone &tone : kProgressTones) {
        const uint32_t mask = progressBit(tone.pair.low) | progressBit(tone.pair.high);
        if (tone.offMs == 0) {
            table.tones.push_back({tone.number, {{kSteadyToneMs, 0, mask}}});
        } else {
            table.tones.push_back({tone.number, {window(tone.onMs, mask), window(tone.offMs, 0)}});
        }
    }
    return table;
}

uint32_t startDetector(Call &call, uint32_t setUp, uint32_t floorDb, CptTable table) {
    auto &detector = call.object->as<CptDetector>();
    detector = CptDetector{};
    detector.position.assign(table.tones.size(), 0);
    detector.table = std::move(table);
    detector.floorDb = floorDb;
    detector.setUp = setUp;
    return 0;
}

// param1: floor in dB below full scale (0: 40; 1..90); param2: cadence
// tolerance of the built-in tones in percent (0: 20; 1..50); param3 not used.
uint32_t cptDetectorInit(Call &call) {
    const auto floor = setting(call.in.u32(kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto tolerance = setting(call.in.u32(kParam2), kDefaultTolerance, 1, kLargestTolerance);
    if (!floor || !tolerance) return VB_FAILURE(kOutOfRange);
    return startDetector(call, kBasicSetUp, *floor, builtInTable(*tolerance));
}

// The extended set-up's request: one zeroed block of 335 words from 28, with
// the value list, the table's counts, the segment records and the step area.
constexpr uint32_t kCptBlockLength = 28;
constexpr uint16_t kCptBlockWords = 335;
constexpr uint32_t kCptValues = 36, kCptValueCount = 124, kCptSegmentCount = 126;
constexpr uint32_t kCptSegments = 128, kCptSegmentBytes = 8, kCptSteps = 272, kCptTableCount = 694;
constexpr int16_t kMaxValues = 32, kMaxSegments = 16;
constexpr uint32_t kStepAreaWords = 210, kMaxStepCount = 255, kStepHeaderWords = 3;
constexpr uint32_t kNyquist = 4000;

// A step: shortest time, longest time (0: none), a word not used here, then
// four bits per value of the list, value i in bits 4(i mod 4).. of word
// 3 + i / 4: nonzero when the value's frequency is present in the step.
CptStep readStep(const Input &in, uint32_t offset, uint32_t valueCount) {
    CptStep step{in.u16(offset), in.u16(offset + 2), 0};
    for (uint32_t i = 0; i < valueCount; ++i) {
        const uint32_t word = in.u16(offset + 2 * (kStepHeaderWords + i / 4));
        if (((word >> (4 * (i % 4))) & 0xFu) != 0) step.mask |= 1u << i;
    }
    return step;
}

// A segment is a tone: its number, its step count, where its steps start in
// the step area and how many words they take (count × words per step).
uint32_t readSegment(const Input &in, uint32_t index, uint32_t valueCount, CptTable &table) {
    const uint32_t record = kCptSegments + kCptSegmentBytes * index;
    const uint32_t count = in.u16(record + 2), start = in.u16(record + 4), words = in.u16(record + 6);
    const uint32_t stepWords = kStepHeaderWords + (valueCount + 3) / 4;
    if (count > kMaxStepCount || start + words > kStepAreaWords) return VB_FAILURE(kOutOfRange);
    if (words != count * stepWords) return VB_FAILURE(kMalformed);
    CptTone tone{in.u16(record), {}};
    for (uint32_t k = 0; k < count; ++k)
        tone.steps.push_back(readStep(in, kCptSteps + 2 * (start + k * stepWords), valueCount));
    table.tones.push_back(std::move(tone));
    return 0;
}

// param1 and param2 as for the set-up; a negative table count asks for the
// built-in tones. The value list holds the frequencies in Hz (1..3999), one
// segment per tone. The table's other words, the extra block, setting1 to 3
// and param4 are not used by this detector.
uint32_t cptDetectorInitEx(Call &call) {
    const Input &in = call.in;
    if (in.u16(kCptBlockLength) != kCptBlockWords) return VB_FAILURE(kMalformed);
    const int16_t tableCount = signedWord(in, kCptTableCount);
    if (tableCount == 0 || tableCount > 1) return VB_FAILURE(kOutOfRange);
    const auto floor = setting(in.u32(kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto tolerance = setting(in.u32(kParam2), kDefaultTolerance, 1, kLargestTolerance);
    if (!floor || !tolerance) return VB_FAILURE(kOutOfRange);
    if (tableCount < 0) return startDetector(call, kExtendedSetUp, *floor, builtInTable(*tolerance));

    const int16_t valueCount = signedWord(in, kCptValueCount), segmentCount = signedWord(in, kCptSegmentCount);
    if (valueCount < 1 || valueCount > kMaxValues || segmentCount > kMaxSegments) return VB_FAILURE(kOutOfRange);
    CptTable table;
    for (int16_t i = 0; i < valueCount; ++i) {
        const uint16_t frequency = in.u16(kCptValues + 2 * static_cast<uint32_t>(i));
        if (frequency == 0 || frequency >= kNyquist) return VB_FAILURE(kOutOfRange);
        table.frequencies.push_back(frequency);
    }
    for (int16_t j = 0; j < segmentCount; ++j) {
        const uint32_t refused = readSegment(in, static_cast<uint32_t>(j), static_cast<uint32_t>(valueCount), table);
        if (refused != 0) return refused;
    }
    return startDetector(call, kExtendedSetUp, *floor, std::move(table));
}

uint32_t cptDetectorStatus(Call &call) {
    call.out.u32(kStatus, call.object->as<CptDetector>().last);
    return 0;
}

bool fits(const CptStep &step, uint32_t mask, uint32_t ms) {
    return step.mask == mask && ms >= step.minMs && (step.maxMs == 0 || ms <= step.maxMs);
}

void recognised(Board &board, Object &block, CptDetector &detector, const CptTone &tone) {
    if (tone.number == detector.last) return;
    detector.last = tone.number;
    board.post(block, kEventCallProgress, tone.number);
}

// A run of frames has ended: each tone's next step takes it, or the tone
// starts over (with this run as its first step when it fits).
void runEnded(Board &board, Object &block, CptDetector &detector) {
    if (detector.runMs == 0) return;
    for (size_t t = 0; t < detector.table.tones.size(); ++t) {
        const auto &steps = detector.table.tones[t].steps;
        size_t &position = detector.position[t];
        if (steps.empty()) continue;
        if (position == kAwaitRunEnd) {
            position = 0;
        } else if (fits(steps[position], detector.runMask, detector.runMs)) {
            if (++position == steps.size()) {
                recognised(board, block, detector, detector.table.tones[t]);
                position = 0;
            }
        } else {
            position = steps.size() > 1 && fits(steps[0], detector.runMask, detector.runMs) ? 1 : 0;
        }
    }
}

// A tone's last step counts as soon as it has lasted its shortest time.
void runGoesOn(Board &board, Object &block, CptDetector &detector) {
    for (size_t t = 0; t < detector.table.tones.size(); ++t) {
        const auto &steps = detector.table.tones[t].steps;
        size_t &position = detector.position[t];
        if (position + 1 != steps.size() || !fits(steps[position], detector.runMask, detector.runMs)) continue;
        recognised(board, block, detector, detector.table.tones[t]);
        position = kAwaitRunEnd;
    }
    if (detector.runMask == 0 && detector.runMs == kToneGoneMs && detector.last != kNoTone) {
        board.post(block, kEventToneEnded, detector.last);
        detector.last = kNoTone;
    }
}

void cptFrame(Board &board, Object &block, CptDetector &detector, std::span<const int16_t> frame) {
    const uint32_t mask = presentMask(frame, detector.table.frequencies, meanPowerFloor(detector.floorDb));
    if (mask != detector.runMask) {
        runEnded(board, block, detector);
        detector.runMask = mask;
        detector.runMs = 0;
    }
    detector.runMs += kCptFrameMs;
    runGoesOn(board, block, detector);
}

// ---- Caller identification detector ---------------------------------------
//
// The detector demodulates its input (Signal.h's FSK receiver) and reads
// the messages in it. A message begins with the first byte after at least
// 10 bits of steady mark (what comes before, the channel seizure, is passed
// over): its type, the length of its body, the body, and a checksum that
// brings the sum of all its bytes to 0 modulo 256. Once the checksum byte
// is in, the detector keeps the message's fields and posts "Caller
// identification received": word 5 the type, word 6 1 when the checksum
// was right (0 when not: the fields are kept all the same), word 7 the
// body's length.
//
// Type 0x04 (single data message): 8 digits of date and time, MMDDhhmm,
// then the number. Type 0x80 (multiple data message): parameters of a type,
// a length and the value; 0x01 date and time, 0x02 the number (0x04 why
// there is none, 'O' or 'P'), 0x07 the name (0x08 why there is none); other
// parameters are passed over, and the parameters end at one that runs past
// the body. Other message types leave the fields empty.

constexpr uint32_t kBell202 = RYN_VB_FSK_BELL202, kV23 = RYN_VB_FSK_V23;
constexpr size_t kDateDigits = 8;
constexpr uint8_t kSingleMessage = RYN_VB_CID_SINGLE_MESSAGE, kMultipleMessage = RYN_VB_CID_MULTIPLE_MESSAGE;
enum Parameter : uint8_t { kDate = 0x01, kNumber = 0x02, kNoNumber = 0x04, kName = 0x07, kNoName = 0x08 };

struct CallerId {
    std::string date, number, name;
    bool checksumGood = false;
};

struct CallerIdDetector : Block {
    uint32_t format = kBell202;
    uint32_t setting2 = 0;
    std::optional<signal::FskReceiver> receiver;
    std::vector<uint8_t> message;  // the message being received, from its type
    bool receiving = false;
    CallerId last;
};

// param1: the signal's format, 0 Bell 202 or 1 V.23; param2 kept. The
// carrier floor is the telephony detectors' default, 40 dB below full scale.
uint32_t callerIdInit(Call &call) {
    const uint32_t format = call.in.u32(kParam1);
    if (format != kBell202 && format != kV23) return VB_FAILURE(kOutOfRange);
    auto &detector = call.object->as<CallerIdDetector>();
    detector = CallerIdDetector{};
    detector.format = format;
    detector.setting2 = call.in.u32(kParam2);
    detector.receiver.emplace(static_cast<signal::FskMode>(format), amplitude(kDefaultFloorDb));
    detector.setUp = kBasicSetUp;
    return 0;
}

// Printable ASCII as it is, any other byte as '?'.
std::string textOf(std::span<const uint8_t> bytes) {
    std::string text;
    for (uint8_t b : bytes) text += b >= 0x20 && b < 0x7F ? static_cast<char>(b) : '?';
    return text;
}

void readSingle(std::span<const uint8_t> body, CallerId &id) {
    const size_t date = std::min(body.size(), kDateDigits);
    id.date = textOf(body.first(date));
    id.number = textOf(body.subspan(date));
}

// The field a parameter fills, none for a parameter passed over.
std::string *fieldOf(CallerId &id, uint8_t parameter) {
    if (parameter == kDate) return &id.date;
    if (parameter == kNumber || parameter == kNoNumber) return &id.number;
    if (parameter == kName || parameter == kNoName) return &id.name;
    return nullptr;
}

void readMultiple(std::span<const uint8_t> body, CallerId &id) {
    for (size_t at = 0; body.size() - at >= 2 && body.size() - at - 2 >= body[at + 1]; at += 2 + body[at + 1])
        if (std::string *field = fieldOf(id, body[at])) *field = textOf(body.subspan(at + 2, body[at + 1]));
}

void messageReceived(Board &board, Object &block, CallerIdDetector &detector) {
    const std::span<const uint8_t> message = detector.message;
    const std::span<const uint8_t> body = message.subspan(2, message[1]);
    CallerId id;
    uint8_t sum = 0;
    for (uint8_t b : message) sum = static_cast<uint8_t>(sum + b);
    id.checksumGood = sum == 0;
    if (message[0] == kSingleMessage) readSingle(body, id);
    if (message[0] == kMultipleMessage) readMultiple(body, id);
    detector.last = std::move(id);
    board.post(block, kEventCallerId, message[0], detector.last.checksumGood ? 1 : 0, message[1]);
}

// Type, length, body and checksum: the message is complete at 3 + length bytes.
void callerIdByte(Board &board, Object &block, CallerIdDetector &detector, const signal::FskByte &byte) {
    if (byte.afterMark) {
        detector.message.clear();
        detector.receiving = true;
    }
    if (!detector.receiving) return;
    detector.message.push_back(byte.value);
    if (detector.message.size() < 2 || detector.message.size() < detector.message[1] + 3u) return;
    detector.receiving = false;
    messageReceived(board, block, detector);
}

void callerIdReceive(Board &board, Object &block, std::span<const int16_t> samples) {
    auto &detector = block.as<CallerIdDetector>();
    if (!detector.receiver) return;  // not set up
    std::vector<signal::FskByte> bytes;
    detector.receiver->run(samples, bytes);
    for (const signal::FskByte &byte : bytes) callerIdByte(board, block, detector, byte);
}

// ---- Tables ---------------------------------------------------------------

constexpr Row kRows[] = {
    {0x99B, 24, 12, only<kDtmfDialler, diallerInit>},
    {0x99C, 160, 12, only<kDtmfDialler, dtmfDial>},
    {0x99D, 24, 12, only<kVoiceActivityDetector, voiceInit>},
    {0x99E, 20, 16, only<kVoiceActivityDetector, voiceStatus>},
    {0x99F, 28, 12, only<kDtmfDetector, dtmfDetectorInit>},
    {0x9A0, 20, 16, only<kDtmfDetector, dtmfDetectorStatus>},
    {0x9A2, 24, 12, only<kComfortNoiseGenerator, comfortNoiseInit>},
    {0x9A3, 28, 12, only<kVoiceMixer, mixerInit>},
    {0x9A4, 28, 12, only<kEchoCanceller, echoInit>},
    {0x9A5, 32, 12, only<kCptDetector, cptDetectorInit>},
    {0x9A6, 20, 16, only<kCptDetector, cptDetectorStatus>},
    {0x9A7, 28, 12, only<kCptGenerator, cptGeneratorInit>},
    {0x9A8, 24, 12, only<kCptGenerator, cptGenerateTone>},
    {0x9B0, 28, 12, only<kCallerIdDetector, callerIdInit>},
    {0x9B1, 798, 12, only<kVoiceMixer, mixerInitEx>},
    {0x9B2, 702, 12, only<kCptDetector, cptDetectorInitEx>},
    {0x9B3, 50, 12, only<kVoiceActivityDetector, voiceInitEx>},
};

// A detector's input, in frames of its analysis length, once it is set up.
template <typename Detector, size_t FrameLength, auto OnFrame>
void analyse(Board &board, Object &block, std::span<const int16_t> samples) {
    auto &detector = block.as<Detector>();
    if (detector.setUp == kNotSetUp) return;
    detector.framer.feed(samples, FrameLength,
                         [&](std::span<const int16_t> frame) { OnFrame(board, block, detector, frame); });
}

std::vector<uint8_t> setUpValue(Call &, Object &object, uint32_t) {
    const auto *block = dynamic_cast<const Block *>(object.data.get());
    return wordValue(block != nullptr ? block->setUp : kNotSetUp);
}

// Attributes 41 to 44 of the caller identification detector (read-only):
// the last message's date and time, number and name (texts, empty when the
// message had none) and whether its checksum was right (Boolean).
const CallerId *lastCallerId(Call &call, Object &object) {
    if (object.type == kCallerIdDetector) return &object.as<CallerIdDetector>().last;
    call.refusal = VB_FAILURE(kNotProvided);
    return nullptr;
}

template <std::string CallerId::*Field>
std::vector<uint8_t> callerIdText(Call &call, Object &object, uint32_t) {
    const CallerId *id = lastCallerId(call, object);
    return id != nullptr ? textValue(id->*Field) : std::vector<uint8_t>{};
}

std::vector<uint8_t> checksumGood(Call &call, Object &object, uint32_t) {
    const CallerId *id = lastCallerId(call, object);
    return id != nullptr ? wordValue(id->checksumGood ? 1 : 0) : std::vector<uint8_t>{};
}

// RYN_VB_ATTR_AUDIO_IN (set only) of a block that takes samples: the application's
// samples (little-endian, an even number of bytes, at most 64 KiB) run
// through the block as if they came from a connection, in 20 ms frames on
// the board's clock.
constexpr uint32_t kAudioBytes = RYN_VB_AUDIO_MAX_BYTES;

bool takesSamples(int32_t type) {
    return type == kVoiceActivityDetector || type == kDtmfDetector || type == kVoiceMixer || type == kEchoCanceller ||
           type == kCptDetector || type == kCallerIdDetector;
}

uint32_t receiveAudio(Call &call, Object &block, std::span<const uint8_t> value) {
    if (!takesSamples(block.type)) return VB_FAILURE(kNotProvided);
    if (value.size() % 2 != 0 || value.size() > kAudioBytes) return VB_FAILURE(kOutOfRange);
    const std::vector<int16_t> samples = signal::fromLittleEndian(value);
    for (size_t at = 0; at < samples.size(); at += kPlayFrame) {
        const auto frame = std::span<const int16_t>(samples).subspan(at, std::min(kPlayFrame, samples.size() - at));
        telephonyReceive(call.board, block, frame, 0);
        call.board.advance(frame.size() * kSampleInterval);
    }
    return 0;
}

std::vector<uint8_t> noAudioOut(Call &call, Object &, uint32_t capacity) {
    if (capacity != 0) call.refusal = VB_FAILURE(kNotProvided);
    return {};
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_AUDIO_IN, RYN_VB_VALUE_BINARY, noAudioOut, receiveAudio},
    {RYN_VB_ATTR_CST_SET_UP, RYN_VB_VALUE_UINT32, setUpValue, nullptr},
    {RYN_VB_ATTR_CID_DATE, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::date>, nullptr},
    {RYN_VB_ATTR_CID_NUMBER, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::number>, nullptr},
    {RYN_VB_ATTR_CID_NAME, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::name>, nullptr},
    {RYN_VB_ATTR_CID_CHECKSUM_OK, RYN_VB_VALUE_BOOLEAN, checksumGood, nullptr},
};

}  // namespace

Table telephonyTable() { return kRows; }
std::span<const Attribute> telephonyAttributes() { return kAttributes; }

void telephonyReceive(Board &board, Object &block, std::span<const int16_t> samples, uint32_t from) {
    switch (block.type) {
        case kDtmfDetector:
            return analyse<DtmfDetector, kDtmfFrame, dtmfFrame>(board, block, samples);
        case kVoiceActivityDetector:
            return analyse<VoiceActivity, kVoiceFrame, voiceFrame>(board, block, samples);
        case kCptDetector:
            return analyse<CptDetector, kCptFrame, cptFrame>(board, block, samples);
        case kVoiceMixer:
            return mix(board, block, samples, from);
        case kEchoCanceller:
            return passOn(board, block, block.as<EchoCanceller>(), samples);
        case kCallerIdDetector:
            return callerIdReceive(board, block, samples);
        default:
            return;  // generators take no samples
    }
}

}  // namespace vb
