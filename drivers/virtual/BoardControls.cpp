// Board controls of the virtual board: the clocks, the codecs' companding
// law and the constant bytes of the time-slot switch (TSS). Every call stores
// its values; attributes read them back.
#include <map>
#include <optional>

#include "BoardWire.h"
#include "Families.h"
#include "Spans.h"

namespace vb {
namespace {

using namespace wire::board;

// Clock source: 0 the board's oscillator, 1 span 0's receive clock, 2 span
// 1's, 3 the external reference; clock mode: 0 the board drives the bus
// clock, 1 it follows it.
constexpr uint32_t kSourceLast = RYN_VB_CLOCK_SOURCE_EXTERNAL, kClockModeLast = RYN_VB_CLOCK_MODE_FOLLOW;
constexpr uint32_t kMuLaw = RYN_VB_LAW_MU, kALaw = RYN_VB_LAW_A;
// The TSS has 8 streams of 32 time slots.
constexpr uint32_t kStreams = 8, kTimeSlots = 32;

struct Controls : ObjectState {
    uint32_t clockSource = RYN_VB_CLOCK_SOURCE_OSCILLATOR, clockMode = RYN_VB_CLOCK_MODE_DRIVE, law = kMuLaw;
    std::map<uint32_t, uint8_t> constants;  // stream * 32 + slot: the byte sent
};

Controls &controlsOf(Call &call) { return call.object->as<Controls>(); }

uint32_t setClocks(Call &call) {
    const uint32_t source = call.in.u32(SetClocks::kParam1), mode = call.in.u32(SetClocks::kParam2);
    if (source > kSourceLast || mode > kClockModeLast) return VB_FAILURE(kOutOfRange);
    controlsOf(call).clockSource = source;
    controlsOf(call).clockMode = mode;
    return 0;
}

// Stream, time slot, then the byte that slot sends from now on.
uint32_t tssConstByte(Call &call) {
    const uint32_t stream = call.in.u32(TssConstByte::kParam1), slot = call.in.u32(TssConstByte::kParam2);
    if (stream >= kStreams || slot >= kTimeSlots) return VB_FAILURE(kOutOfRange);
    controlsOf(call).constants[stream * kTimeSlots + slot] = call.in.u8(TssConstByte::kValue);
    return 0;
}

uint32_t codecSetLaw(Call &call) {
    if (call.in.u32(CodecSetLaw::kLaw) > kALaw) return VB_FAILURE(kOutOfRange);
    controlsOf(call).law = call.in.u32(CodecSetLaw::kLaw);
    return 0;
}

constexpr Row kRows[] = {
    row<SetClocks>(setClocks),
    row<TssConstByte>(tssConstByte),
    row<CodecSetLaw>(codecSetLaw),
};

// Four bytes per constant slot, in stream and slot order: stream, slot, the
// byte, 0.
std::vector<uint8_t> constants(Call &, Object &object, uint32_t) {
    std::vector<uint8_t> value;
    for (const auto &[key, byte] : object.as<Controls>().constants)
        value.insert(value.end(), {uint8_t(key / kTimeSlots), uint8_t(key % kTimeSlots), byte, 0});
    return value;
}

// ---- The sample clock ----------------------------------------------------------

std::vector<uint8_t> clockRate(Call &call, Object &, uint32_t) { return wordValue(call.board.clockRate()); }

// 0 stops the clock, 1 runs it in real time, N at N times real time.
uint32_t setClockRate(Call &call, Object &, std::span<const uint8_t> value) {
    const auto rate = wordOf(value);
    if (!rate || *rate > RYN_VB_SAMPLE_CLOCK_RATE_MAX) return VB_FAILURE(kOutOfRange);
    call.board.setClockRate(*rate);
    return 0;
}

// Runs N frames of the clock before the call returns, whatever its rate.
uint32_t stepClock(Call &call, Object &, std::span<const uint8_t> value) {
    const auto frames = wordOf(value);
    if (!frames || *frames > RYN_VB_SAMPLE_CLOCK_STEP_MAX) return VB_FAILURE(kOutOfRange);
    for (uint32_t i = 0; i < *frames; ++i) call.board.tick();
    return 0;
}

std::vector<uint8_t> clockFrames(Call &call, Object &, uint32_t) {
    return wordValue(static_cast<uint32_t>(call.board.frames()));
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_CLOCK_SOURCE, RYN_VB_VALUE_UINT32, fieldValue<Controls, &Controls::clockSource>, nullptr},
    {RYN_VB_ATTR_CLOCK_MODE, RYN_VB_VALUE_UINT32, fieldValue<Controls, &Controls::clockMode>, nullptr},
    {RYN_VB_ATTR_CODEC_LAW, RYN_VB_VALUE_UINT32, fieldValue<Controls, &Controls::law>, nullptr},
    {RYN_VB_ATTR_CONSTANT_SLOTS, RYN_VB_VALUE_BINARY, constants, nullptr},
    {RYN_VB_ATTR_SAMPLE_CLOCK_RATE, RYN_VB_VALUE_UINT32, clockRate, setClockRate},
    {RYN_VB_ATTR_SAMPLE_CLOCK_STEP, RYN_VB_VALUE_UINT32, setOnly, stepClock},
    {RYN_VB_ATTR_SAMPLE_CLOCK_FRAMES, RYN_VB_VALUE_UINT32, clockFrames, nullptr},
};

}  // namespace

const Family kBoardFamily{"Board controls", kRows, kAttributes, makeState<Controls>};

std::optional<uint8_t> constantByte(Board &board, uint32_t span, uint32_t slot) {
    Object *controls = board.findDevice(kTypeBoard, 0);
    if (controls == nullptr || span >= kStreams || slot >= kTimeSlots) return std::nullopt;
    const auto &constants = controls->as<Controls>().constants;
    const auto found = constants.find(span * kTimeSlots + slot);
    return found != constants.end() ? std::optional<uint8_t>(found->second) : std::nullopt;
}

uint32_t codecLaw(Board &board) {
    Object *controls = board.findDevice(kTypeBoard, 0);
    return controls != nullptr ? controls->as<Controls>().law : kMuLaw;
}

}  // namespace vb
