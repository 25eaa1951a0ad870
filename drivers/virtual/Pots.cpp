// POTS lines of the virtual board: the board's side of an exchange line, as
// a telephone set. The application takes the line off hook and puts it on
// hook, flashes the hook and pulse-dials; since no exchange is wired to a
// virtual line, its ringing is simulated by a settable attribute. Events:
// kEventHookChanged (value 5: 1 off hook, 0 on hook), kEventRingStarted and
// kEventRingStopped (value 5: 0 the ringing ended, 1 answered by going off
// hook).
#include <string>

#include "Families.h"
#include "PotsWire.h"

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
    std::string dialled;   // digits pulse-dialled since the line went off hook
};

Line &lineOf(Call &call) { return call.object->as<Line>(); }

void setHook(Board &board, Object &object, bool offHook) {
    Line &line = object.as<Line>();
    if (line.offHook == offHook) return;
    line.offHook = offHook;
    line.flashes = 0;
    line.dialled.clear();
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
    uint32_t word = 2;
    if (value.size() == 4) std::memcpy(&word, value.data(), 4);
    if (word > 1) return VB_FAILURE(kOutOfRange);
    const bool ring = word == 1;
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

}  // namespace

const Family kPotsFamily{"POTS line", kRows, kAttributes, makeState<Line>};

}  // namespace vb
