// What the board's signal processing files share: numbers, the digit
// tables, and the vector helpers of the receivers' filter bank.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "Signal.h"

namespace vb::signal::detail {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

inline double angleOf(double hertz) { return kTwoPi * hertz / kSampleRate; }

// The Goertzel recursion over samples at a cosine: the squared magnitude of
// their Fourier transform at that frequency.
template <typename Samples>
double goertzel(const Samples &samples, double cosine) {
    const double twice = 2.0 * cosine;
    double s1 = 0, s2 = 0;
    for (double x : samples) {
        const double s0 = x + twice * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    return s1 * s1 + s2 * s2 - twice * s1 * s2;
}

// ---- Digits

inline constexpr double kDtmfFrequencies[2 * kDtmfGroup] = {697, 770, 852, 941, 1209, 1336, 1477, 1633};
inline constexpr char kDtmfCharacters[] = "123A456B789C*0#D";

inline constexpr double kMfFrequencies[] = {700, 900, 1100, 1300, 1500, 1700};
struct MfDigit {
    char character;
    int low, high;  // into kMfFrequencies
};
inline constexpr MfDigit kMfDigits[] = {
    {'1', 0, 1}, {'2', 0, 2}, {'3', 1, 2}, {'4', 0, 3}, {'5', 1, 3}, {'6', 2, 3}, {'7', 0, 4}, {'8', 1, 4},
    {'9', 2, 4}, {'0', 3, 4}, {'*', 2, 5}, {'#', 4, 5}, {'A', 1, 5}, {'B', 3, 5}, {'C', 0, 5},
};

// ---- Vectors

using Float4 = float __attribute__((vector_size(16)));

inline Float4 load4(const float *at) {
    Float4 v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

inline float sum4(Float4 v) { return v[0] + v[1] + v[2] + v[3]; }

// The sum of the squared samples, four at a time.
double sumOfSquares(const float *x, size_t count);

// A window's length padded to eights, for the filter bank's loads; the
// receiver keeps that many zeros after its samples.
inline size_t paddedLength(size_t length) { return (length + 7) / 8 * 8; }
inline constexpr size_t kPadding = 8;

// Samples as floats, four at a time.
void toFloats(std::span<const int16_t> samples, float *out);

}  // namespace vb::signal::detail
