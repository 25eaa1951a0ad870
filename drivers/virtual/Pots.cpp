// POTS lines of the virtual board: the board's side of an exchange line, as
// a telephone set. The application takes the line off hook and puts it on
// hook, flashes the hook and pulse-dials; since no exchange is wired to a
// virtual line, its ringing is simulated by a settable attribute. Events:
// kEventHookChanged (value 5: 1 off hook, 0 on hook), kEventRingStarted and
// kEventRingStopped (value 5: 0 the ringing ended, 1 answered by going off
// hook).
//
// The line's audio is what the exchange plays to the board, rendered
// through the audio-out attribute (and by the board clock, for a line
// joined to a pipe): dial tone while the line is off hook and nothing has
// been dialled, ring-back once digits have been dialled (from the first
// digit, or from the first after a flash, which brings dial tone back),
// silence on hook. A tone's cadence runs from the first sample rendered
// after it began; the line keeps time by the samples rendered.
//
// The exchange also listens: DTMF digits played into a pipe joined to the
// line (or into the line through the audio-in attribute) while it is off
// hook are dialled as pulse digits are.
#include <memory>
#include <string>

#include "Families.h"
#include "LineAudio.h"
#include "PotsWire.h"
#include "Signal.h"

namespace vb {
namespace {

using namespace wire::pots;

constexpr uint32_t kModeLast = RYN_VB_POTS_IMPEDANCE_COMPLEX;  // the impedances, 600 ohm first
constexpr uint32_t kDigitLimit = 127;
constexpr uint32_t kEndedByExchange = RYN_VB_RING_STOP_REQUESTED, kAnswered = RYN_VB_RING_STOP_ANSWERED;

struct Line : ObjectState {
    bool offHook = false;
    bool ringing = false;
    uint32_t mode = RYN_VB_POTS_IMPEDANCE_600_OHM;
    uint32_t flashes = 0;  // since the line went off hook
    std::string dialled;   // digits dialled since the line went off hook
    // The exchange's DTMF receiver, listening while the line is off hook.
    std::unique_ptr<signal::DtmfReceiver> receiver;
    // Audio: the line's time in samples rendered, the tone heard and since when.
    uint64_t now = 0, heardFrom = 0;
    const exchange::Tone *heard = nullptr;
};

Line &lineOf(Call &call) { return call.object->as<Line>(); }

void setHook(Board &board, Object &object, bool offHook) {
    Line &line = object.as<Line>();
    if (line.offHook == offHook) return;
    line.offHook = offHook;
    line.flashes = 0;
    line.dialled.clear();
    line.receiver = offHook ? std::make_unique<signal::DtmfReceiver>(signal::Limits{}) : nullptr;
    board.post(object, kEventHookChanged, offHook ? RYN_VB_HOOK_OFF : RYN_VB_HOOK_ON);
    if (offHook && line.ringing) {
        line.ringing = false;
        board.post(object, kEventRingStopped, kAnswered);
    }
}

uint32_t offHook(Call &call) {
    setHook(call.board, *call.object, true);
    return 0;
}

uint32_t onHook(Call &call) {
    setHook(call.board, *call.object, false);
    return 0;
}

// Flash time, then two settings that are kept with it; an off-hook line only.
// A flash recalls the exchange's register: the digits dialled so far are
// dropped.
uint32_t hookFlash(Call &call) {
    Line &line = lineOf(call);
    if (!line.offHook) return VB_FAILURE(kFailed);
    if (call.in.u32(HookFlash::kParam1) == 0) return VB_FAILURE(kOutOfRange);
    ++line.flashes;
    line.dialled.clear();
    return 0;
}

// Decimal digits only ('0' to '9'), on an off-hook line; the timing settings
// are accepted as they come.
uint32_t pulseDial(Call &call) {
    Line &line = lineOf(call);
    const uint32_t count = call.in.u32(PulseDial::kDigitCount);
    if (count > kDigitLimit) return VB_FAILURE(kOutOfRange);
    if (!line.offHook) return VB_FAILURE(kFailed);
    const auto digits = call.in.bytes(PulseDial::kDigits, count);
    for (uint8_t digit : digits)
        if (digit < '0' || digit > '9') return VB_FAILURE(kMalformed);
    line.dialled.append(digits.begin(), digits.end());
    return 0;
}

uint32_t setMode(Call &call) {
    if (call.in.u32(SetLiMode::kMode) > kModeLast) return VB_FAILURE(kOutOfRange);
    lineOf(call).mode = call.in.u32(SetLiMode::kMode);
    return 0;
}

uint32_t getMode(Call &call) {
    call.out.u32(GetLiMode::kReplyMode, lineOf(call).mode);
    return 0;
}

constexpr Row kRows[] = {
    row<OffHook>(offHook),     row<OnHook>(onHook),     row<HookFlash>(hookFlash),
    row<PulseDial>(pulseDial), row<SetLiMode>(setMode), row<GetLiMode>(getMode),
};

// ---- Attributes -----------------------------------------------------------

std::vector<uint8_t> ringingValue(Call &, Object &object, uint32_t) { return wordValue(object.as<Line>().ringing); }

// The exchange rings the line (1) or stops (0); an off-hook line is not rung.
uint32_t setRinging(Call &call, Object &object, std::span<const uint8_t> value) {
    const auto word = wordOf(value);
    if (!word || *word > 1) return VB_FAILURE(kOutOfRange);
    const bool ring = *word == 1;
    Line &line = object.as<Line>();
    if (ring && line.offHook) return VB_FAILURE(kFailed);
    if (ring == line.ringing) return 0;
    line.ringing = ring;
    call.board.post(object, ring ? kEventRingStarted : kEventRingStopped, kEndedByExchange);
    return 0;
}

std::vector<uint8_t> offHookValue(Call &, Object &object, uint32_t) { return wordValue(object.as<Line>().offHook); }
std::vector<uint8_t> dialledValue(Call &, Object &object, uint32_t) { return textValue(object.as<Line>().dialled); }
std::vector<uint8_t> flashesValue(Call &, Object &object, uint32_t) { return wordValue(object.as<Line>().flashes); }

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_POTS_RINGING, RYN_VB_VALUE_BOOLEAN, ringingValue, setRinging},
    {RYN_VB_ATTR_POTS_OFF_HOOK, RYN_VB_VALUE_BOOLEAN, offHookValue, nullptr},
    {RYN_VB_ATTR_POTS_DIALLED, RYN_VB_VALUE_TEXT, dialledValue, nullptr},    // since going off hook
    {RYN_VB_ATTR_POTS_FLASHES, RYN_VB_VALUE_UINT32, flashesValue, nullptr},  // since going off hook
};

