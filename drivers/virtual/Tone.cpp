// Tone blocks of the virtual board: generators and diallers that synthesise
// 8 kHz samples from exactly what the library sent (the sine-wave
// generator's oscillator coefficients and starting samples, the detectors'
// frequency coefficients), and detectors that run the samples they receive.
// The signal processing itself is in Signal.cpp.
//
// Samples flow three ways: a dial or sequence send plays its whole string
// at once to the connected blocks; RYN_VB_ATTR_AUDIO_OUT renders a generator's
// output for the application (and, for the free-running generators, to the
// connected blocks); RYN_VB_ATTR_AUDIO_IN hands the application's samples to a
// detector. Whatever plays advances the board clock by its duration, 10 ms
// at a time, so that events carry the time they were found.
#include <algorithm>
#include <optional>

#include "Families.h"
#include "Signal.h"

namespace vb {
namespace {

// ---- Request layouts --------------------------------------------------------

constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32;
constexpr uint32_t kConstValue = 24;  // 16 bits
constexpr uint32_t kSineSlots = 24, kSlotBytes = 6, kSineCount = 54, kSineOffTime = 58;
constexpr uint32_t kDtmfGenDuration = 24, kDtmfGenDigit = 28;  // after param1
constexpr uint32_t kDialDigits = 20, kDialCount = 148;
constexpr uint32_t kSequenceEntries = 20, kSequenceCount = 532, kSequenceRepeats = 536;
constexpr uint32_t kFreqCoefficients = 24, kFreqCount = 36, kFreqLevel = 40, kFreqPause = 44, kFreqWindow = 48;
constexpr uint32_t kValueReply = 8;  // 16-bit value, or 8- or 32-bit status

// ---- Limits and defaults ----------------------------------------------------

constexpr uint32_t kMaxSlots = 5, kMaxFrequencies = 6, kMaxDigits = 128, kMaxEntries = 128;
constexpr uint32_t kMaxMs = 60000;        // cadences and durations
constexpr uint32_t kMaxDialMs = 1000;     // dial tones and pauses
constexpr uint32_t kMaxAttenuation = 60;  // generator levels, dB below the reference
constexpr uint32_t kMaxThreshold = 90;    // detector levels
constexpr uint32_t kMaxHold = 0xFFFF, kMaxRepeats = 1000;
constexpr uint64_t kMaxSequenceSamples = 80000;  // 10 s
constexpr uint32_t kAudioBytes = RYN_VB_AUDIO_MAX_BYTES;  // per attribute call
constexpr uint32_t kChunk = 80;                  // samples between clock steps (10 ms)
constexpr uint32_t kMinWindow = signal::kDigitWindow, kMaxWindow = 1024;

struct DialDefaults {
    uint32_t toneMs, pauseMs, firstToneMs;
};
constexpr DialDefaults kDtmfDial{80, 80, 0};
constexpr DialDefaults kMfDial{68, 68, 100};  // KP longer
constexpr uint32_t kDigitMs = 40, kPauseMs = 40, kDetectDb = 30, kSilenceDb = 40, kSilenceMs = 200;
constexpr uint32_t kDialToneMs = 100;
constexpr uint32_t kFskFloorDb = 40;
constexpr size_t kFskKept = 64;  // bytes the FSK detector keeps for RYN_VB_ATTR_FSK_BYTES
constexpr int32_t kMfTwist = 6, kToneTwist = 6;

// The board's dial tone: 350 + 440 Hz, or 425 Hz alone.
constexpr double kDialToneHz[] = {350, 440, 425};
constexpr uint8_t kDialToneSizes[] = {2, 1};
constexpr uint32_t kDialToneWindow = 400;

uint32_t orDefault(uint32_t value, uint32_t fallback) { return value != 0 ? value : fallback; }

// ---- State ------------------------------------------------------------------

// Generators, diallers and the sequence generator.
struct Generator : ObjectState {
    std::unique_ptr<signal::Source> source;  // none: silence
    bool recorded = false;                   // plays back what a dial or send has already delivered
    int16_t last = 0;
    bool configured = false;
    signal::DialTiming timing{};
    uint32_t hold = 1;
};

// Detectors and the value sampler.
struct Detector : ObjectState {
    std::unique_ptr<signal::Receiver> receiver;  // none: nothing to detect yet
    uint8_t lastDigit = 0;
    uint32_t samplerMode = RYN_VB_SAMPLER_LATEST;
    int16_t lastSample = 0, peak = 0;
    uint32_t fskMode = RYN_VB_FSK_BELL202;
    std::optional<signal::FskReceiver> fsk;  // made from fskMode on the first samples
    uint32_t fskCount = 0;
    std::vector<uint8_t> fskLast;  // the last bytes received, the oldest first
};

bool isGenerator(int32_t type) {
    return type == kTypeConstValueGenerator || (type >= kTypeEffectsGenerator && type <= kTypeSequenceGenerator);
}
bool isReceiver(int32_t type) { return type == kTypeValueSampler || type >= kTypeSilenceDetector; }
bool running(const Object &block) { return block.state != kStateDisabled; }

signal::DialTiming dialTiming(const DialDefaults &d, uint32_t lowDb, int32_t twistDb) {
    return {signal::samplesOf(d.toneMs), signal::samplesOf(d.pauseMs), signal::samplesOf(d.firstToneMs),
            signal::peakOf(lowDb), signal::peakOf(static_cast<double>(lowDb) - twistDb)};
}

Generator &generatorOf(Object &block) {
    Generator &g = block.as<Generator>();
    if (!g.configured) {
        g.configured = true;
        g.timing = dialTiming(block.type == kTypeMfDialler ? kMfDial : kDtmfDial, 0, 0);
    }
    return g;
}

signal::Limits limits(uint32_t toneMs, uint32_t pauseMs, uint32_t levelDb, double twistNormal, double twistReverse) {
    return {toneMs, pauseMs, static_cast<double>(levelDb), twistNormal, twistReverse};
}

// Receivers of the detectors, from their settings (0: the default).
std::unique_ptr<signal::Receiver> silenceReceiver(uint32_t db, uint32_t ms) {
    return std::make_unique<signal::SilenceReceiver>(
        limits(orDefault(ms, kSilenceMs), 0, orDefault(db, kSilenceDb), 0, 0));
}

std::unique_ptr<signal::Receiver> dtmfReceiver(uint32_t toneMs, uint32_t pauseMs) {
    signal::Limits l;
    l.toneMs = orDefault(toneMs, kDigitMs);
    l.pauseMs = orDefault(pauseMs, kPauseMs);
    return std::make_unique<signal::DtmfReceiver>(l);
}

std::unique_ptr<signal::Receiver> mfReceiver(uint32_t toneMs, uint32_t pauseMs) {
    return std::make_unique<signal::MfReceiver>(
        limits(orDefault(toneMs, kDigitMs), orDefault(pauseMs, kPauseMs), kDetectDb, kMfTwist, kMfTwist));
}

std::unique_ptr<signal::Receiver> dialToneReceiver(uint32_t ms, uint32_t db) {
    uint16_t coefficients[std::size(kDialToneHz)];
    std::transform(std::begin(kDialToneHz), std::end(kDialToneHz), coefficients, signal::coefficientOf);
    return std::make_unique<signal::ToneReceiver>(
        coefficients, kDialToneSizes, kDialToneWindow,
        limits(orDefault(ms, kDialToneMs), kPauseMs, orDefault(db, kDetectDb), kToneTwist, kToneTwist));
}

// The receiver of a detector, with the defaults until its set-up; none for
// the FSK detector, nor for a frequency detector before its frequencies.
signal::Receiver *receiverOf(Object &block) {
    Detector &d = block.as<Detector>();
    if (d.receiver != nullptr) return d.receiver.get();
    switch (block.type) {
        case kTypeSilenceDetector:
            d.receiver = silenceReceiver(0, 0);
            break;
        case kTypeDtmfDetector:
            d.receiver = dtmfReceiver(0, 0);
            break;
        case kTypeMfDetector:
            d.receiver = mfReceiver(0, 0);
            break;
        case kTypeDialtoneDetector:
            d.receiver = dialToneReceiver(0, 0);
            break;
        default:
            break;
    }
    return d.receiver.get();
}

// ---- Sample flow ------------------------------------------------------------

// Runs samples through `each` 10 ms at a time, the board clock following.
template <typename Each>
void clocked(Board &board, std::span<const int16_t> samples, Each each) {
    for (size_t at = 0; at < samples.size(); at += kChunk) {
        const auto chunk = samples.subspan(at, std::min<size_t>(kChunk, samples.size() - at));
        each(chunk);
        board.advance(chunk.size() * kSampleInterval);
    }
}

// Plays samples out of a block to the blocks connected after it.
void play(Board &board, const Object &block, std::span<const int16_t> samples) {
    clocked(board, samples, [&](std::span<const int16_t> chunk) { board.deliver(block, chunk); });
}

// Events of a detector's reports. Word 5 the digit character or tone index
// (silence: 1 began, 0 ended), word 6 the first sample counted from the
// detector's start, word 7 an ended signal's duration in ms.
void post(Board &board, Object &block, Detector &d, const signal::Report &r) {
    const uint32_t first = static_cast<uint32_t>(r.firstSample);
    const uint32_t ms = static_cast<uint32_t>(r.length / (signal::kSampleRate / 1000));
    const uint32_t symbol = static_cast<uint32_t>(r.symbol);
    switch (block.type) {
        case kTypeDtmfDetector:
        case kTypeMfDetector:
            if (!r.started) return;
            d.lastDigit = block.type == kTypeDtmfDetector ? signal::DtmfReceiver::character(r.symbol)
                                                          : signal::MfReceiver::character(r.symbol);
            board.post(block, block.type == kTypeDtmfDetector ? kEventDtmfDigit : kEventMfDigit, d.lastDigit, first);
            return;
        case kTypeSilenceDetector:
            board.post(block, kEventSilence, r.started ? 1 : 0, first, r.started ? 0 : ms);
            return;
        default:
            board.post(block, r.started ? kEventToneDetected : kEventToneEnded, symbol, first, r.started ? 0 : ms);
    }
}

// The FSK detector posts "Data byte received" for each character: word 5
// the byte, word 6 the first sample of its start bit, word 7 1 when it
// followed at least 10 bits of steady mark (the first byte of a message).
void fskReceive(Board &board, Object &block, Detector &d, std::span<const int16_t> samples) {
    if (!d.fsk) d.fsk.emplace(static_cast<signal::FskMode>(d.fskMode), signal::peakOf(kFskFloorDb));
    std::vector<signal::FskByte> bytes;
    d.fsk->run(samples, bytes);
    for (const signal::FskByte &b : bytes) {
        ++d.fskCount;
        d.fskLast.push_back(b.value);
        if (d.fskLast.size() > kFskKept) d.fskLast.erase(d.fskLast.begin());
        board.post(block, kEventDataByte, b.value, static_cast<uint32_t>(b.firstSample), b.afterMark ? 1 : 0);
    }
}

void sample(Detector &d, std::span<const int16_t> samples) {
    for (int16_t s : samples) d.peak = std::max<int16_t>(d.peak, s == INT16_MIN ? INT16_MAX : std::abs(s));
    d.lastSample = samples.back();
}

}  // namespace

void toneReceive(Board &board, Object &block, std::span<const int16_t> samples, uint32_t) {
    if (!running(block) || !isReceiver(block.type) || samples.empty()) return;
    Detector &d = block.as<Detector>();
    if (block.type == kTypeValueSampler) return sample(d, samples);
    if (block.type == kTypeFskDetector) return fskReceive(board, block, d, samples);
    signal::Receiver *receiver = receiverOf(block);
    if (receiver == nullptr) return;  // a frequency detector not set up
    std::vector<signal::Report> reports;
    receiver->run(samples, reports);
    for (const signal::Report &r : reports) post(board, block, d, r);
}

namespace {

// ---- Generators -------------------------------------------------------------

void setSource(Call &call, std::unique_ptr<signal::Source> source) {
    Generator &g = generatorOf(*call.object);
    g.source = std::move(source);
    g.recorded = false;
}

// param1: not used; value: the sample value played.
uint32_t constInit(Call &call) {
    setSource(call, std::make_unique<signal::Constant>(static_cast<int16_t>(call.in.u16(kConstValue))));
    return 0;
}

// param1: the effect (0 silence, 1 white noise, 2 square wave, 3 ramp),
// param2: peak amplitude 0..32767, param3: frequency 0..3999 Hz.
uint32_t effectsInit(Call &call) {
    const uint32_t effect = call.in.u32(kParam1), peak = call.in.u32(kParam2), hertz = call.in.u32(kParam3);
    if (effect >= signal::kEffectCount || peak > INT16_MAX || hertz >= signal::kSampleRate / 2)
        return VB_FAILURE(kOutOfRange);
    setSource(call, std::make_unique<signal::EffectSource>(static_cast<signal::Effect>(effect),
                                                           static_cast<int16_t>(peak), hertz));
    return 0;
}

// Slots as the library computed them; param1: on time in ms (0: without
// end), param4: off time in ms, the tones restarting at each on time.
uint32_t sineInit(Call &call) {
    const int32_t count = call.in.i32(kSineCount);
    const uint32_t onMs = call.in.u32(kParam1), offMs = call.in.u32(kSineOffTime);
    if (count < 0 || count > static_cast<int32_t>(kMaxSlots) || onMs > kMaxMs || offMs > kMaxMs)
        return VB_FAILURE(kOutOfRange);
    std::vector<signal::Oscillator> oscillators;
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t slot = kSineSlots + kSlotBytes * static_cast<uint32_t>(i);
        oscillators.emplace_back(call.in.u16(slot), call.in.u16(slot + 2), call.in.u16(slot + 4));
    }
    setSource(call, std::make_unique<signal::ToneBurst>(std::move(oscillators), signal::samplesOf(onMs),
                                                        signal::samplesOf(offMs), true));
    return 0;
}

// param1: level of each tone in dB below the reference, digit: 0-9 * # A-D,
// param3: duration in ms (0: without end), silence after it.
uint32_t dtmfGeneratorInit(Call &call) {
    const auto pair = signal::dtmfPair(call.in.u8(kDtmfGenDigit));
    const uint32_t db = call.in.u32(kParam1), ms = call.in.u32(kDtmfGenDuration);
    if (!pair || db > kMaxAttenuation || ms > kMaxMs) return VB_FAILURE(kOutOfRange);
    const double peak = signal::peakOf(db);
    std::vector<signal::Oscillator> tones{signal::Oscillator::tone(pair->low, peak),
                                          signal::Oscillator::tone(pair->high, peak)};
    setSource(call, std::make_unique<signal::ToneBurst>(std::move(tones), signal::samplesOf(ms), 0, false));
    return 0;
}

bool dialTimeFits(uint32_t ms) { return ms <= kMaxDialMs; }

// DTMF dialler. param1: tone ms (0: 80), param2: pause ms (0: 80), param3:
// level of the low tone in dB below the reference, param4: the high tone's
// level above the low one in dB (signed), neither tone above the reference.
uint32_t dtmfDiallerInit(Call &call) {
    const uint32_t tone = call.in.u32(kParam1), pause = call.in.u32(kParam2), db = call.in.u32(kParam3);
    const int64_t highDb = int64_t{db} - call.in.i32(kParam4);
    if (!dialTimeFits(tone) || !dialTimeFits(pause) || db > kMaxAttenuation || highDb < 0 || highDb > kMaxAttenuation)
        return VB_FAILURE(kOutOfRange);
    const int32_t twist = call.in.i32(kParam4);
    generatorOf(*call.object).timing =
        dialTiming({orDefault(tone, kDtmfDial.toneMs), orDefault(pause, kDtmfDial.pauseMs), 0}, db, twist);
    return 0;
}

// MF dialler. param1: tone ms (0: 68), param2: pause ms (0: 68), param3: the
// first digit's (KP) tone ms (0: 100), param4: level of each tone in dB
// below the reference; param5 not used.
uint32_t mfDiallerInit(Call &call) {
    const uint32_t tone = call.in.u32(kParam1), pause = call.in.u32(kParam2), first = call.in.u32(kParam3);
    const uint32_t db = call.in.u32(kParam4);
    if (!dialTimeFits(tone) || !dialTimeFits(pause) || !dialTimeFits(first) || db > kMaxAttenuation)
        return VB_FAILURE(kOutOfRange);
    generatorOf(*call.object).timing = dialTiming(
        {orDefault(tone, kMfDial.toneMs), orDefault(pause, kMfDial.pauseMs), orDefault(first, kMfDial.firstToneMs)}, db,
        0);
    return 0;
}

// Plays what a dial or send produced, keeps it for attribute 30 and posts
// the block's event (word 5: the count of digits or entries).
uint32_t perform(Call &call, std::vector<int16_t> samples, uint32_t event, uint32_t count) {
    Object &block = *call.object;
    play(call.board, block, samples);
    Generator &g = generatorOf(block);
    if (!samples.empty()) g.last = samples.back();
    g.source = std::make_unique<signal::Playback>(std::move(samples));
    g.recorded = true;
    call.board.post(block, event, count);
    return 0;
}

// The dial string, every character checked before anything plays; param3,
// param4 not used.
template <std::optional<signal::Pair> (*PairOf)(uint8_t)>
uint32_t dialDigits(Call &call) {
    if (!running(*call.object)) return VB_FAILURE(kFailed);
    const int32_t count = call.in.i32(kDialCount);
    if (count < 0 || count > static_cast<int32_t>(kMaxDigits)) return VB_FAILURE(kOutOfRange);
    std::vector<signal::Pair> pairs;
    for (uint8_t character : call.in.bytes(kDialDigits, static_cast<uint32_t>(count))) {
        const auto pair = PairOf(character);
        if (!pair) return VB_FAILURE(kOutOfRange);
        pairs.push_back(*pair);
    }
    return perform(call, signal::dial(pairs, generatorOf(*call.object).timing), kEventDialDone,
                   static_cast<uint32_t>(count));
}

// param1: samples each entry is held when its high 16 bits are 0 (0: 1);
// param2..param4 not used.
uint32_t sequenceInit(Call &call) {
    const uint32_t hold = call.in.u32(kParam1);
    if (hold > kMaxHold) return VB_FAILURE(kOutOfRange);
    generatorOf(*call.object).hold = std::max(hold, 1u);
    return 0;
}

// Entries: sample value in the low 16 bits, hold in samples in the high 16
// bits; param3: times the whole is played (0: once), at most 10 s in all.
uint32_t sequenceSend(Call &call) {
    if (!running(*call.object)) return VB_FAILURE(kFailed);
    const int32_t count = call.in.i32(kSequenceCount);
    const uint32_t repeats = call.in.u32(kSequenceRepeats);
    if (count < 0 || count > static_cast<int32_t>(kMaxEntries) || repeats > kMaxRepeats) return VB_FAILURE(kOutOfRange);
    std::vector<uint32_t> entries(static_cast<size_t>(count));
    for (size_t i = 0; i < entries.size(); ++i)
        entries[i] = call.in.u32(kSequenceEntries + 4 * static_cast<uint32_t>(i));
    const uint32_t hold = generatorOf(*call.object).hold;
    if (signal::sequenceLength(entries, hold, repeats) > kMaxSequenceSamples) return VB_FAILURE(kOutOfRange);
    return perform(call, signal::sequence(entries, hold, repeats), kEventSequenceDone, static_cast<uint32_t>(count));
}

// The last sample a generator produced, or a sampler received.
uint32_t readValue(Call &call) {
    Object &block = *call.object;
    if (block.type == kTypeValueSampler) {
        call.out.u16(kValueReply, static_cast<uint16_t>(block.as<Detector>().lastSample));
    } else if (isGenerator(block.type)) {
        call.out.u16(kValueReply, static_cast<uint16_t>(generatorOf(block).last));
    } else {
        return VB_FAILURE(kNotProvided);
    }
    return 0;
}

// ---- Detectors --------------------------------------------------------------

bool msFits(uint32_t ms) { return ms <= kMaxMs; }
bool dbFits(uint32_t db) { return db <= kMaxThreshold; }

void setReceiver(Call &call, std::unique_ptr<signal::Receiver> receiver) {
    call.object->as<Detector>().receiver = std::move(receiver);
}

// param1: the latest sample, or the largest magnitude since the last read.
uint32_t samplerInit(Call &call) {
    const uint32_t mode = call.in.u32(kParam1);
    if (mode > RYN_VB_SAMPLER_PEAK) return VB_FAILURE(kOutOfRange);
    call.object->as<Detector>().samplerMode = mode;
    return 0;
}

uint32_t samplerRead(Call &call) {
    Detector &d = call.object->as<Detector>();
    call.out.u16(kValueReply, static_cast<uint16_t>(d.samplerMode == RYN_VB_SAMPLER_LATEST ? d.lastSample : d.peak));
    if (d.samplerMode == RYN_VB_SAMPLER_PEAK) d.peak = 0;
    return 0;
}

// param1: threshold in dB below the reference (0: 40), param2: ms the
// signal stays below it (0: 200); param3 not used.
uint32_t silenceInit(Call &call) {
    const uint32_t db = call.in.u32(kParam1), ms = call.in.u32(kParam2);
    if (!dbFits(db) || !msFits(ms)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, silenceReceiver(db, ms));
    return 0;
}

// param1: shortest digit in ms (0: 40), param2: shortest pause in ms (0: 40).
uint32_t dtmfDetectorInit(Call &call) {
    const uint32_t tone = call.in.u32(kParam1), pause = call.in.u32(kParam2);
    if (!msFits(tone) || !msFits(pause)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, dtmfReceiver(tone, pause));
    return 0;
}

// param1: shortest digit in ms (0: 40), param2: shortest pause in ms (0:
// 40); param3..param5 not used.
uint32_t mfDetectorInit(Call &call) {
    const uint32_t tone = call.in.u32(kParam1), pause = call.in.u32(kParam2);
    if (!msFits(tone) || !msFits(pause)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, mfReceiver(tone, pause));
    return 0;
}

// param1: Bell 202 (1200/2200 Hz) or V.23 (1300/2100 Hz). The detector
// starts afresh: the receiver, the count and the bytes kept.
uint32_t fskInit(Call &call) {
    const uint32_t mode = call.in.u32(kParam1);
    if (mode > RYN_VB_FSK_V23) return VB_FAILURE(kOutOfRange);
    Detector &d = call.object->as<Detector>();
    d.fskMode = mode;
    d.fsk.reset();
    d.fskCount = 0;
    d.fskLast.clear();
    return 0;
}

// param1: ms the tone lasts before it is reported (0: 100), param2: level
// in dB below the reference (0: 30).
uint32_t dialtoneInit(Call &call) {
    const uint32_t ms = call.in.u32(kParam1), db = call.in.u32(kParam2);
    if (!msFits(ms) || !dbFits(db)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, dialToneReceiver(ms, db));
    return 0;
}

// Single (Size 1) and dual (Size 2) frequency detectors: the coefficients
// the library computed, one a tone or two a tone. param1: shortest tone in
// ms (0: 40), param4: level in dB below the reference (0: 30), param5:
// shortest pause in ms (0: 40), param6: window in samples, 102..1024 (0:
// long enough to tell the closest two frequencies apart).
template <uint32_t Size>
uint32_t frequencyInit(Call &call) {
    const int32_t count = call.in.i32(kFreqCount);
    const uint32_t ms = call.in.u32(kParam1), db = call.in.u32(kFreqLevel), pause = call.in.u32(kFreqPause);
    const uint32_t window = call.in.u16(kFreqWindow);
    if (count <= 0 || count > static_cast<int32_t>(kMaxFrequencies) || count % Size != 0)
        return VB_FAILURE(kOutOfRange);
    if (!msFits(ms) || !msFits(pause) || !dbFits(db) || (window != 0 && (window < kMinWindow || window > kMaxWindow)))
        return VB_FAILURE(kOutOfRange);
    std::vector<uint16_t> coefficients;
    for (int32_t i = 0; i < count; ++i)
        coefficients.push_back(call.in.u16(kFreqCoefficients + 2 * static_cast<uint32_t>(i)));
    const std::vector<uint8_t> sizes(static_cast<size_t>(count) / Size, static_cast<uint8_t>(Size));
    setReceiver(call, std::make_unique<signal::ToneReceiver>(
                          coefficients, sizes, window != 0 ? window : signal::ToneReceiver::windowFor(coefficients),
                          limits(orDefault(ms, kDigitMs), orDefault(pause, kPauseMs), orDefault(db, kDetectDb),
                                 kToneTwist, kToneTwist)));
    return 0;
}

// Status: the last digit's character, 0 before the first.
uint32_t digitStatus(Call &call) {
    call.out.u8(kValueReply, call.object->as<Detector>().lastDigit);
    return 0;
}

// Status: 1 + the index of the tone present now (silence: 1 while silent),
// 0 for none.
template <bool Wide>
uint32_t toneStatus(Call &call) {
    const signal::Receiver *receiver = receiverOf(*call.object);
    const uint32_t status = receiver != nullptr && receiver->active() >= 0 ? receiver->active() + 1u : 0u;
    if (Wide) {
        call.out.u32(kValueReply, status);
    } else {
        call.out.u8(kValueReply, static_cast<uint8_t>(status));
    }
    return 0;
}

constexpr Row kTone[] = {
    {0x99A, 26, 12, only<kTypeConstValueGenerator, constInit>},
    {0x99C, 32, 12, only<kTypeEffectsGenerator, effectsInit>},
    {0x99D, 62, 12, only<kTypeSineWaveGenerator, sineInit>},
    {0x99E, 30, 12, only<kTypeDtmfGenerator, dtmfGeneratorInit>},
    {0x99F, 36, 12, only<kTypeDtmfDialler, dtmfDiallerInit>},
    {0x9A0, 160, 12, only<kTypeDtmfDialler, dialDigits<signal::dtmfPair>>},
    {0x9A1, 36, 12, only<kTypeSequenceGenerator, sequenceInit>},
    {0x9A2, 544, 12, only<kTypeSequenceGenerator, sequenceSend>},
    {0x9A3, 32, 12, only<kTypeSilenceDetector, silenceInit>},
    {0x9A4, 20, 16, only<kTypeSilenceDetector, toneStatus<true>>},
    {0x9A5, 28, 12, only<kTypeDtmfDetector, dtmfDetectorInit>},
    {0x9A6, 20, 16, only<kTypeDtmfDetector, digitStatus>},
    {0x9A7, 24, 12, only<kTypeFskDetector, fskInit>},
    {0x9A8, 28, 12, only<kTypeDialtoneDetector, dialtoneInit>},
    {0x9A9, 20, 16, only<kTypeDialtoneDetector, toneStatus<true>>},
    {0x9AA, 20, 14, readValue},
    {0x9AB, 26, 12, only<kTypeValueSampler, samplerInit>},
    {0x9AC, 20, 14, only<kTypeValueSampler, samplerRead>},
    {0x9AD, 38, 12, only<kTypeMfDetector, mfDetectorInit>},
    {0x9AE, 20, 16, only<kTypeMfDetector, digitStatus>},
    {0x9AF, 40, 12, only<kTypeMfDialler, mfDiallerInit>},
    {0x9B0, 160, 12, only<kTypeMfDialler, dialDigits<signal::mfPair>>},
    {0x9B1, 50, 12, only<kTypeDualDetector, frequencyInit<2>>},
    {0x9B2, 20, 16, only<kTypeDualDetector, toneStatus<false>>},
    {0x9B3, 50, 12, only<kTypeSingleDetector, frequencyInit<1>>},
    {0x9B4, 20, 16, only<kTypeSingleDetector, toneStatus<false>>},
};

// ---- Audio attributes -------------------------------------------------------

// RYN_VB_ATTR_AUDIO_OUT of a generator: the next samples of its output (as many as
// the caller's buffer holds, at most 64 KiB, else error 9), little-endian;
// another block has no output to give (error 6). A free-running
// generator's samples also go to the connected blocks; a dialler's or
// sequence generator's went there with the dial or send.
std::vector<uint8_t> renderAudio(Call &call, Object &block, uint32_t capacity) {
    if (!isGenerator(block.type) || capacity > kAudioBytes) {
        call.refusal = isGenerator(block.type) ? VB_FAILURE(kOutOfRange) : VB_FAILURE(kNotProvided);
        return {};
    }
    Generator &g = generatorOf(block);
    std::vector<int16_t> samples(capacity / 2);
    if (running(block) && g.source != nullptr)
        for (int16_t &s : samples) s = g.source->next();
    if (!samples.empty()) g.last = samples.back();
    if (!g.recorded) play(call.board, block, samples);
    return signal::toLittleEndian(samples);
}

// RYN_VB_ATTR_AUDIO_IN of a detector or sampler: samples (little-endian, an even
// number of bytes, at most 64 KiB) that it receives as from a connection.
uint32_t receiveAudio(Call &call, Object &block, std::span<const uint8_t> value) {
    if (!isReceiver(block.type)) return VB_FAILURE(kNotProvided);
    if (value.size() % 2 != 0 || value.size() > kAudioBytes) return VB_FAILURE(kOutOfRange);
    const std::vector<int16_t> samples = signal::fromLittleEndian(value);
    clocked(call.board, samples, [&](std::span<const int16_t> chunk) { toneReceive(call.board, block, chunk, 0); });
    return 0;
}

// RYN_VB_ATTR_FSK_COUNT and RYN_VB_ATTR_FSK_BYTES of the FSK detector (read-only): the count of bytes
// received since its set-up, and the last of them (at most 64, as many as
// the caller's buffer holds), the oldest first.
Detector *fskOf(Call &call, Object &block) {
    if (block.type == kTypeFskDetector) return &block.as<Detector>();
    call.refusal = VB_FAILURE(kNotProvided);
    return nullptr;
}

std::vector<uint8_t> fskCount(Call &call, Object &block, uint32_t) {
    const Detector *d = fskOf(call, block);
    return d != nullptr ? wordValue(d->fskCount) : std::vector<uint8_t>{};
}

std::vector<uint8_t> fskBytes(Call &call, Object &block, uint32_t capacity) {
    const Detector *d = fskOf(call, block);
    if (d == nullptr) return {};
    const size_t count = std::min<size_t>(capacity, d->fskLast.size());
    return {d->fskLast.end() - static_cast<std::ptrdiff_t>(count), d->fskLast.end()};
}

// RYN_VB_ATTR_AUDIO_IN is set only.
std::vector<uint8_t> nothing(Call &call, Object &, uint32_t capacity) {
    if (capacity != 0) call.refusal = VB_FAILURE(kNotProvided);
    return {};
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_AUDIO_OUT, RYN_VB_VALUE_BINARY, renderAudio, nullptr},
    {RYN_VB_ATTR_AUDIO_IN, RYN_VB_VALUE_BINARY, nothing, receiveAudio},
    {RYN_VB_ATTR_FSK_COUNT, RYN_VB_VALUE_UINT32, fskCount, nullptr},
    {RYN_VB_ATTR_FSK_BYTES, RYN_VB_VALUE_BINARY, fskBytes, nullptr},
};

}  // namespace

Table toneTable() { return kTone; }
std::span<const Attribute> toneAttributes() { return kAttributes; }

}  // namespace vb
