// The power of one frequency in 8 kHz samples, by the Goertzel recurrence:
// what the tests use to tell which tones a recording holds.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ryn::test {

// The power at `hertz` of samples [first, first + count).
inline double power(const std::vector<int16_t> &samples, size_t first, size_t count, double hertz) {
    const double c = 2 * std::cos(2 * M_PI * hertz / 8000);
    double s1 = 0, s2 = 0;
    for (size_t n = first; n < first + count; ++n) {
        const double s = samples[n] + c * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    return s1 * s1 + s2 * s2 - c * s1 * s2;
}

}  // namespace ryn::test
