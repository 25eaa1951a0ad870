// The telephony DTMF dialler (type 120) and DTMF detector (type 122).
//
// The detector is the board's DTMF receiver (Signal.h, as the tone family's
// DTMF detector: one tone of each group on its filter's frequency, twist,
// purity and the tone filling its windows, a pause of 40 ms between two
// digits), with the block's own settings: the shortest digit, and a floor
// in dB below full scale that the two tones together must reach.
#include <cmath>

#include "Cst.h"

namespace vb {
namespace {

using namespace cst;

constexpr uint32_t kMaxDialDigits = DtmfDial::kDigitBytes - 1;
constexpr uint32_t kDefaultDigitMs = 80, kShortestDigitMs = 20, kLongestDigitMs = 2000;
constexpr uint32_t kDefaultMinDigitMs = 40, kShortestMinDigitMs = 10, kLongestMinDigitMs = 1000;
constexpr uint32_t kDigitPauseMs = 40;

// ---- Dialler ----------------------------------------------------------------

struct DtmfDialler : Block {
    uint32_t levelDb = kDefaultLevelDb;
};

// param1: level of each frequency in dB below full scale (0: 10; 6..60).
uint32_t diallerInit(Call &call) {
    const auto level = setting(call.in.u32(DtmfDialerInit::kParam1), kDefaultLevelDb, kLoudestDb, kQuietestDb);
    if (!level) return VB_FAILURE(kOutOfRange);
    auto &dialler = call.object->as<DtmfDialler>();
    dialler.levelDb = *level;
    dialler.setUp = kBasicSetUp;
    return 0;
}

// Each digit's pair for the digit time, then the pause.
void playDigits(Board &board, Object &block, std::span<const uint8_t> digits, uint32_t levelDb, uint32_t onMs,
                uint32_t pauseMs) {
    const signal::DialTiming timing{signal::samplesOf(onMs), signal::samplesOf(pauseMs), 0, kOscillatorPeak,
                                    kOscillatorPeak};
    for (uint8_t key : digits) {
        const signal::Pair pair = *signal::dtmfPair(key);
        signal::Playback digit(signal::dial({&pair, 1}, timing));
        playScaled(board, block, digit, scaleOf(levelDb), onMs);
        playScaled(board, block, digit, scaleOf(levelDb), pauseMs);
    }
}

// The digits 0-9, *, #, A-D (either case); digit time at 152 (0: 80 ms;
// 20..2000), pause after each digit at 156 (0: the digit time; at most 2000).
// Every character is checked before anything is played.
uint32_t dtmfDial(Call &call) {
    auto &dialler = call.object->as<DtmfDialler>();
    if (dialler.setUp == kNotSetUp) return VB_FAILURE(kFailed);
    const uint32_t count = call.in.u32(DtmfDial::kCount);
    if (count > kMaxDialDigits) return VB_FAILURE(kOutOfRange);
    const auto onMs = setting(call.in.u32(DtmfDial::kParam3), kDefaultDigitMs, kShortestDigitMs, kLongestDigitMs);
    const auto pauseMs = setting(call.in.u32(DtmfDial::kParam4), onMs.value_or(0), 1, kLongestDigitMs);
    if (!onMs || !pauseMs) return VB_FAILURE(kOutOfRange);
    const auto digits = call.in.bytes(DtmfDial::kDigits, count);
    if (!std::all_of(digits.begin(), digits.end(), [](uint8_t key) { return signal::dtmfPair(key).has_value(); }))
        return VB_FAILURE(kOutOfRange);
    playDigits(call.board, *call.object, digits, dialler.levelDb, *onMs, *pauseMs);
    scheduleEvent(call.board, *call.object, kEventDialDone, count);
    return 0;
}

// ---- Detector ---------------------------------------------------------------

struct DtmfDetector : Block {
    std::unique_ptr<signal::DtmfReceiver> receiver;  // made by the set-up
    char last = 0;                                   // the status
};

// The receiver's limits. The floor is the pair's: each of two equal tones
// carries half the power, 3 dB below the floor. The receiver's levels are in
// dB below its reference.
signal::Limits detectorLimits(uint32_t minDigitMs, uint32_t floorDb) {
    signal::Limits limits;
    limits.toneMs = minDigitMs;
    limits.pauseMs = kDigitPauseMs;
    limits.minimumDb = floorDb + 10 * std::log10(2.0) - 20 * std::log10(signal::kFullScale / signal::kReferencePeak);
    return limits;
}

// param1: shortest digit in ms (0: 40; 10..1000); param2: floor in dB below
// full scale (0: 40; 1..90).
uint32_t dtmfDetectorInit(Call &call) {
    const auto minMs =
        setting(call.in.u32(DtmfDetectorInit::kParam1), kDefaultMinDigitMs, kShortestMinDigitMs, kLongestMinDigitMs);
    const auto floor =
        setting(call.in.u32(DtmfDetectorInit::kParam2), kDefaultFloorDb, kHighestFloorDb, kLowestFloorDb);
    if (!minMs || !floor) return VB_FAILURE(kOutOfRange);
    auto &detector = call.object->as<DtmfDetector>();
    detector = DtmfDetector{};
    detector.receiver = std::make_unique<signal::DtmfReceiver>(detectorLimits(*minMs, *floor));
    detector.setUp = kBasicSetUp;
    return 0;
}

// The last digit detected, as its character; 0 before the first.
uint32_t dtmfDetectorStatus(Call &call) {
    call.out.u8(DtmfDetectorStatus::kReplyStatus, static_cast<uint8_t>(call.object->as<DtmfDetector>().last));
    return 0;
}

// Each digit posts "DTMF digit detected" once, word 5 its character.
void detect(Board &board, Object &block, Samples frame) {
    auto &detector = block.as<DtmfDetector>();
    if (detector.receiver == nullptr) return;  // not set up
    std::vector<signal::Report> reports;
    detector.receiver->run(frame, reports);
    for (const signal::Report &report : reports) {
        if (!report.started) continue;
        detector.last = static_cast<char>(signal::DtmfReceiver::character(report.symbol));
        board.post(block, kEventDtmfDigit, static_cast<uint8_t>(detector.last));
    }
}

constexpr Row kRows[] = {
    row<DtmfDialerInit>(only<kDtmfDialler, diallerInit>),
    row<DtmfDial>(only<kDtmfDialler, dtmfDial>),
    row<DtmfDetectorInit>(only<kDtmfDetector, dtmfDetectorInit>),
    row<DtmfDetectorStatus>(only<kDtmfDetector, dtmfDetectorStatus>),
};

constexpr const Audio &kAudio = kListening<kDtmfDetector, detect>;

}  // namespace

const Family kCstDtmfFamily =
    blockPair<kDtmfDialler, DtmfDialler, kDtmfDetector, DtmfDetector>("Telephony DTMF", kRows, kAudio);

}  // namespace vb
