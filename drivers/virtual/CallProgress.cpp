// The telephony call-progress tone generator (type 127) and detector (type
// 126), and the tones they share.
#include "Cst.h"

namespace vb {
namespace {

using namespace cst;

constexpr size_t kCptFrame = 400;  // 50 ms: 20 Hz apart at 8 kHz

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
void playCadence(Board &board, Object &block, const ProgressTone &tone, uint32_t levelDb, uint32_t lengthMs) {
    signal::ToneBurst source = progressSource(tone);
    const double scale = scaleOf(levelDb);
    if (tone.offMs == 0) return playScaled(board, block, source, scale, lengthMs);
    for (uint32_t done = 0; done < lengthMs;) {
        const uint32_t on = std::min(tone.onMs, lengthMs - done);
        playScaled(board, block, source, scale, on);
        done += on;
        const uint32_t off = std::min(tone.offMs, lengthMs - done);
        playScaled(board, block, source, scale, off);
        done += off;
    }
}

// param1: level of each frequency as for the DTMF dialler; param2: length of
// every tone played, in ms (0: two cadence cycles, one second of a steady
// tone; at most 60000).
uint32_t cptGeneratorInit(Call &call) {
    const auto level = setting(call.in.u32(CptGeneratorInit::kParam1), kDefaultLevelDb, kLoudestDb, kQuietestDb);
    const uint32_t length = call.in.u32(CptGeneratorInit::kParam2);
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
    const uint32_t number = call.in.u32(CptGenerateTone::kParam1);
    const ProgressTone silence{kNoTone, {}, 0, 0};
    const ProgressTone *tone = number == kNoTone ? &silence : progressTone(number);
    if (tone == nullptr) return VB_FAILURE(kOutOfRange);
    const uint32_t ownLength = tone->offMs == 0 ? kDefaultSteadyLengthMs : kDefaultCycles * (tone->onMs + tone->offMs);
    const uint32_t length = generator.lengthMs != 0 ? generator.lengthMs : ownLength;
    playCadence(call.board, *call.object, *tone, generator.levelDb, length);
    scheduleEvent(call.board, *call.object, kEventSequenceDone, number);
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
    const auto floor = setting(call.in.u32(CptDetectorInit::kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto tolerance = setting(call.in.u32(CptDetectorInit::kParam2), kDefaultTolerance, 1, kLargestTolerance);
    if (!floor || !tolerance) return VB_FAILURE(kOutOfRange);
    return startDetector(call, kBasicSetUp, *floor, builtInTable(*tolerance));
}

// The extended set-up's request: one zeroed block with the value list, the
// table's counts, the segment records and the step area.
using Extended = CptDetectorInitEx;
constexpr uint32_t kNyquist = 4000;

// A step: its shortest and longest time (0: none), then whether each value
// of the list is present in the step.
CptStep readStep(const Input &in, uint32_t offset, uint32_t valueCount) {
    CptStep step{in.u16(offset + Extended::kStepMinMs), in.u16(offset + Extended::kStepMaxMs), 0};
    for (uint32_t i = 0; i < valueCount; ++i) {
        const uint32_t word = in.u16(offset + 2 * (Extended::kStepHeaderWords + i / Extended::kValuesPerWord));
        const uint32_t bits = word >> (Extended::kValueBits * (i % Extended::kValuesPerWord));
        if ((bits & ((1u << Extended::kValueBits) - 1)) != 0) step.mask |= 1u << i;
    }
    return step;
}

// A segment is a tone: its number, its step count, where its steps start in
// the step area and how many words they take (count × words per step).
uint32_t readSegment(const Input &in, uint32_t index, uint32_t valueCount, CptTable &table) {
    const uint32_t record = Extended::kSegments + Extended::kSegmentBytes * index;
    const uint32_t count = in.u16(record + Extended::kSegmentStepCount);
    const uint32_t start = in.u16(record + Extended::kSegmentStart), words = in.u16(record + Extended::kSegmentWords);
    const uint32_t stepWords = Extended::stepWords(valueCount);
    if (count > Extended::kMaxStepCount || start + words > Extended::kStepAreaWords) return VB_FAILURE(kOutOfRange);
    if (words != count * stepWords) return VB_FAILURE(kMalformed);
    CptTone tone{in.u16(record + Extended::kSegmentId), {}};
    for (uint32_t k = 0; k < count; ++k)
        tone.steps.push_back(readStep(in, Extended::kSteps + 2 * (start + k * stepWords), valueCount));
    table.tones.push_back(std::move(tone));
    return 0;
}

// param1 and param2 as for the set-up; a negative table count asks for the
// built-in tones. The value list holds the frequencies in Hz (1..3999), one
// segment per tone. The table's other words, the extra block, setting1 to 3
// and param4 are not used by this detector.
uint32_t cptDetectorInitEx(Call &call) {
    const Input &in = call.in;
    if (in.u16(Extended::kBlockLength) != Extended::kBlockWords) return VB_FAILURE(kMalformed);
    const int16_t tableCount = signedWord(in, Extended::kTableCount);
    if (tableCount == 0 || tableCount > 1) return VB_FAILURE(kOutOfRange);
    const auto floor = setting(in.u32(Extended::kParam1), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    const auto tolerance = setting(in.u32(Extended::kParam2), kDefaultTolerance, 1, kLargestTolerance);
    if (!floor || !tolerance) return VB_FAILURE(kOutOfRange);
    if (tableCount < 0) return startDetector(call, kExtendedSetUp, *floor, builtInTable(*tolerance));

    const int16_t valueCount = signedWord(in, Extended::kValueCount);
    const int16_t segmentCount = signedWord(in, Extended::kSegmentCount);
    if (valueCount < 1 || valueCount > static_cast<int16_t>(Extended::kValueSlots) ||
        segmentCount > static_cast<int16_t>(Extended::kSegmentSlots))
        return VB_FAILURE(kOutOfRange);
    CptTable table;
    for (int16_t i = 0; i < valueCount; ++i) {
        const uint16_t frequency = in.u16(Extended::kValues + 2 * static_cast<uint32_t>(i));
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
    call.out.u32(CptDetectorStatus::kReplyStatus, call.object->as<CptDetector>().last);
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

void cptFrame(Board &board, Object &block, CptDetector &detector, Samples frame) {
    const uint32_t mask = presentMask(frame, detector.table.frequencies, meanPowerFloor(detector.floorDb));
    if (mask != detector.runMask) {
        runEnded(board, block, detector);
        detector.runMask = mask;
        detector.runMs = 0;
    }
    detector.runMs += kCptFrameMs;
    runGoesOn(board, block, detector);
}

constexpr Row kRows[] = {
    row<CptDetectorInit>(only<kCptDetector, cptDetectorInit>),
    row<CptDetectorStatus>(only<kCptDetector, cptDetectorStatus>),
    row<CptGeneratorInit>(only<kCptGenerator, cptGeneratorInit>),
    row<CptGenerateTone>(only<kCptGenerator, cptGenerateTone>),
    row<CptDetectorInitEx>(only<kCptDetector, cptDetectorInitEx>),
};

constexpr const Audio &kAudio = kListening<kCptDetector, inFrames<CptDetector, kCptFrame, cptFrame>>;

}  // namespace

const Family kCallProgressFamily =
    blockPair<kCptDetector, CptDetector, kCptGenerator, CptGenerator>("Telephony call progress", kRows, kAudio);

}  // namespace vb
