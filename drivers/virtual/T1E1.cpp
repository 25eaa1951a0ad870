// T1/E1 spans of the virtual board. The two spans are joined by a virtual
// cable: what one transmits (framing, alarms, signalling, data-link, Sa and
// Si bits, bit errors) the other receives, unless a loopback turns a span's
// own signal back to it. Setters act on the transmit side and the span's
// settings; the signalling getters read the receive side.
//
// After every request the receive side of both spans is worked out again and
// compared with what was last reported: a change of the layer-1 status word
// posts kEventLayer1Changed (sync, loss of signal, loopback, PRBS bits) or
// kEventAlarmChanged (received AIS or RAI), with the new word in value 5 and
// the old in value 6; a changed signalling nibble posts
// kEventSignallingChanged with the time slot, the new and the old nibble.
#include <algorithm>
#include <array>

#include "Families.h"
#include "Spans.h"
#include "T1E1Wire.h"

namespace vb {
namespace {

using namespace wire::t1e1;

// Line-interface modes.
constexpr uint32_t kModeT1 = RYN_VB_T1E1_MODE_T1, kModeE1 = RYN_VB_T1E1_MODE_E1;
// Line loops: a local loop turns the span's transmitter back into its own
// receiver; a remote loop sends what the span receives back to the far end.
constexpr uint32_t kLoopNone = RYN_VB_T1E1_LOOP_NONE, kLoopLocal = RYN_VB_T1E1_LOOP_LOCAL,
                   kLoopRemote = RYN_VB_T1E1_LOOP_REMOTE;
// Alarms a span can transmit (a mask).
constexpr uint32_t kAlarmAis = RYN_VB_T1E1_ALARM_AIS, kAlarmRai = RYN_VB_T1E1_ALARM_RAI,
                   kAlarmsAll = kAlarmAis | kAlarmRai;

// The layer-1 status word.
constexpr uint32_t kStatusSync = RYN_VB_T1E1_STATUS_FRAME_SYNC;     // frame alignment found
constexpr uint32_t kStatusLos = RYN_VB_T1E1_STATUS_LOS;             // loss of signal
constexpr uint32_t kStatusAis = RYN_VB_T1E1_STATUS_AIS;             // all ones received (blue alarm)
constexpr uint32_t kStatusRai = RYN_VB_T1E1_STATUS_RAI;             // remote alarm received (yellow alarm)
constexpr uint32_t kStatusLoop = RYN_VB_T1E1_STATUS_LOOP;           // a line loop is set on this span
constexpr uint32_t kStatusPrbsSync = RYN_VB_T1E1_STATUS_PRBS_SYNC;  // the PRBS tester receives its own pattern
constexpr uint32_t kStatusAlarms = kStatusAis | kStatusRai;

constexpr uint32_t kSlots = 32;                // time slots; T1 channels 1..24, E1 1..15 and 17..31
constexpr uint32_t kSaFirst = 4, kSaLast = 8;  // Sa4..Sa8

struct Span : ObjectState {
    uint32_t mode = kModeT1, loop = kLoopNone, termination = RYN_VB_T1E1_TERMINATION_100_OHM, monitor = 0,
             transmit = RYN_VB_T1E1_TRANSMITTER_ON, alarms = 0;
    uint32_t prbsPattern = RYN_VB_T1E1_PRBS_OFF, prbsInverted = 0, dataLink = 0;
    std::array<uint8_t, kT1ConfigurationSize> t1Config{};
    std::array<uint8_t, kE1ConfigurationSize> e1Config{};
    std::array<uint8_t, kSlots> signalling{};  // transmitted ABCD nibble per time slot
    std::array<uint8_t, kSaLast + 1> sa{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::array<uint8_t, 2> si{0xFF, 0xFF};
    uint16_t bitErrors = 0, codeViolations = 0;  // received
    uint32_t resynchs = 0;
    // Last reported receive side; a new span pair starts in sync with idle signalling.
    uint32_t reportedStatus = kStatusSync;
    std::array<uint8_t, kSlots> reportedSignalling{};
};

// One span with the far end of its cable.
struct Link {
    Span &self;
    Span &far;
};

Link linkOf(Board &board, Object &span) {
    Object *far = board.findDevice(kTypeT1E1, span.id ^ 1u);
    return {span.as<Span>(), far != nullptr ? far->as<Span>() : span.as<Span>()};
}

bool echoed(const Link &l) { return l.self.loop == kLoopLocal || (l.far.loop == kLoopRemote && &l.far != &l.self); }
// The span whose transmitter the received signal comes from.
const Span &origin(const Link &l) { return echoed(l) ? l.self : l.far; }
bool hasSignal(const Link &l) {
    if (l.self.loop == kLoopLocal) return true;
    return l.far.transmit != 0 && (l.far.loop != kLoopRemote || l.self.transmit != 0);
}
bool framed(const Link &l) {
    return hasSignal(l) && (origin(l).alarms & kAlarmAis) == 0 && origin(l).mode == l.self.mode;
}

uint32_t status(Board &board, Object &span) {
    const Link l = linkOf(board, span);
    const Span &from = origin(l);
    uint32_t word = l.self.loop != kLoopNone ? kStatusLoop : 0;
    if (!hasSignal(l)) return word | kStatusLos;
    if (from.alarms & kAlarmAis) return word | kStatusAis;
    if (!framed(l)) return word;
    word |= kStatusSync;
    // A span without frame alignment sends RAI by itself.
    const bool fromFramed = &from == &l.self || framed(Link{l.far, l.self});
    if ((from.alarms & kAlarmRai) != 0 || !fromFramed) word |= kStatusRai;
    if (l.self.prbsPattern != RYN_VB_T1E1_PRBS_OFF && from.prbsPattern == l.self.prbsPattern &&
        from.prbsInverted == l.self.prbsInverted)
        word |= kStatusPrbsSync;
    return word;
}

// What the span receives of the far transmitter's bits: nothing (zeros)
// without frame alignment.
const Span *received(Board &board, Object &span) {
    return (status(board, span) & kStatusSync) != 0 ? &origin(linkOf(board, span)) : nullptr;
}

std::array<uint8_t, kSlots> receivedSignalling(Board &board, Object &span) {
    const Span *from = received(board, span);
    return from != nullptr ? from->signalling : std::array<uint8_t, kSlots>{};
}

void settle(Board &board) {
    for (uint32_t id = 0; id < 2; ++id) {
        Object *span = board.findDevice(kTypeT1E1, id);
        if (span == nullptr) continue;
        Span &s = span->as<Span>();
        const uint32_t now = status(board, *span), before = s.reportedStatus;
        if ((now & ~kStatusAlarms) != (before & ~kStatusAlarms)) board.post(*span, kEventLayer1Changed, now, before);
        if ((now & kStatusAlarms) != (before & kStatusAlarms)) board.post(*span, kEventAlarmChanged, now, before);
        s.reportedStatus = now;
        const auto bits = receivedSignalling(board, *span);
        for (uint32_t slot = 0; slot < kSlots; ++slot)
            if (bits[slot] != s.reportedSignalling[slot])
                board.post(*span, kEventSignallingChanged, slot, bits[slot], s.reportedSignalling[slot]);
        s.reportedSignalling = bits;
    }
}

// Every row works out the receive side again after its handler.
template <Handler H>
uint32_t settled(Call &call) {
    const uint32_t result = H(call);
    settle(call.board);
    return result;
}

Span &spanOf(Call &call) { return call.object->as<Span>(); }

// ---- Settings -------------------------------------------------------------

// A setting of one 32-bit value, from 0 to Last.
template <typename W, uint32_t Span::*Field, uint32_t Last>
uint32_t setValue(Call &call) {
    const uint32_t value = call.in.u32(W::kValue);
    if (value > Last) return VB_FAILURE(kOutOfRange);
    spanOf(call).*Field = value;
    return 0;
}

template <typename W, bool On>
uint32_t alarm(Call &call) {
    const uint32_t mask = call.in.u32(W::kValue);
    if (mask == 0 || (mask & ~kAlarmsAll) != 0) return VB_FAILURE(kOutOfRange);
    uint32_t &alarms = spanOf(call).alarms;
    alarms = On ? alarms | mask : alarms & ~mask;
    return 0;
}

uint32_t forceResynch(Call &call) {
    ++spanOf(call).resynchs;
    return 0;
}

// A pattern (RYN_VB_T1E1_PRBS_...), then 0 normal, 1 inverted.
uint32_t setPrbs(Call &call) {
    const uint32_t pattern = call.in.u32(SetPrbsConfig::kParam1), inverted = call.in.u32(SetPrbsConfig::kParam2);
    if (pattern > RYN_VB_T1E1_PRBS_23 || inverted > 1) return VB_FAILURE(kOutOfRange);
    spanOf(call).prbsPattern = pattern;
    spanOf(call).prbsInverted = inverted;
    return 0;
}

// Inserts a bit error or a code violation in the transmitted signal.
uint32_t insertDefect(Call &call) {
    const uint32_t defect = call.in.u32(InsertSingleBitDefect::kValue);
    if (defect > RYN_VB_T1E1_DEFECT_CODE_VIOLATION) return VB_FAILURE(kOutOfRange);
    const Span *self = &spanOf(call);
    for (uint32_t id = 0; id < 2; ++id) {
        Object *span = call.board.findDevice(kTypeT1E1, id);
        if (span == nullptr || (status(call.board, *span) & kStatusLos) != 0) continue;
        Span &receiver = span->as<Span>();
        if (&origin(linkOf(call.board, *span)) != self) continue;
        ++(defect == RYN_VB_T1E1_DEFECT_BIT_ERROR ? receiver.bitErrors : receiver.codeViolations);
    }
    return 0;
}

template <typename W, std::array<uint8_t, W::kRecordSize> Span::*Record>
uint32_t setRecord(Call &call) {
    const auto bytes = call.in.bytes(W::kRecord, W::kRecordSize);
    std::copy(bytes.begin(), bytes.end(), (spanOf(call).*Record).begin());
    return 0;
}

template <typename W, std::array<uint8_t, W::kRecordSize> Span::*Record>
uint32_t getRecord(Call &call) {
    call.out.write(W::kReplyRecord, (spanOf(call).*Record).data(), W::kRecordSize);
    return 0;
}

uint32_t getStatus(Call &call) {
    call.out.u32(GetLayer1Status::kReplyStatus, status(call.board, *call.object));
    return 0;
}

// 0: status word; 4: alarms transmitted, RAI included when sent by itself;
// 8: bit errors (low half) and code violations (high half) received;
// 12: forced resynchronisations; 16..19: mode, loop, termination, monitor.
uint32_t getStatusEx(Call &call) {
    const Span &s = spanOf(call);
    const Link l = linkOf(call.board, *call.object);
    const uint32_t word = status(call.board, *call.object);
    const bool autoRai = !framed(l);
    constexpr uint32_t at = GetLayer1StatusEx::kReplyRecord;
    call.out.u32(at, word).u32(at + 4, s.alarms | (autoRai ? kAlarmRai : 0));
    call.out.u16(at + 8, s.bitErrors).u16(at + 10, s.codeViolations).u32(at + 12, s.resynchs);
    const uint8_t settings[] = {uint8_t(s.mode), uint8_t(s.loop), uint8_t(s.termination), uint8_t(s.monitor)};
    call.out.write(at + 16, settings, sizeof settings);
    return 0;
}

// ---- Signalling -----------------------------------------------------------

// Robbed bits and the data link are T1's, the ABCD, Sa and Si bits E1's; a
// span in the other mode refuses them.
template <uint32_t Mode, Handler H>
uint32_t inMode(Call &call) {
    return spanOf(call).mode == Mode ? H(call) : VB_FAILURE(kFailed);
}

bool slotOf(uint32_t mode, uint32_t slot) {
    return mode == kModeT1 ? slot >= 1 && slot <= 24 : slot >= 1 && slot < kSlots && slot != 16;
}

// A 16-byte record holds the nibble of time slot n in byte n / 2, the low
// nibble first; the nibbles of slots the mode does not use are ignored and
// read as 0.
template <typename W>
uint32_t setBitRecord(Call &call) {
    Span &s = spanOf(call);
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        if (slotOf(s.mode, slot)) s.signalling[slot] = (call.in.u8(W::kRecord + slot / 2) >> (4 * (slot % 2))) & 0x0F;
    return 0;
}

template <typename W>
uint32_t getBitRecord(Call &call) {
    const auto bits = receivedSignalling(call.board, *call.object);
    std::array<uint8_t, W::kRecordSize> record{};
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        if (slotOf(spanOf(call).mode, slot)) record[slot / 2] |= uint8_t(bits[slot] << (4 * (slot % 2)));
    call.out.write(W::kReplyRecord, record.data(), W::kRecordSize);
    return 0;
}

template <typename W>
uint32_t setSlot(Call &call) {
    const uint32_t slot = call.in.u32(W::kChannel);
    const uint8_t bits = call.in.u8(W::kValue);
    if (!slotOf(spanOf(call).mode, slot) || bits > 0x0F) return VB_FAILURE(kOutOfRange);
    spanOf(call).signalling[slot] = bits;
    return 0;
}

template <typename W>
uint32_t getSlot(Call &call) {
    const uint32_t slot = call.in.u32(W::kChannel);
    if (!slotOf(spanOf(call).mode, slot)) return VB_FAILURE(kOutOfRange);
    call.out.u8(W::kReplyValue, receivedSignalling(call.board, *call.object)[slot]);
    return 0;
}

uint32_t setSa(Call &call) {
    const uint32_t selector = call.in.u32(E1SetSaBit::kSelector);
    if (selector < kSaFirst || selector > kSaLast) return VB_FAILURE(kOutOfRange);
    spanOf(call).sa[selector] = call.in.u8(E1SetSaBit::kValue);
    return 0;
}

uint32_t getSa(Call &call) {
    const uint32_t selector = call.in.u32(E1GetSaBit::kSelector);
    if (selector < kSaFirst || selector > kSaLast) return VB_FAILURE(kOutOfRange);
    const Span *from = received(call.board, *call.object);
    call.out.u8(E1GetSaBit::kReplyValue, from != nullptr ? from->sa[selector] : 0);
    return 0;
}

uint32_t setSi(Call &call) {
    spanOf(call).si = {call.in.u8(E1SetSiBit::kValue1), call.in.u8(E1SetSiBit::kValue2)};
    return 0;
}

uint32_t getSi(Call &call) {
    const Span *from = received(call.board, *call.object);
    if (from != nullptr) call.out.u8(E1GetSiBit::kReplyValue1, from->si[0]).u8(E1GetSiBit::kReplyValue2, from->si[1]);
    return 0;
}

using S = Span;
constexpr Row kRows[] = {
    row<SetLiMode>(settled<setValue<SetLiMode, &S::mode, kModeE1>>),
    row<T1SetConfiguration>(settled<setRecord<T1SetConfiguration, &S::t1Config>>),
    row<T1GetConfiguration>(settled<getRecord<T1GetConfiguration, &S::t1Config>>),
    row<E1SetConfiguration>(settled<setRecord<E1SetConfiguration, &S::e1Config>>),
    row<E1GetConfiguration>(settled<getRecord<E1GetConfiguration, &S::e1Config>>),
    row<AlarmOn>(settled<alarm<AlarmOn, true>>),
    row<AlarmOff>(settled<alarm<AlarmOff, false>>),
    row<SetLineLoop>(settled<setValue<SetLineLoop, &S::loop, kLoopRemote>>),
    row<ForceResynch>(settled<forceResynch>),
    row<GetLayer1Status>(settled<getStatus>),
    row<XmitPinControl>(settled<setValue<XmitPinControl, &S::transmit, RYN_VB_T1E1_TRANSMITTER_ON>>),
    row<SetLineTermination>(settled<setValue<SetLineTermination, &S::termination, RYN_VB_T1E1_TERMINATION_75_OHM>>),
    row<SetMonitorMode>(settled<setValue<SetMonitorMode, &S::monitor, 1>>),
    row<SetPrbsConfig>(settled<setPrbs>),
    row<T1SetRobBitData>(settled<inMode<kModeT1, setBitRecord<T1SetRobBitData>>>),
    row<T1GetRobBitData>(settled<inMode<kModeT1, getBitRecord<T1GetRobBitData>>>),
    row<E1SetABCDBit>(settled<inMode<kModeE1, setBitRecord<E1SetABCDBit>>>),
    row<E1GetABCDBit>(settled<inMode<kModeE1, getBitRecord<E1GetABCDBit>>>),
    row<E1GetSaBit>(settled<inMode<kModeE1, getSa>>),
    row<E1SetSaBit>(settled<inMode<kModeE1, setSa>>),
    row<E1GetSiBit>(settled<inMode<kModeE1, getSi>>),
    row<E1SetSiBit>(settled<inMode<kModeE1, setSi>>),
    row<T1SetChannelizedRobBitData>(settled<inMode<kModeT1, setSlot<T1SetChannelizedRobBitData>>>),
    row<T1GetChannelizedRobBitData>(settled<inMode<kModeT1, getSlot<T1GetChannelizedRobBitData>>>),
    row<E1SetChannelizedABCDBit>(settled<inMode<kModeE1, setSlot<E1SetChannelizedABCDBit>>>),
    row<E1GetChannelizedABCDBit>(settled<inMode<kModeE1, getSlot<E1GetChannelizedABCDBit>>>),
    row<T1SetDlBitData>(settled<inMode<kModeT1, setValue<T1SetDlBitData, &S::dataLink, 0xFFFFFFFFu>>>),
    row<InsertSingleBitDefect>(settled<insertDefect>),
    row<GetLayer1StatusEx>(settled<getStatusEx>),
};

// ---- Attributes -----------------------------------------------------------

std::vector<uint8_t> statusAttribute(Call &call, Object &span, uint32_t) { return wordValue(status(call.board, span)); }
std::vector<uint8_t> modeAttribute(Call &, Object &span, uint32_t) {
    return textValue(span.as<Span>().mode == kModeT1 ? "T1" : "E1");
}
std::vector<uint8_t> dataLinkAttribute(Call &call, Object &span, uint32_t) {
    const Span *from = received(call.board, span);
    return wordValue(from != nullptr && from->mode == kModeT1 ? from->dataLink : 0);
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_T1E1_STATUS, RYN_VB_VALUE_UINT32, statusAttribute, nullptr},
    {RYN_VB_ATTR_T1E1_MODE, RYN_VB_VALUE_TEXT, modeAttribute, nullptr},
    {RYN_VB_ATTR_T1E1_DATA_LINK, RYN_VB_VALUE_UINT32, dataLinkAttribute, nullptr},  // received (T1)
};

}  // namespace

// Both spans see the reset one's return to its start at once.
void t1e1Reset(Board &board, Object &span) {
    span.data = std::make_unique<Span>();
    settle(board);
}

const Family kT1E1Family{"T1/E1 span", kRows, kAttributes, makeState<Span>, t1e1Reset};

bool voiceSlot(Board &, Object &span, uint32_t slot) {
    if (span.as<Span>().mode == kModeE1) return slot >= 1 && slot <= 31 && slot != 16;
    return slot >= 1 && slot <= 24;
}

std::vector<Object *> spansReceiving(Board &board, Object &span) {
    std::vector<Object *> spans;
    for (uint32_t id = 0; id < 2; ++id) {
        Object *other = board.findDevice(kTypeT1E1, id);
        if (other != nullptr && received(board, *other) == &span.as<Span>()) spans.push_back(other);
    }
    return spans;
}

}  // namespace vb
