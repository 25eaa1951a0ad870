// SLIC lines of the virtual board: the board plays the exchange towards a
// telephone set. Since nobody lifts a virtual handset, the set's hook is a
// settable attribute (RYN_VB_ATTR_SLIC_HANDSET); lifting it posts
// kEventHookChanged (value 5: RYN_VB_HOOK_OFF or RYN_VB_HOOK_ON) and answers a
// ringing line. Ringing posts kEventRingStarted and kEventRingStopped (value 5:
// RYN_VB_RING_STOP_REQUESTED by the application, _ANSWERED, _RESET).
//
// The calls with a value reply answer the line's state word of
// RYN_VB_SLIC_STATE_... bits: handset off hook, ringing, audio path on, SLIC
// held in reset.
//
// The line's audio is what it carries to the set, rendered through the
// audio-out attribute (and by the board clock, for a line joined to a
// pipe): the tone, the ringing and, in the ringing's pauses, caller
// identification. The line keeps time by the samples rendered: a tone's
// cadence runs from the moment it was enabled, the ringing's from the
// moment it started.
//
// A caller identification message (SendCallerID) goes out once, as Bell
// 202 FSK in a pause of the ringing, 500 ms after the ring before it: after
// the first ring when it was given before ringing started or during the
// first ring, else in the next pause that is still to come. A line that does
// not ring keeps the message until it rings. Ringing that stops (stopped,
// answered, reset) before the message has gone out drops it, since the call
// it announced is over, and cuts off a burst being sent; a reset drops it
// too. A later SendCallerID replaces a message still waiting.
//
// The set's keypad is simulated too (RYN_VB_ATTR_SLIC_SET_DIGITS): an
// off-hook set dials DTMF digits, which the line carries to the board with
// whatever it plays to the set, so that a DTMF detector on a pipe joined to
// the line hears them.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>

#include "Families.h"
#include "LineAudio.h"
#include "SlicWire.h"

