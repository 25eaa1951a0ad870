// Tone detectors of the virtual board: value sampler, silence, DTMF, FSK,
// dial-tone, MF, dual- and single-frequency detectors. Each runs the
// samples that reach it (Signal.h's receivers, on the frequency
// coefficients the library computed) and posts what it finds.
#include <algorithm>
#include <optional>

#include "Families.h"
#include "Fsk.h"
#include "ToneWire.h"
#include "Signal.h"

namespace vb {
namespace {

using namespace wire::tone;
using wire::StatusRead;

// ---- Limits and defaults ----------------------------------------------------

constexpr uint32_t kMaxFrequencies = FrequencyDetectorInit::kCoefficientSlots;
constexpr uint32_t kMaxMs = 60000;
constexpr uint32_t kMaxThreshold = 90;  // levels, dB below the reference
constexpr uint32_t kDigitMs = 40, kPauseMs = 40, kDetectDb = 30, kSilenceDb = 40, kSilenceMs = 200;
constexpr uint32_t kDialToneMs = 100;
constexpr uint32_t kFskFloorDb = 40;
constexpr size_t kFskKept = 64;  // bytes the FSK detector keeps for RYN_VB_ATTR_FSK_BYTES
constexpr int32_t kMfTwist = 6, kToneTwist = 6;
constexpr uint32_t kMinWindow = signal::kDigitWindow, kMaxWindow = 1024;

// The board's dial tone: 350 + 440 Hz, or 425 Hz alone.
constexpr double kDialToneHz[] = {350, 440, 425};
constexpr uint8_t kDialToneSizes[] = {2, 1};
constexpr uint32_t kDialToneWindow = 400;

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

bool makesDetector(int32_t type) {
    return type == kTypeValueSampler || (type >= kTypeSilenceDetector && type <= kTypeSingleDetector);
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

// A detector with the defaults until its set-up; no receiver for the FSK
// detector, nor for a frequency detector before its frequencies.
std::unique_ptr<ObjectState> newDetector(const Object &block) {
    auto d = std::make_unique<Detector>();
    switch (block.type) {
        case kTypeSilenceDetector:
            d->receiver = silenceReceiver(0, 0);
            break;
        case kTypeDtmfDetector:
            d->receiver = dtmfReceiver(0, 0);
            break;
        case kTypeMfDetector:
            d->receiver = mfReceiver(0, 0);
            break;
        case kTypeDialtoneDetector:
            d->receiver = dialToneReceiver(0, 0);
            break;
        default:
            break;
    }
    return d;
}

Detector &detectorOf(Call &call) { return call.object->as<Detector>(); }

// ---- Samples in ---------------------------------------------------------------

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
void fskReceive(Board &board, Object &block, Detector &d, Samples samples) {
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

void sample(Detector &d, Samples samples) {
    for (int16_t s : samples) d.peak = std::max<int16_t>(d.peak, s == INT16_MIN ? INT16_MAX : std::abs(s));
    d.lastSample = samples.back();
}

bool takes(const Object &) { return true; }

bool arrive(Board &board, Object &block, Samples frame, uint32_t, std::vector<int16_t> &) {
    if (!running(block) || frame.empty()) return false;
    Detector &d = block.as<Detector>();
    if (block.type == kTypeValueSampler) {
        sample(d, frame);
    } else if (block.type == kTypeFskDetector) {
        fskReceive(board, block, d, frame);
    } else if (d.receiver != nullptr) {  // none: a frequency detector not set up
        std::vector<signal::Report> reports;
        d.receiver->run(frame, reports);
        for (const signal::Report &r : reports) post(board, block, d, r);
    }
    return false;
}

constexpr Audio kAudio{takes, arrive};

// ---- Set-ups and status ---------------------------------------------------------

bool msFits(uint32_t ms) { return ms <= kMaxMs; }
bool dbFits(uint32_t db) { return db <= kMaxThreshold; }

void setReceiver(Call &call, std::unique_ptr<signal::Receiver> receiver) {
    detectorOf(call).receiver = std::move(receiver);
}

// param1: the latest sample, or the largest magnitude since the last read.
uint32_t samplerInit(Call &call) {
    const uint32_t mode = call.in.u32(ValSamplerInit::kParam1);
    if (mode > RYN_VB_SAMPLER_PEAK) return VB_FAILURE(kOutOfRange);
    detectorOf(call).samplerMode = mode;
    return 0;
}

uint32_t samplerRead(Call &call) {
    Detector &d = detectorOf(call);
    call.out.u16(ValSamplerReadData::kReplyValue,
                 static_cast<uint16_t>(d.samplerMode == RYN_VB_SAMPLER_LATEST ? d.lastSample : d.peak));
    if (d.samplerMode == RYN_VB_SAMPLER_PEAK) d.peak = 0;
    return 0;
}

// The last sample the sampler received.
uint32_t readValue(Call &call) {
    call.out.u16(ReadVal::kReplyValue, static_cast<uint16_t>(detectorOf(call).lastSample));
    return 0;
}

// param1: threshold in dB below the reference (0: 40), param2: ms the
// signal stays below it (0: 200); param3 not used.
uint32_t silenceInit(Call &call) {
    const uint32_t db = call.in.u32(SilenceDetectorInit::kParam1), ms = call.in.u32(SilenceDetectorInit::kParam2);
    if (!dbFits(db) || !msFits(ms)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, silenceReceiver(db, ms));
    return 0;
}

// DTMF and MF detectors. param1: shortest digit in ms (0: 40), param2:
// shortest pause in ms (0: 40); the MF detector's param3..param5 not used.
template <typename W, std::unique_ptr<signal::Receiver> (*Make)(uint32_t, uint32_t)>
uint32_t digitDetectorInit(Call &call) {
    const uint32_t tone = call.in.u32(W::kParam1), pause = call.in.u32(W::kParam2);
    if (!msFits(tone) || !msFits(pause)) return VB_FAILURE(kOutOfRange);
    setReceiver(call, Make(tone, pause));
    return 0;
}

// param1: Bell 202 (1200/2200 Hz) or V.23 (1300/2100 Hz). The detector
// starts afresh: the receiver, the count and the bytes kept.
uint32_t fskInit(Call &call) {
    const uint32_t mode = call.in.u32(FskDetectorInit::kParam1);
    if (mode > RYN_VB_FSK_V23) return VB_FAILURE(kOutOfRange);
    Detector &d = detectorOf(call);
    d.fskMode = mode;
    d.fsk.reset();
    d.fskCount = 0;
    d.fskLast.clear();
    return 0;
}

// param1: ms the tone lasts before it is reported (0: 100), param2: level
// in dB below the reference (0: 30).
uint32_t dialtoneInit(Call &call) {
    const uint32_t ms = call.in.u32(DialtoneDetectorInit::kParam1), db = call.in.u32(DialtoneDetectorInit::kParam2);
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
    using W = FrequencyDetectorInit;
    const int32_t count = call.in.i32(W::kCount);
    const uint32_t ms = call.in.u32(W::kParam1), db = call.in.u32(W::kParam4), pause = call.in.u32(W::kParam5);
    const uint32_t window = call.in.u16(W::kParam6);
    if (count <= 0 || count > static_cast<int32_t>(kMaxFrequencies) || count % Size != 0)
        return VB_FAILURE(kOutOfRange);
    if (!msFits(ms) || !msFits(pause) || !dbFits(db) || (window != 0 && (window < kMinWindow || window > kMaxWindow)))
        return VB_FAILURE(kOutOfRange);
    std::vector<uint16_t> coefficients;
    for (int32_t i = 0; i < count; ++i)
        coefficients.push_back(call.in.u16(W::kCoefficients + 2 * static_cast<uint32_t>(i)));
    const std::vector<uint8_t> sizes(static_cast<size_t>(count) / Size, static_cast<uint8_t>(Size));
    setReceiver(call, std::make_unique<signal::ToneReceiver>(
                          coefficients, sizes, window != 0 ? window : signal::ToneReceiver::windowFor(coefficients),
                          limits(orDefault(ms, kDigitMs), orDefault(pause, kPauseMs), orDefault(db, kDetectDb),
                                 kToneTwist, kToneTwist)));
    return 0;
}

// Status: the last digit's character, 0 before the first.
uint32_t digitStatus(Call &call) {
    call.out.u8(StatusRead::kReplyStatus, detectorOf(call).lastDigit);
    return 0;
}

// Status: 1 + the index of the tone present now (silence: 1 while silent),
// 0 for none.
template <bool Wide>
uint32_t toneStatus(Call &call) {
    const signal::Receiver *receiver = detectorOf(call).receiver.get();
    const uint32_t status = receiver != nullptr && receiver->active() >= 0 ? receiver->active() + 1u : 0u;
    if (Wide) {
        call.out.u32(StatusRead::kReplyStatus, status);
    } else {
        call.out.u8(StatusRead::kReplyStatus, static_cast<uint8_t>(status));
    }
    return 0;
}

constexpr Row kRows[] = {
    row<SilenceDetectorInit>(only<kTypeSilenceDetector, silenceInit>),
    row<SilenceDetectorStatus>(only<kTypeSilenceDetector, toneStatus<true>>),
    row<DtmfDetectorInit>(only<kTypeDtmfDetector, digitDetectorInit<DtmfDetectorInit, dtmfReceiver>>),
    row<DtmfDetectorStatus>(only<kTypeDtmfDetector, digitStatus>),
    row<FskDetectorInit>(only<kTypeFskDetector, fskInit>),
    row<DialtoneDetectorInit>(only<kTypeDialtoneDetector, dialtoneInit>),
    row<DialtoneDetectorStatus>(only<kTypeDialtoneDetector, toneStatus<true>>),
    row<ReadVal>(only<kTypeValueSampler, readValue>),
    row<ValSamplerInit>(only<kTypeValueSampler, samplerInit>),
    row<ValSamplerReadData>(only<kTypeValueSampler, samplerRead>),
    row<MfDetectorInit>(only<kTypeMfDetector, digitDetectorInit<MfDetectorInit, mfReceiver>>),
    row<MfDetectorStatus>(only<kTypeMfDetector, digitStatus>),
    row<DualDetectorInit>(only<kTypeDualDetector, frequencyInit<2>>),
    row<DualDetectorStatus>(only<kTypeDualDetector, toneStatus<false>>),
    row<SingleDetectorInit>(only<kTypeSingleDetector, frequencyInit<1>>),
    row<SingleDetectorStatus>(only<kTypeSingleDetector, toneStatus<false>>),
};

// RYN_VB_ATTR_FSK_COUNT and RYN_VB_ATTR_FSK_BYTES of the FSK detector
// (read-only): the count of bytes received since its set-up, and the last of
// them (at most 64, as many as the caller's buffer holds), the oldest first.
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

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_FSK_COUNT, RYN_VB_VALUE_UINT32, fskCount, nullptr},
    {RYN_VB_ATTR_FSK_BYTES, RYN_VB_VALUE_BINARY, fskBytes, nullptr},
};

}  // namespace

const Family kToneDetectorsFamily{"Tone detector", kRows, kAttributes, newDetector, nullptr, makesDetector, &kAudio};

}  // namespace vb
