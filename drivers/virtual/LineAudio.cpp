// The lines' tones, ringing and caller identification.
#include "LineAudio.h"

#include "SignalDetail.h"

namespace vb::exchange {
namespace {

using signal::kSampleRate;

constexpr double kToneDbm0 = -13, kRingDbm0 = -10, kFskDbm0 = -13;
constexpr double kRingHertz = 20;
constexpr size_t kSeizureBits = 300, kMarkBits = 180, kTrailingMarks = 10;

// A sine of whole hertz repeats every second: its phase is taken from the
// time within the second, exactly, however long the tone has been on.
double sine(double hertz, uint64_t at) { return std::sin(signal::detail::angleOf(hertz) * double(at % kSampleRate)); }

enum Parameter : uint8_t { kDate = 0x01, kNumber = 0x02, kNoNumber = 0x04, kName = 0x07, kNoName = 0x08 };
constexpr char kUnavailable = 'O';

void append(std::vector<uint8_t> &bytes, const std::string &text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void parameter(std::vector<uint8_t> &message, uint8_t type, const std::string &value) {
    message.push_back(type);
    message.push_back(static_cast<uint8_t>(value.size()));
    append(message, value);
}

}  // namespace

double peakOf(double dbm0) { return kMilliwattPeak * std::pow(10.0, dbm0 / 20.0); }

int16_t toneSample(const Tone &tone, uint64_t at) {
    const uint64_t on = samples(tone.onMs), cycle = on + samples(tone.offMs);
    if (tone.offMs != 0 && at % cycle >= on) return 0;
    static const double peak = peakOf(kToneDbm0);
    return static_cast<int16_t>(std::lround(peak * (sine(tone.low, at) + sine(tone.high, at))));
}

int16_t ringSample(uint64_t at) {
    if (at % kRingCycle >= kRingOn) return 0;
    static const double peak = peakOf(kRingDbm0);
    return static_cast<int16_t>(std::lround(peak * sine(kRingHertz, at)));
}

std::vector<uint8_t> callerIdMessage(uint8_t type, const std::string &stamp, const std::string &number,
                                     const std::string &name) {
    const std::string unavailable(1, kUnavailable);
    std::vector<uint8_t> message{type, 0};  // the length follows the body
    if (type == RYN_VB_CID_SINGLE_MESSAGE) {
        append(message, stamp);
        append(message, number.empty() ? unavailable : number);
    } else {
        parameter(message, kDate, stamp);
        parameter(message, number.empty() ? kNoNumber : kNumber, number.empty() ? unavailable : number);
        parameter(message, name.empty() ? kNoName : kName, name.empty() ? unavailable : name);
    }
    message[1] = static_cast<uint8_t>(message.size() - 2);
    uint8_t sum = 0;
    for (uint8_t b : message) sum = static_cast<uint8_t>(sum + b);
    message.push_back(static_cast<uint8_t>(-sum));
    return message;
}

signal::FskTransmitter callerIdBurst(std::span<const uint8_t> message) {
    signal::FskTransmitter fsk(signal::FskMode::Bell202, peakOf(kFskDbm0));
    fsk.seizure(kSeizureBits);
    fsk.marks(kMarkBits);
    fsk.characters(message);
    fsk.marks(kTrailingMarks);
    return fsk;
}

}  // namespace vb::exchange
