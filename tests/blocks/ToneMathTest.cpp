#include <gtest/gtest.h>

#include <cmath>

#include "blocks/ToneMath.h"

namespace {

using namespace ryn::tone;

// The low 16 bits of a value truncated toward zero, computed another way.
uint16_t low16(double value) { return static_cast<uint16_t>(static_cast<int64_t>(std::trunc(value)) & 0xFFFF); }

// Worked values (the generator's others are in the request layouts), then
// the generator's formulas as written, in their order, from 0.37 Hz to 1e18
// Hz and from 0 dB down: from about 1e13 Hz on, computing the angle in
// another order changes many coefficients.
TEST(ToneMath, WorkedValuesAndSweep) {
    // Another order of the angle's operations changes the last two (found by search).
    const std::pair<uint32_t, uint16_t> detector[] = {{350, 31537},   {440, 30830},     {0, 0x8000},
                                                      {4000, 0x8000}, {91497740, 6645}, {2538292908, 40753}};
    for (const auto &[f, q15] : detector) EXPECT_EQ(detectorCoefficient(f), q15) << f;
    // Amplitudes within an ulp of a whole number: level / 20 and pow decide.
    EXPECT_EQ(sineOscillator(2000, -60.205999132796236).secondSample, 0x10000 - 4);
    EXPECT_EQ(sineOscillator(2000, -46.672126940298902).secondSample, 0x10000 - 19);
    for (double f = 0.37, level = 0.0; f < 1e18; f *= 1.031, level = level < -60 ? 0.0 : level - 2.75) {
        const double w = 2.0 * 3.1415926535 * f / 8000.0;
        const SineOscillator oscillator = sineOscillator(f, level);
        ASSERT_EQ(oscillator.coefficient, low16((2.0 * std::cos(w)) / 2.0 * 32768.0)) << f;
        ASSERT_EQ(oscillator.secondSample, low16(std::sin(w) * -1.0 * (std::pow(10.0, level / 20.0) * 4096.0))) << f;
    }
}

}  // namespace