// ---- Audio ------------------------------------------------------------------

const exchange::Tone *exchangeTone(const Line &line) {
    if (!line.offHook) return nullptr;
    return line.dialled.empty() ? &exchange::kDialTone : &exchange::kRingBackTone;
}

bool givesSamples(const Object &) { return true; }
bool takesSamples(const Object &) { return true; }

// What reaches the exchange: each DTMF digit it hears is dialled.
bool hear(Board &, Object &object, Samples frame, uint32_t, std::vector<int16_t> &) {
    Line &line = object.as<Line>();
    if (line.receiver == nullptr) return false;  // on hook
    std::vector<signal::Report> reports;
    line.receiver->run(frame, reports);
    for (const signal::Report &report : reports)
        if (report.started) line.dialled.push_back(static_cast<char>(signal::DtmfReceiver::character(report.symbol)));
    return false;
}

// What the exchange plays; the line plays while it is off hook.
bool render(Board &, Object &object, std::span<int16_t> out) {
    Line &line = object.as<Line>();
    const exchange::Tone *tone = exchangeTone(line);
    if (tone != line.heard) {
        line.heard = tone;
        line.heardFrom = line.now;
    }
    for (int16_t &sample : out) {
        sample = tone != nullptr ? exchange::toneSample(*tone, line.now - line.heardFrom) : 0;
        ++line.now;
    }
    return tone != nullptr;
}

constexpr Audio kAudio{takesSamples, hear, givesSamples, render};

}  // namespace

const Family kPotsFamily{"POTS line", kRows, kAttributes, makeState<Line>, nullptr, nullptr, &kAudio};

}  // namespace vb
