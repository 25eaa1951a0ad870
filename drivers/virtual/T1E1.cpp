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

namespace vb {
namespace {

// Line-interface modes.
constexpr uint32_t kModeT1 = RYN_VB_T1E1_MODE_T1, kModeE1 = RYN_VB_T1E1_MODE_E1;
// Line loops: a local loop turns the span's transmitter back into its own
// receiver; a remote loop sends what the span receives back to the far end.
constexpr uint32_t kLoopNone = RYN_VB_T1E1_LOOP_NONE, kLoopLocal = RYN_VB_T1E1_LOOP_LOCAL,
                   kLoopRemote = RYN_VB_T1E1_LOOP_REMOTE;
// Alarms a span can transmit (a mask).
constexpr uint32_t kAlarmAis = RYN_VB_T1E1_ALARM_AIS, kAlarmRai = RYN_VB_T1E1_ALARM_RAI, kAlarmsAll = kAlarmAis | kAlarmRai;

// The layer-1 status word.
constexpr uint32_t kStatusSync = RYN_VB_T1E1_STATUS_FRAME_SYNC; // frame alignment found
constexpr uint32_t kStatusLos = RYN_VB_T1E1_STATUS_LOS; // loss of signal
constexpr uint32_t kStatusAis = RYN_VB_T1E1_STATUS_AIS; // all ones received (blue alarm)
constexpr uint32_t kStatusRai = RYN_VB_T1E1_STATUS_RAI; // remote alarm received (yellow alarm)
constexpr uint32_t kStatusLoop = RYN_VB_T1E1_STATUS_LOOP; // a line loop is set on this span
constexpr uint32_t kStatusPrbsSync = RYN_VB_T1E1_STATUS_PRBS_SYNC; // the PRBS tester receives its own pattern
constexpr uint32_t kStatusAlarms = kStatusAis | kStatusRai;

constexpr uint32_t kSlots = 32;  // time slots; T1 channels 1..24, E1 1..15 and 17..31
constexpr uint32_t kT1Config = 60, kE1Config = 56, kBitRecord = 16, kStatusEx = 20;
constexpr uint32_t kSaFirst = 4, kSaLast = 8;  // Sa4..Sa8

struct Span : ObjectState {
    uint32_t mode = kModeT1, loop = kLoopNone, termination = RYN_VB_T1E1_TERMINATION_100_OHM, monitor = 0,
             transmit = RYN_VB_T1E1_TRANSMITTER_ON, alarms = 0;
    uint32_t prbsPattern = RYN_VB_T1E1_PRBS_OFF, prbsInverted = 0, dataLink = 0;
    std::array<uint8_t, kT1Config> t1Config{};
    std::array<uint8_t, kE1Config> e1Config{};
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
    if (l.self.prbsPattern != RYN_VB_T1E1_PRBS_OFF && from.prbsPattern == l.self.prbsPattern && from.prbsInverted == l.self.prbsInverted)
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

// A setting of one 32-bit value at 20, from 0 to Last.
template <uint32_t Span::*Field, uint32_t Last>
uint32_t setValue(Call &call) {
    const uint32_t value = call.in.u32(20);
    if (value > Last) return VB_FAILURE(kOutOfRange);
    spanOf(call).*Field = value;
    return 0;
}

template <bool On>
uint32_t alarm(Call &call) {
    const uint32_t mask = call.in.u32(20);
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
    const uint32_t pattern = call.in.u32(20), inverted = call.in.u32(24);
    if (pattern > RYN_VB_T1E1_PRBS_23 || inverted > 1) return VB_FAILURE(kOutOfRange);
    spanOf(call).prbsPattern = pattern;
    spanOf(call).prbsInverted = inverted;
    return 0;
}

// Inserts a bit error or a code violation in the transmitted signal.
uint32_t insertDefect(Call &call) {
    const uint32_t defect = call.in.u32(20);
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

template <size_t N, std::array<uint8_t, N> Span::*Record>
uint32_t setRecord(Call &call) {
    const auto bytes = call.in.bytes(20, N);
    std::copy(bytes.begin(), bytes.end(), (spanOf(call).*Record).begin());
    return 0;
}

template <size_t N, std::array<uint8_t, N> Span::*Record>
uint32_t getRecord(Call &call) {
    call.out.write(8, (spanOf(call).*Record).data(), N);
    return 0;
}

uint32_t getStatus(Call &call) {
    call.out.u32(8, status(call.board, *call.object));
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
    call.out.u32(8, word).u32(12, s.alarms | (autoRai ? kAlarmRai : 0));
    call.out.u16(16, s.bitErrors).u16(18, s.codeViolations).u32(20, s.resynchs);
    const uint8_t settings[] = {uint8_t(s.mode), uint8_t(s.loop), uint8_t(s.termination), uint8_t(s.monitor)};
    call.out.write(24, settings, sizeof settings);
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
uint32_t setBitRecord(Call &call) {
    Span &s = spanOf(call);
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        if (slotOf(s.mode, slot)) s.signalling[slot] = (call.in.u8(20 + slot / 2) >> (4 * (slot % 2))) & 0x0F;
    return 0;
}

uint32_t getBitRecord(Call &call) {
    const auto bits = receivedSignalling(call.board, *call.object);
    std::array<uint8_t, kBitRecord> record{};
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        if (slotOf(spanOf(call).mode, slot)) record[slot / 2] |= uint8_t(bits[slot] << (4 * (slot % 2)));
    call.out.write(8, record.data(), kBitRecord);
    return 0;
}

uint32_t setSlot(Call &call) {
    const uint32_t slot = call.in.u32(20);
    const uint8_t bits = call.in.u8(24);
    if (!slotOf(spanOf(call).mode, slot) || bits > 0x0F) return VB_FAILURE(kOutOfRange);
    spanOf(call).signalling[slot] = bits;
    return 0;
}

uint32_t getSlot(Call &call) {
    const uint32_t slot = call.in.u32(20);
    if (!slotOf(spanOf(call).mode, slot)) return VB_FAILURE(kOutOfRange);
    call.out.u8(8, receivedSignalling(call.board, *call.object)[slot]);
    return 0;
}

uint32_t setSa(Call &call) {
    const uint32_t selector = call.in.u32(20);
    if (selector < kSaFirst || selector > kSaLast) return VB_FAILURE(kOutOfRange);
    spanOf(call).sa[selector] = call.in.u8(24);
    return 0;
}

uint32_t getSa(Call &call) {
    const uint32_t selector = call.in.u32(20);
    if (selector < kSaFirst || selector > kSaLast) return VB_FAILURE(kOutOfRange);
    const Span *from = received(call.board, *call.object);
    call.out.u8(8, from != nullptr ? from->sa[selector] : 0);
    return 0;
}

uint32_t setSi(Call &call) {
    spanOf(call).si = {call.in.u8(20), call.in.u8(21)};
    return 0;
}

uint32_t getSi(Call &call) {
    const Span *from = received(call.board, *call.object);
    if (from != nullptr) call.out.u8(8, from->si[0]).u8(9, from->si[1]);
    return 0;
}

using S = Span;
constexpr Row kRows[] = {
    {0x99A, 24, 12, settled<setValue<&S::mode, kModeE1>>},
    {0x99B, 20 + kT1Config, 12, settled<setRecord<kT1Config, &S::t1Config>>},
    {0x99C, 20, 12 + kT1Config, settled<getRecord<kT1Config, &S::t1Config>>},
    {0x99D, 20 + kE1Config, 12, settled<setRecord<kE1Config, &S::e1Config>>},
    {0x99E, 20, 12 + kE1Config, settled<getRecord<kE1Config, &S::e1Config>>},
    {0x99F, 24, 12, settled<alarm<true>>},
    {0x9A0, 24, 12, settled<alarm<false>>},
    {0x9A1, 24, 12, settled<setValue<&S::loop, kLoopRemote>>},
    {0x9A2, 20, 12, settled<forceResynch>},
    {0x9A3, 20, 16, settled<getStatus>},
    {0x9A4, 24, 12, settled<setValue<&S::transmit, RYN_VB_T1E1_TRANSMITTER_ON>>},
    {0x9A5, 24, 12, settled<setValue<&S::termination, RYN_VB_T1E1_TERMINATION_75_OHM>>},
    {0x9A6, 24, 12, settled<setValue<&S::monitor, 1>>},
    {0x9A7, 28, 12, settled<setPrbs>},
    {0x9A8, 20 + kBitRecord, 12, settled<inMode<kModeT1, setBitRecord>>},
    {0x9A9, 20, 12 + kBitRecord, settled<inMode<kModeT1, getBitRecord>>},
    {0x9AA, 20 + kBitRecord, 12, settled<inMode<kModeE1, setBitRecord>>},
    {0x9AB, 20, 12 + kBitRecord, settled<inMode<kModeE1, getBitRecord>>},
    {0x9AC, 24, 16, settled<inMode<kModeE1, getSa>>},
    {0x9AD, 26, 12, settled<inMode<kModeE1, setSa>>},
    {0x9AE, 20, 14, settled<inMode<kModeE1, getSi>>},
    {0x9AF, 22, 12, settled<inMode<kModeE1, setSi>>},
    {0x9BF, 26, 12, settled<inMode<kModeT1, setSlot>>},
    {0x9C0, 24, 14, settled<inMode<kModeT1, getSlot>>},
    {0x9C1, 26, 12, settled<inMode<kModeE1, setSlot>>},
    {0x9C2, 24, 14, settled<inMode<kModeE1, getSlot>>},
    {0x9C3, 24, 12, settled<inMode<kModeT1, setValue<&S::dataLink, 0xFFFFFFFFu>>>},
    {0x9C4, 24, 12, settled<insertDefect>},
    {0x9C5, 20, 12 + kStatusEx, settled<getStatusEx>},
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
    span.data.reset();
    settle(board);
}

Table t1e1Table() { return kRows; }
std::span<const Attribute> t1e1Attributes() { return kAttributes; }

}  // namespace vb
