// Tone generators of the virtual board: constant value, effects, sine wave,
// DTMF generator, DTMF and MF diallers and the sequence generator. They
// synthesise 8 kHz samples from exactly what the library sent (the sine-wave
// generator's oscillator coefficients and starting samples); the signal
// processing itself is in Signal.cpp.
//
// A dial or sequence plays in time: the sample clock takes it frame by frame
// while the block is connected, and its event comes after its last frame.
// A block connected to nothing keeps what it was given for the audio-out
// attribute, its event coming when the dial's time has passed. A running
// free-running generator plays in every frame while it is connected.
#include <algorithm>
#include <optional>

#include "Families.h"
#include "ToneWire.h"
#include "Signal.h"

namespace vb {
namespace {

using namespace wire::tone;

// ---- Limits and defaults ----------------------------------------------------

constexpr uint32_t kMaxSlots = SineWaveGeneratorInit::kSlotCount, kMaxDigits = Dial::kDigitBytes;
constexpr uint32_t kMaxEntries = SequenceSend::kEntrySlots;
constexpr uint32_t kMaxMs = 60000;        // cadences and durations
constexpr uint32_t kMaxDialMs = 1000;     // dial tones and pauses
constexpr uint32_t kMaxAttenuation = 60;  // levels, dB below the reference
constexpr uint32_t kMaxHold = 0xFFFF, kMaxRepeats = 1000;
constexpr uint64_t kMaxSequenceSamples = 80000;  // 10 s

struct DialDefaults {
    uint32_t toneMs, pauseMs, firstToneMs;
};
constexpr DialDefaults kDtmfDial{80, 80, 0};
constexpr DialDefaults kMfDial{68, 68, 100};  // KP longer

struct Generator : ObjectState {
    std::unique_ptr<signal::Source> source;  // none: silence
    signal::DialTiming timing{};
    uint32_t hold = 1;
};

bool makesGenerator(int32_t type) {
    return type == kTypeConstValueGenerator || (type >= kTypeEffectsGenerator && type <= kTypeSequenceGenerator);
}

signal::DialTiming dialTiming(const DialDefaults &d, uint32_t lowDb, int32_t twistDb) {
    return {signal::samplesOf(d.toneMs), signal::samplesOf(d.pauseMs), signal::samplesOf(d.firstToneMs),
            signal::peakOf(lowDb), signal::peakOf(static_cast<double>(lowDb) - twistDb)};
}

std::unique_ptr<ObjectState> newGenerator(const Object &block) {
    auto g = std::make_unique<Generator>();
    g->timing = dialTiming(block.type == kTypeMfDialler ? kMfDial : kDtmfDial, 0, 0);
    return g;
}

Generator &generatorOf(Call &call) { return call.object->as<Generator>(); }

void setSource(Call &call, std::unique_ptr<signal::Source> source) { generatorOf(call).source = std::move(source); }

// ---- Free-running generators ------------------------------------------------

// param1: not used; value: the sample value played.
uint32_t constInit(Call &call) {
    setSource(call,
              std::make_unique<signal::Constant>(static_cast<int16_t>(call.in.u16(ConstValGeneratorInit::kValue))));
    return 0;
}

// param1: the effect (0 silence, 1 white noise, 2 square wave, 3 ramp),
// param2: peak amplitude 0..32767, param3: frequency 0..3999 Hz.
uint32_t effectsInit(Call &call) {
    using W = EffectsGeneratorInit;
    const uint32_t effect = call.in.u32(W::kParam1), peak = call.in.u32(W::kParam2), hertz = call.in.u32(W::kParam3);
    if (effect >= signal::kEffectCount || peak > INT16_MAX || hertz >= signal::kSampleRate / 2)
        return VB_FAILURE(kOutOfRange);
    setSource(call, std::make_unique<signal::EffectSource>(static_cast<signal::Effect>(effect),
                                                           static_cast<int16_t>(peak), hertz));
    return 0;
}

// Slots as the library computed them; param1: on time in ms (0: without
// end), param4: off time in ms, the tones restarting at each on time.
uint32_t sineInit(Call &call) {
    using W = SineWaveGeneratorInit;
    const int32_t count = call.in.i32(W::kCount);
    const uint32_t onMs = call.in.u32(W::kParam1), offMs = call.in.u32(W::kParam4);
    if (count < 0 || count > static_cast<int32_t>(kMaxSlots) || onMs > kMaxMs || offMs > kMaxMs)
        return VB_FAILURE(kOutOfRange);
    std::vector<signal::Oscillator> oscillators;
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t slot = W::kSlots + W::kSlotBytes * static_cast<uint32_t>(i);
        oscillators.emplace_back(call.in.u16(slot + W::kCoefficient), call.in.u16(slot + W::kFirstSample),
                                 call.in.u16(slot + W::kSecondSample));
    }
    setSource(call, std::make_unique<signal::ToneBurst>(std::move(oscillators), signal::samplesOf(onMs),
                                                        signal::samplesOf(offMs), true));
    return 0;
}

// param1: level of each tone in dB below the reference, digit: 0-9 * # A-D,
// param3: duration in ms (0: without end), silence after it.
uint32_t dtmfGeneratorInit(Call &call) {
    using W = DtmfGeneratorInit;
    const auto pair = signal::dtmfPair(call.in.u8(W::kDigit));
    const uint32_t db = call.in.u32(W::kParam1), ms = call.in.u32(W::kParam3);
    if (!pair || db > kMaxAttenuation || ms > kMaxMs) return VB_FAILURE(kOutOfRange);
    const double peak = signal::peakOf(db);
    std::vector<signal::Oscillator> tones{signal::Oscillator::tone(pair->low, peak),
                                          signal::Oscillator::tone(pair->high, peak)};
    setSource(call, std::make_unique<signal::ToneBurst>(std::move(tones), signal::samplesOf(ms), 0, false));
    return 0;
}

// ---- Diallers and the sequence generator -------------------------------------

bool dialTimeFits(uint32_t ms) { return ms <= kMaxDialMs; }

// DTMF dialler. param1: tone ms (0: 80), param2: pause ms (0: 80), param3:
// level of the low tone in dB below the reference, param4: the high tone's
// level above the low one in dB (signed), neither tone above the reference.
uint32_t dtmfDiallerInit(Call &call) {
    using W = DtmfDiallerInit;
    const uint32_t tone = call.in.u32(W::kParam1), pause = call.in.u32(W::kParam2), db = call.in.u32(W::kParam3);
    const int64_t highDb = int64_t{db} - call.in.i32(W::kParam4);
    if (!dialTimeFits(tone) || !dialTimeFits(pause) || db > kMaxAttenuation || highDb < 0 || highDb > kMaxAttenuation)
        return VB_FAILURE(kOutOfRange);
    generatorOf(call).timing = dialTiming({orDefault(tone, kDtmfDial.toneMs), orDefault(pause, kDtmfDial.pauseMs), 0},
                                          db, call.in.i32(W::kParam4));
    return 0;
}

// MF dialler. param1: tone ms (0: 68), param2: pause ms (0: 68), param3: the
// first digit's (KP) tone ms (0: 100), param4: level of each tone in dB
// below the reference; param5 not used.
uint32_t mfDiallerInit(Call &call) {
    using W = MfDiallerInit;
    const uint32_t tone = call.in.u32(W::kParam1), pause = call.in.u32(W::kParam2), first = call.in.u32(W::kParam3);
    const uint32_t db = call.in.u32(W::kParam4);
    if (!dialTimeFits(tone) || !dialTimeFits(pause) || !dialTimeFits(first) || db > kMaxAttenuation)
        return VB_FAILURE(kOutOfRange);
    generatorOf(call).timing = dialTiming(
        {orDefault(tone, kMfDial.toneMs), orDefault(pause, kMfDial.pauseMs), orDefault(first, kMfDial.firstToneMs)}, db,
        0);
    return 0;
}

// Plays what a dial or send produced, after what the block still plays, and
// then posts the block's event (word 5: the count of digits or entries).
uint32_t perform(Call &call, const std::vector<int16_t> &samples, uint32_t event, uint32_t count) {
    schedule(call.board, *call.object, samples);
    scheduleEvent(call.board, *call.object, event, count);
    return 0;
}

// The dial string, every character checked before anything plays; param3,
// param4 not used.
template <std::optional<signal::Pair> (*PairOf)(uint8_t)>
uint32_t dialDigits(Call &call) {
    if (!running(*call.object)) return VB_FAILURE(kFailed);
    const int32_t count = call.in.i32(Dial::kCount);
    if (count < 0 || count > static_cast<int32_t>(kMaxDigits)) return VB_FAILURE(kOutOfRange);
    std::vector<signal::Pair> pairs;
    for (uint8_t character : call.in.bytes(Dial::kDigits, static_cast<uint32_t>(count))) {
        const auto pair = PairOf(character);
        if (!pair) return VB_FAILURE(kOutOfRange);
        pairs.push_back(*pair);
    }
    return perform(call, signal::dial(pairs, generatorOf(call).timing), kEventDialDone, static_cast<uint32_t>(count));
}

// param1: samples each entry is held when its high 16 bits are 0 (0: 1);
// param2..param4 not used.
uint32_t sequenceInit(Call &call) {
    const uint32_t hold = call.in.u32(SequenceGeneratorInit::kParam1);
    if (hold > kMaxHold) return VB_FAILURE(kOutOfRange);
    generatorOf(call).hold = std::max(hold, 1u);
    return 0;
}

// Entries: sample value in the low 16 bits, hold in samples in the high 16
// bits; param3: times the whole is played (0: once), at most 10 s in all.
uint32_t sequenceSend(Call &call) {
    if (!running(*call.object)) return VB_FAILURE(kFailed);
    using W = SequenceSend;
    const int32_t count = call.in.i32(W::kCount);
    const uint32_t repeats = call.in.u32(W::kParam3);
    if (count < 0 || count > static_cast<int32_t>(kMaxEntries) || repeats > kMaxRepeats) return VB_FAILURE(kOutOfRange);
    std::vector<uint32_t> entries(static_cast<size_t>(count));
    for (size_t i = 0; i < entries.size(); ++i) entries[i] = call.in.u32(W::kEntries + 4 * static_cast<uint32_t>(i));
    const uint32_t hold = generatorOf(call).hold;
    if (signal::sequenceLength(entries, hold, repeats) > kMaxSequenceSamples) return VB_FAILURE(kOutOfRange);
    return perform(call, signal::sequence(entries, hold, repeats), kEventSequenceDone, static_cast<uint32_t>(count));
}

// The last sample the generator produced.
uint32_t readValue(Call &call) {
    call.out.u16(ReadVal::kReplyValue, static_cast<uint16_t>(call.object->outgoing.last));
    return 0;
}

constexpr Row kRows[] = {
    row<ConstValGeneratorInit>(only<kTypeConstValueGenerator, constInit>),
    row<EffectsGeneratorInit>(only<kTypeEffectsGenerator, effectsInit>),
    row<SineWaveGeneratorInit>(only<kTypeSineWaveGenerator, sineInit>),
    row<DtmfGeneratorInit>(only<kTypeDtmfGenerator, dtmfGeneratorInit>),
    row<DtmfDiallerInit>(only<kTypeDtmfDialler, dtmfDiallerInit>),
    row<DtmfDial>(only<kTypeDtmfDialler, dialDigits<signal::dtmfPair>>),
    row<SequenceGeneratorInit>(only<kTypeSequenceGenerator, sequenceInit>),
    row<SequenceSend>(only<kTypeSequenceGenerator, sequenceSend>),
    row<ReadVal>(readValue),
    row<MfDiallerInit>(only<kTypeMfDialler, mfDiallerInit>),
    row<MfDial>(only<kTypeMfDialler, dialDigits<signal::mfPair>>),
};

// ---- Audio ------------------------------------------------------------------

bool givesSamples(const Object &) { return true; }

// A running free-running generator's next samples.
bool render(Board &, Object &block, std::span<int16_t> out) {
    Generator &g = block.as<Generator>();
    if (!running(block) || g.source == nullptr) return false;
    for (int16_t &s : out) s = g.source->next();
    return true;
}

constexpr Audio kAudio{nullptr, nullptr, givesSamples, render};  // generators take no samples

}  // namespace

const Family kToneGeneratorsFamily{"Tone generator", kRows, {}, newGenerator, nullptr, makesGenerator, &kAudio};

}  // namespace vb
