// Fixed-point arithmetic of the tone blocks: the sine oscillator of the
// generator and the frequency coefficient of the detectors, both at the
// blocks' sampling rate of 8000 Hz.
//
// The DSP blocks expect values computed exactly this way: pi as the
// ten-decimal 3.1415926535, double precision in the order written below,
// results truncated toward zero and kept as their low 16 bits. Large
// frequencies make any reordering show in the low bits, so none of these
// expressions may be rearranged.
#pragma once

#include <cstdint>

namespace ryn::tone {

inline constexpr double kPi = 3.1415926535;
inline constexpr double kSampleRate = 8000.0;
inline constexpr double kFullScale = 32768.0;     // 1.0 in Q15
inline constexpr double kPeakAmplitude = 4096.0;  // the amplitude of a 0 dB tone

// One recursive oscillator y(n) = 2 cos(w) y(n-1) - y(n-2): cos(w) in Q15
// and two consecutive samples of a sine of the tone's amplitude.
struct SineOscillator {
    uint16_t coefficient;
    uint16_t firstSample;   // always 0
    uint16_t secondSample;  // -amplitude * sin(w)
};

// Whether a tone level (dB relative to the peak amplitude) is accepted:
// 0.0 or below. Not a number is refused.
bool isAcceptedLevel(double level);
// Whether a tone frequency (Hz) is accepted: 0.0 or above, and small enough
// that the oscillator's angle is a finite number.
bool isAcceptedFrequency(double frequency);

// The oscillator of a tone whose frequency and level are accepted (the
// checks above keep every value these functions convert within 16 bits).
SineOscillator sineOscillator(double frequency, double level);

// The detectors' coefficient of a frequency in Hz: cos(2 pi f / 8000) in Q15.
uint16_t detectorCoefficient(uint32_t frequency);

}  // namespace ryn::tone