namespace vb {
namespace {

using namespace wire::slic;

enum Tone : uint32_t {
    kNoTone = RYN_VB_SLIC_TONE_NONE,
    kDialTone = RYN_VB_SLIC_TONE_DIAL,
    kBusyTone = RYN_VB_SLIC_TONE_BUSY,
    kReorderTone = RYN_VB_SLIC_TONE_REORDER,
    kCongestionTone = RYN_VB_SLIC_TONE_CONGESTION,
    kRingBackTone = RYN_VB_SLIC_TONE_RING_BACK,
};
// The set's keypad.
constexpr size_t kSetDigitLimit = 64;
constexpr uint64_t kSetDigitMs = 80;
constexpr double kSetLowDbm0 = -8, kSetHighDbm0 = -6;

constexpr uint32_t kStoppedByApplication = RYN_VB_RING_STOP_REQUESTED, kAnswered = RYN_VB_RING_STOP_ANSWERED,
                   kStoppedByReset = RYN_VB_RING_STOP_RESET;

struct Line : ObjectState {
    bool offHook = false, ringing = false, audio = false, inReset = false;
    uint32_t tone = kNoTone;
    uint32_t disconnect = 0;  // the last disconnect signal, 0 none yet
    std::string name, number, callerId;
    uint32_t callerIdFormat = RYN_VB_CID_MULTIPLE_MESSAGE;
    // Audio: the line's time in samples rendered, and when the tone and the
    // ringing began.
    uint64_t now = 0, toneFrom = 0, ringFrom = 0;
    std::vector<uint8_t> callerIdWaiting;               // a message not sent yet
    std::optional<signal::FskTransmitter> callerIdFsk;  // the one being sent
    std::vector<int16_t> keyed;                         // the set's DTMF digits
    size_t keyedAt = 0;                                 // and how much of them has played
};

Line &lineOf(Call &call) { return call.object->as<Line>(); }

// The set's digits not played yet are dropped (hanging up, a reset).
void dropKeyed(Line &line) {
    line.keyed.clear();
    line.keyedAt = 0;
}

uint32_t stateWord(const Line &line) {
    return (line.offHook ? RYN_VB_SLIC_STATE_OFF_HOOK : 0) | (line.ringing ? RYN_VB_SLIC_STATE_RINGING : 0) |
           (line.audio ? RYN_VB_SLIC_STATE_AUDIO : 0) | (line.inReset ? RYN_VB_SLIC_STATE_RESET : 0);
}

void stopRinging(Board &board, Object &object, uint32_t why) {
    Line &line = object.as<Line>();
    if (!line.ringing) return;
    line.ringing = false;
    line.callerIdWaiting.clear();
    line.callerIdFsk.reset();
    board.post(object, kEventRingStopped, why);
}

// A call with a value reply: the handler's result, then the state word.
template <Handler H>
uint32_t withState(Call &call) {
    const uint32_t result = H(call);
    call.out.u32(StatusReply::kReplyStatus, stateWord(lineOf(call)));
    return result;
}

// 1 holds the SLIC in reset: ringing, tone and audio stop. 0 releases it.
uint32_t setResetPin(Call &call) {
    const uint32_t state = call.in.u32(SetResetPin::kState);
    if (state > 1) return VB_FAILURE(kOutOfRange);
    Line &line = lineOf(call);
    line.inReset = state == 1;
    if (line.inReset) {
        stopRinging(call.board, *call.object, kStoppedByReset);
        line.tone = kNoTone;
        line.audio = false;
        line.callerIdWaiting.clear();
        dropKeyed(line);
    }
    return 0;
}

// A tone plays until another tone, ringing, the audio path, a disconnect,
// the handset's hanging up or a reset.
template <uint32_t T>
uint32_t tone(Call &call) {
    Line &line = lineOf(call);
    if (line.inReset) return VB_FAILURE(kFailed);
    line.tone = T;
    line.toneFrom = line.now;
    return 0;
}

uint32_t getHookState(Call &call) {
    call.out.u32(GetHookState::kReplyState, lineOf(call).offHook ? RYN_VB_HOOK_OFF : RYN_VB_HOOK_ON);
    return 0;
}

// A line whose handset is off hook is not rung.
uint32_t startRing(Call &call) {
    Line &line = lineOf(call);
    if (line.inReset || line.offHook) return VB_FAILURE(kFailed);
    if (line.ringing) return 0;
    line.ringing = true;
    line.ringFrom = line.now;
    line.tone = kNoTone;
    call.board.post(*call.object, kEventRingStarted);
    return 0;
}

uint32_t stopRing(Call &call) {
    stopRinging(call.board, *call.object, kStoppedByApplication);
    return 0;
}

uint32_t enableAudio(Call &call) {
    Line &line = lineOf(call);
    if (line.inReset) return VB_FAILURE(kFailed);
    line.audio = true;
    line.tone = kNoTone;
    return 0;
}

// An open loop interrupts the loop current, a reversal reverses the line's
// polarity; the audio path and any tone end.
uint32_t signalDisconnect(Call &call) {
    const uint32_t signal = call.in.u32(SignalDisconnectState::kParam1);
    if (signal < RYN_VB_SLIC_DISCONNECT_OPEN_LOOP || signal > RYN_VB_SLIC_DISCONNECT_REVERSAL)
        return VB_FAILURE(kOutOfRange);
    Line &line = lineOf(call);
    if (line.inReset) return VB_FAILURE(kFailed);
    line.disconnect = signal;
    line.audio = false;
    line.tone = kNoTone;
    return 0;
}

// The text of the field of `limit` characters at `field`, up to its first NUL.
std::string fieldText(Call &call, uint32_t field, uint32_t limit) {
    const auto bytes = call.in.bytes(field, limit);
    std::string text(bytes.begin(), bytes.end());
    return text.substr(0, text.find('\0'));
}

bool digitsOnly(const std::string &text) { return text.find_first_not_of("0123456789") == std::string::npos; }

uint32_t setUserName(Call &call) {
    lineOf(call).name = fieldText(call, SetUserName::kName, SetUserName::kNameLength);
    return 0;
}

uint32_t setPhoneNumber(Call &call) {
    const std::string number = fieldText(call, SetPhoneNumber::kNumber, SetPhoneNumber::kNumberLength);
    if (number.size() != SetPhoneNumber::kNumberLength || !digitsOnly(number)) return VB_FAILURE(kMalformed);
    lineOf(call).number = number;
    return 0;
}

// The message is kept as "MMDDhhmm number name" (attribute 42), and its
// bytes, in the format of attribute 44, wait for a pause in the ringing.
uint32_t sendCallerId(Call &call) {
    const std::string stamp = fieldText(call, SendCallerId::kStamp, SendCallerId::kStampLength);
    if (stamp.size() != SendCallerId::kStampLength || !digitsOnly(stamp)) return VB_FAILURE(kMalformed);
    Line &line = lineOf(call);
    if (line.inReset) return VB_FAILURE(kFailed);
    line.callerId = stamp + " " + line.number + " " + line.name;
    line.callerIdWaiting =
        exchange::callerIdMessage(static_cast<uint8_t>(line.callerIdFormat), stamp, line.number, line.name);
    return 0;
}

constexpr Row kRows[] = {
    row<SetResetPin>(setResetPin),
    row<EnableDialTone>(tone<kDialTone>),
    row<EnableBusyTone>(tone<kBusyTone>),
    row<EnableReorderTone>(tone<kReorderTone>),
    row<EnableCongestionTone>(tone<kCongestionTone>),
    row<EnableRingBackTone>(tone<kRingBackTone>),
    row<GetHookState>(getHookState),
    row<StartRingState>(withState<startRing>),
    row<StopRingState>(withState<stopRing>),
    row<EnableAudio>(withState<enableAudio>),
    row<SignalDisconnectState>(withState<signalDisconnect>),
    row<SetUserName>(withState<setUserName>),
    row<SetPhoneNumber>(withState<setPhoneNumber>),
    row<SendCallerId>(withState<sendCallerId>),
};

// ---- Attributes -----------------------------------------------------------

std::vector<uint8_t> handsetValue(Call &, Object &object, uint32_t) { return wordValue(object.as<Line>().offHook); }

// The phone's user lifts the handset (1) or hangs up (0).
uint32_t setHandset(Call &call, Object &object, std::span<const uint8_t> value) {
    const auto word = wordOf(value);
    if (!word || *word > 1) return VB_FAILURE(kOutOfRange);
    Line &line = object.as<Line>();
    if (line.offHook == (*word == 1)) return 0;
    line.offHook = *word == 1;
    call.board.post(object, kEventHookChanged, line.offHook ? RYN_VB_HOOK_OFF : RYN_VB_HOOK_ON);
    if (line.offHook) {
        stopRinging(call.board, object, kAnswered);
    } else {
        line.audio = false;
        line.tone = kNoTone;
        dropKeyed(line);
    }
    return 0;
}

// The set dials DTMF digits (text: 0-9 * # A-D, at most kSetDigitLimit): each
// for kSetDigitMs, with as long a pause after it, the low tone at -8 dBm0 and
// the high at -6 dBm0, as a telephone's keypad sends them. They follow
// digits still playing. The handset must be off hook.
uint32_t setDigits(Call &, Object &object, std::span<const uint8_t> value) {
    const std::string keys(value.begin(), value.end());
    const std::string digits = keys.substr(0, keys.find('\0'));
    std::vector<signal::Pair> pairs;
    for (char key : digits) {
        const auto pair = signal::dtmfPair(static_cast<uint8_t>(key));
        if (!pair) return VB_FAILURE(kMalformed);
        pairs.push_back(*pair);
    }
    if (pairs.empty() || pairs.size() > kSetDigitLimit) return VB_FAILURE(kOutOfRange);
    Line &line = object.as<Line>();
    if (!line.offHook || line.inReset) return VB_FAILURE(kFailed);
    const uint64_t digitSamples = exchange::samples(kSetDigitMs);
    const auto dialled = signal::dial(
        pairs, {digitSamples, digitSamples, 0, exchange::peakOf(kSetLowDbm0), exchange::peakOf(kSetHighDbm0)});
    line.keyed.erase(line.keyed.begin(), line.keyed.begin() + static_cast<std::ptrdiff_t>(line.keyedAt));
    line.keyedAt = 0;  // what played is gone; the new digits follow the rest
    line.keyed.insert(line.keyed.end(), dialled.begin(), dialled.end());
    return 0;
}

std::vector<uint8_t> toneValue(Call &, Object &object, uint32_t) { return wordValue(object.as<Line>().tone); }
std::vector<uint8_t> callerIdValue(Call &, Object &object, uint32_t) { return textValue(object.as<Line>().callerId); }
std::vector<uint8_t> stateValue(Call &, Object &object, uint32_t) { return wordValue(stateWord(object.as<Line>())); }

// The message type of the caller identifications sent from now on.
uint32_t setCallerIdFormat(Call &, Object &object, std::span<const uint8_t> value) {
    const auto word = wordOf(value);
    if (!word || (*word != RYN_VB_CID_SINGLE_MESSAGE && *word != RYN_VB_CID_MULTIPLE_MESSAGE))
        return VB_FAILURE(kOutOfRange);
    object.as<Line>().callerIdFormat = *word;
    return 0;
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_SLIC_HANDSET, RYN_VB_VALUE_BOOLEAN, handsetValue, setHandset},
    {RYN_VB_ATTR_SLIC_TONE, RYN_VB_VALUE_UINT32, toneValue, nullptr},
    {RYN_VB_ATTR_SLIC_CALLER_ID, RYN_VB_VALUE_TEXT, callerIdValue, nullptr},  // the last one sent
    {RYN_VB_ATTR_SLIC_STATE, RYN_VB_VALUE_UINT32, stateValue, nullptr},
    {RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT, RYN_VB_VALUE_UINT32, fieldValue<Line, &Line::callerIdFormat>,
     setCallerIdFormat},
    {RYN_VB_ATTR_SLIC_SET_DIGITS, RYN_VB_VALUE_TEXT, setOnly, setDigits},
};

// ---- Audio ------------------------------------------------------------------

// The tones by their number, none first.
constexpr const exchange::Tone *kTones[] = {nullptr,
                                            &exchange::kDialTone,
                                            &exchange::kBusyTone,
                                            &exchange::kReorderTone,
                                            &exchange::kCongestionTone,
                                            &exchange::kRingBackTone};
static_assert(kNoTone == 0 && kRingBackTone == std::size(kTones) - 1);

const exchange::Tone *toneOf(uint32_t tone) { return tone < std::size(kTones) ? kTones[tone] : nullptr; }

// Ringing, and a waiting caller identification once its time in a pause
// has come.
int16_t ringingSample(Line &line) {
    const uint64_t at = (line.now - line.ringFrom) % exchange::kRingCycle;
    if (at == exchange::kCallerIdStart && !line.callerIdFsk && !line.callerIdWaiting.empty()) {
        line.callerIdFsk = exchange::callerIdBurst(line.callerIdWaiting);
        line.callerIdWaiting.clear();
    }
    if (!line.callerIdFsk) return exchange::ringSample(at);
    const int16_t sample = line.callerIdFsk->next();
    if (line.callerIdFsk->done()) line.callerIdFsk.reset();
    return sample;
}

// Ringing takes the line over any tone; a SLIC held in reset is silent.
int16_t playedSample(Line &line) {
    if (line.ringing) return ringingSample(line);
    const exchange::Tone *tone = toneOf(line.tone);
    return tone != nullptr ? exchange::toneSample(*tone, line.now - line.toneFrom) : 0;
}

// What the line carries: what it plays to the set, and the set's digits.
int16_t sampleOf(Line &line) {
    if (line.inReset) return 0;
    int32_t sample = playedSample(line);
    if (line.keyedAt < line.keyed.size()) sample += line.keyed[line.keyedAt++];
    return static_cast<int16_t>(std::clamp<int32_t>(sample, -32768, 32767));
}

bool givesSamples(const Object &) { return true; }

// The line's next samples; it plays while it rings or has a tone on (the
// pauses of a cadence included), and is silent otherwise.
bool render(Board &, Object &object, std::span<int16_t> out) {
    Line &line = object.as<Line>();
    const bool playing =
        !line.inReset && (line.ringing || toneOf(line.tone) != nullptr || line.keyedAt < line.keyed.size());
    for (int16_t &sample : out) {
        sample = sampleOf(line);
        ++line.now;
    }
    return playing;
}

constexpr Audio kAudio{nullptr, nullptr, givesSamples, render};  // the line takes no samples

}  // namespace

const Family kSlicFamily{"SLIC line", kRows, kAttributes, makeState<Line>, nullptr, nullptr, &kAudio};

}  // namespace vb
