// The POTS line driven through a DSP block (block type 150): its set-up, the
// DAA's registers, hook control, hook flash, pulse dialling, on-hook line
// monitoring and line sensing.
//
// The block answers nothing but its set-up until it is set up (error 13).
// The set-up puts the line on hook with the monitor off and clears the DAA's
// registers; the library then programs the DAA by the set-up's mode with
// single register writes. The line is always connected to a virtual
// exchange that draws loop current when the line is off hook.
//
// Hook changes post "Hook state changed": word 5 the hook state
// (RYN_VB_HOOK_ON or RYN_VB_HOOK_OFF), word 6 the cause (below), word 7 the line voltage in volts
// (48 on hook, 8 off hook). Flash and pulse times advance the board's clock.
#include <algorithm>
#include <array>
#include <optional>

#include "CstPotsWire.h"
#include "Families.h"

namespace vb {
namespace {

namespace pots = wire::cst_pots;

enum Hook : uint32_t { kOnHook = RYN_VB_HOOK_ON, kOffHook = RYN_VB_HOOK_OFF };
// Word 6 of "Hook state changed".
enum Cause : uint32_t {
    kCauseRequest = RYN_VB_HOOK_CAUSE_REQUEST,
    kCauseFlash = RYN_VB_HOOK_CAUSE_FLASH,
    kCauseLineMonitor = RYN_VB_HOOK_CAUSE_LINE_MONITOR,
    kCauseLineSense = RYN_VB_HOOK_CAUSE_SENSE,
};
constexpr uint32_t kOnHookVolts = 48, kOffHookVolts = 8;

// The DAA has 64 registers, 0x00 to 0x3F. Write statuses: written, the
// register already held the value, no such register (nothing written).
constexpr size_t kDaaRegisters = 64;
enum DaaStatus : uint32_t {
    kDaaWritten = RYN_VB_DAA_WRITTEN,
    kDaaUnchanged = RYN_VB_DAA_UNCHANGED,
    kDaaNoRegister = RYN_VB_DAA_NO_REGISTER,
};

constexpr uint32_t kDefaultFlashMs = 600, kShortestFlashMs = 50, kLongestFlashMs = 2000;
constexpr uint32_t kDefaultBreakMs = 60, kDefaultMakeMs = 40, kLongestPulseMs = 1000;
constexpr uint32_t kPulsesForZero = 10, kLargestDigit = 9;
constexpr uint64_t kIntervalsPerMs = 10000;

struct Line : ObjectState {
    bool setUp = false;
    uint32_t lineSetting = 0;
    int32_t daaMode = 0;
    uint32_t hook = kOnHook;
    bool monitor = false;
    std::array<uint8_t, kDaaRegisters> daa{};
};

void report(Call &call, const Line &line, uint32_t cause) {
    const uint32_t volts = line.hook == kOnHook ? kOnHookVolts : kOffHookVolts;
    call.board.post(*call.object, kEventHookChanged, line.hook, cause, volts);
}

void setHook(Call &call, Line &line, uint32_t hook, uint32_t cause) {
    if (line.hook == hook) return;
    line.hook = hook;
    report(call, line, cause);
}

// Answers a request only once the block is set up.
template <uint32_t (*Answer)(Call &, Line &)>
uint32_t ready(Call &call) {
    auto &line = call.object->as<Line>();
    return line.setUp ? Answer(call, line) : VB_FAILURE(kFailed);
}

// param1: the line setting, kept; daaMode: kept (the library programs the DAA
// by it after the set-up).
uint32_t init(Call &call) {
    auto &line = call.object->as<Line>();
    setHook(call, line, kOnHook, kCauseRequest);
    line.setUp = true;
    line.lineSetting = call.in.u32(pots::Init::kParam1);
    line.daaMode = call.in.i32(pots::Init::kDaaMode);
    line.monitor = false;
    line.daa.fill(0);
    return 0;
}

// Off hook, on hook, and on hook with the block listening to the line (for
// caller identification). param1 and param2 are not used by the virtual line.
template <Hook To, Cause Why, bool Monitor>
uint32_t hookRequest(Call &call, Line &line) {
    line.monitor = Monitor;
    setHook(call, line, To, Why);
    return 0;
}

// param1: time on hook in ms (0: 600; 50..2000); the line must be off hook.
// One event when the line is back off hook, with the flash as its cause.
uint32_t hookFlash(Call &call, Line &line) {
    const auto ms = setting(call.in.u32(pots::HookFlash::kParam1), kDefaultFlashMs, kShortestFlashMs, kLongestFlashMs);
    if (!ms) return VB_FAILURE(kOutOfRange);
    if (line.hook != kOffHook) return VB_FAILURE(kFailed);
    call.board.advance(*ms * kIntervalsPerMs);
    report(call, line, kCauseFlash);
    return 0;
}

// param1: the digit 0..9 (0 dials ten pulses); param2: break time, param3:
// make time of each pulse in ms (0: 60 and 40; at most 1000). The line must
// be off hook. "Dialling finished" follows, word 5 the digit, word 6 the
// pulses.
uint32_t pulseDial(Call &call, Line &line) {
    using Wire = pots::PulseDial;
    const uint32_t digit = call.in.u32(Wire::kParam1);
    const auto breakMs = setting(call.in.u32(Wire::kParam2), kDefaultBreakMs, 1, kLongestPulseMs);
    const auto makeMs = setting(call.in.u32(Wire::kParam3), kDefaultMakeMs, 1, kLongestPulseMs);
    if (digit > kLargestDigit || !breakMs || !makeMs) return VB_FAILURE(kOutOfRange);
    if (line.hook != kOffHook) return VB_FAILURE(kFailed);
    const uint32_t pulses = digit == 0 ? kPulsesForZero : digit;
    call.board.advance(pulses * (*breakMs + *makeMs) * kIntervalsPerMs);
    call.board.post(*call.object, kEventDialDone, digit, pulses);
    return 0;
}

// Reports the hook state and the line voltage, whether or not they changed.
uint32_t senseLine(Call &call, Line &line) {
    report(call, line, kCauseLineSense);
    return 0;
}

// param1 and param2 (write attempts and time-out) are not needed: the
// virtual DAA takes a write at once.
uint32_t writeDaa(Call &call, Line &line) {
    using Wire = pots::WriteDaa;
    const uint8_t index = call.in.u8(Wire::kDaaRegister), value = call.in.u8(Wire::kDaaValue);
    uint32_t status = kDaaNoRegister;
    if (index < kDaaRegisters) {
        status = line.daa[index] == value ? kDaaUnchanged : kDaaWritten;
        line.daa[index] = value;
    }
    call.out.u32(Wire::kReplyStatus, status);
    return 0;
}

constexpr Row kRows[] = {
    row<pots::Init>(init),
    row<pots::OffHook>(ready<hookRequest<kOffHook, kCauseRequest, false>>),
    row<pots::OnHook>(ready<hookRequest<kOnHook, kCauseRequest, false>>),
    row<pots::HookFlash>(ready<hookFlash>),
    row<pots::PulseDial>(ready<pulseDial>),
    row<pots::OnHookLineMon>(ready<hookRequest<kOnHook, kCauseLineMonitor, true>>),
    row<pots::SenseLine>(ready<senseLine>),
    row<pots::WriteDaa>(ready<writeDaa>),
};

// Attributes: 40 hook state, 41 line monitor on (Boolean), 42 the 64 DAA
// registers.
template <typename T, T Line::*Field>
std::vector<uint8_t> word(Call &, Object &object, uint32_t) {
    return wordValue(static_cast<uint32_t>(object.as<Line>().*Field));
}

std::vector<uint8_t> daaRegisters(Call &, Object &object, uint32_t) {
    const auto &daa = object.as<Line>().daa;
    return {daa.begin(), daa.end()};
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_DSP_POTS_HOOK, RYN_VB_VALUE_UINT32, word<uint32_t, &Line::hook>, nullptr},
    {RYN_VB_ATTR_DSP_POTS_MONITOR, RYN_VB_VALUE_BOOLEAN, word<bool, &Line::monitor>, nullptr},
    {RYN_VB_ATTR_DSP_POTS_DAA, RYN_VB_VALUE_BINARY, daaRegisters, nullptr},
};

}  // namespace

bool makesDspPots(int32_t type) { return type == kTypeDspPots; }

const Family kDspPotsFamily{"DSP POTS line", kRows, kAttributes, makeState<Line>, nullptr, makesDspPots};

}  // namespace vb
