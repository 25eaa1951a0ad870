// What the board's lines carry, all of it played by an exchange: tones,
// ringing and caller identification, as the SLIC line (Slic.cpp) plays them
// to its telephone set and the POTS line's far end (Pots.cpp) plays them to
// the board. Each line keeps a timeline of its own, the samples rendered so
// far; the functions here give the sample at a time counted from the start
// of a tone or of a ringing, and the caller identification burst is a
// transmitter the line plays sample by sample.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "FskTransmitter.h"

namespace vb::exchange {

// Levels in dBm0. G.711's loudest code sits about 3.1 dB above a sine of
// 0 dBm0, which therefore has a peak of about 22 700 in 16-bit samples.
inline constexpr double kMilliwattPeak = 22700;
double peakOf(double dbm0);

// Everything is in whole samples of 8 kHz.
inline constexpr uint64_t kSamplesPerMs = signal::kSampleRate / 1000;
constexpr uint64_t samples(uint64_t ms) { return ms * kSamplesPerMs; }

// A call-progress tone: two frequencies of -13 dBm0 each, on for onMs then
// off for offMs, over and over from the moment it begins (offMs 0: steady).
struct Tone {
    double low, high;  // Hz, whole numbers
    uint64_t onMs, offMs;
};
inline constexpr Tone kDialTone{350, 440, 0, 0};
inline constexpr Tone kBusyTone{480, 620, 500, 500};
inline constexpr Tone kReorderTone{480, 620, 250, 250};
inline constexpr Tone kCongestionTone{480, 620, 200, 300};
inline constexpr Tone kRingBackTone{440, 480, 2000, 4000};
// The sample `at` samples after the tone began.
int16_t toneSample(const Tone &tone, uint64_t at);

// Ringing: 2 s of a 20 Hz sine at -10 dBm0, then 4 s of silence, over and
// over from the moment ringing starts. A caller identification goes out
// once in a pause, beginning 500 ms after the ring before it ended.
inline constexpr uint64_t kRingOn = samples(2000), kRingCycle = samples(6000);
inline constexpr uint64_t kCallerIdStart = kRingOn + samples(500);  // into the cycle
// The sample `at` samples into a ringing cycle (silence in the pause).
int16_t ringSample(uint64_t at);

// The bytes of a caller identification message: its type (0x04 or 0x80),
// the length of its body, the body, and a checksum that brings the sum of
// all its bytes to 0 modulo 256. The single data message (0x04) holds the
// date and time `stamp` (MMDDhhmm) and the number; the multiple data
// message (0x80) holds them and the name, as parameters 0x01 date and time,
// 0x02 number, 0x07 name. A number or name that is not known is sent as
// its reason of absence instead, 'O' (unavailable): parameter 0x04 or 0x08,
// or the number "O" of a single data message.
std::vector<uint8_t> callerIdMessage(uint8_t type, const std::string &stamp, const std::string &number,
                                     const std::string &name);

// The Bell 202 burst that carries a message: a channel seizure of 300
// alternating bits, 180 mark bits, the message's characters, 10 mark bits,
// at -13 dBm0. The longest message the SLIC line sends (42 bytes) lasts
// 0.76 s and ends well inside the pause.
signal::FskTransmitter callerIdBurst(std::span<const uint8_t> message);

}  // namespace vb::exchange
