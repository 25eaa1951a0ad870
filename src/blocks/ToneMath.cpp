#include "blocks/ToneMath.h"

#include <cfloat>
#include <cmath>

// The coefficients are those of double arithmetic with every operation
// rounded to a double, and an angle that overflows a double is refused. x87
// arithmetic (32-bit x86 without -mfpmath=sse) keeps wider intermediates and
// would give other coefficients and pass such angles as finite.
static_assert(FLT_EVAL_METHOD == 0,
              "double arithmetic must round each operation: on 32-bit x86 build with -msse2 "
              "-mfpmath=sse");

namespace ryn::tone {
namespace {

// The oscillator's angle per sample, w = 2 pi f / 8000.
double angle(double frequency) { return 2.0 * kPi * frequency / kSampleRate; }

// The low 16 bits of a value truncated toward zero; |value| <= 32768 here.
uint16_t truncateToLow16(double value) { return static_cast<uint16_t>(static_cast<int32_t>(value)); }

}  // namespace

bool isAcceptedLevel(double level) { return level <= 0.0; }

bool isAcceptedFrequency(double frequency) { return frequency >= 0.0 && std::isfinite(angle(frequency)); }

SineOscillator sineOscillator(double frequency, double level) {
    const double amplitude = std::pow(10.0, level / 20.0) * kPeakAmplitude;
    const double w = angle(frequency);
    return {truncateToLow16((2.0 * std::cos(w)) / 2.0 * kFullScale), 0,
            truncateToLow16(std::sin(w) * (-1.0) * amplitude)};
}

uint16_t detectorCoefficient(uint32_t frequency) {
    const double x = (2.0 * kPi) * static_cast<double>(frequency) / kSampleRate;
    return truncateToLow16(std::cos(x) * kFullScale);
}

}  // namespace ryn::tone
