// The receivers' filter bank: correlations of a window with the filters'
// tables, four or eight floats at a time.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "Signal.h"
#include "SignalDetail.h"

namespace vb::signal {

namespace detail {

// The sum of the squared samples, four at a time.
double sumOfSquares(const float *x, size_t count) {
    Float4 a{}, b{};
    size_t n = 0;
    for (; n + 8 <= count; n += 8) {
        const Float4 x0 = load4(x + n), x1 = load4(x + n + 4);
        a += x0 * x0;
        b += x1 * x1;
    }
    double sum = sum4(a + b);
    for (; n < count; ++n) sum += double{x[n]} * x[n];
    return sum;
}

void toFloats(std::span<const int16_t> samples, float *out) {
    using Short4 = int16_t __attribute__((vector_size(8)));
    size_t n = 0;
    for (; n + 4 <= samples.size(); n += 4) {
        Short4 four;
        std::memcpy(&four, &samples[n], sizeof four);
        const Float4 converted = __builtin_convertvector(four, Float4);
        std::memcpy(out + n, &converted, sizeof converted);
    }
    for (; n < samples.size(); ++n) out[n] = samples[n];
}

}  // namespace detail

namespace {

using namespace detail;

// Correlates `x` with up to kGroup filters' tables at once (each a cosine
// table, then its sine table `padded` floats on), eight samples at a time:
// the filters' sums are independent, so the processor overlaps them.
constexpr size_t kGroup = 4;

// Inlined into each caller, so that they take the caller's instruction set.
#define VB_INLINE inline __attribute__((always_inline))

template <typename Vector>
VB_INLINE double sumOf(const Vector &v) {
    double sum = 0;
    for (size_t i = 0; i < sizeof(Vector) / sizeof(float); ++i) sum += v[i];
    return sum;
}

// Four filters at once, their sums in registers; fewer filters repeat the
// last table.
// Adds the products of the samples with a table's floats at `table`.
template <typename Vector>
VB_INLINE void multiplyAdd(Vector &sum, const Vector &samples, const float *table) {
    Vector v;
    std::memcpy(&v, table, sizeof v);
    sum += samples * v;
}

template <typename Vector>
VB_INLINE void correlateWith(const float *x, const float *const *tables, size_t count, size_t padded, double *re,
                             double *im) {
    constexpr size_t kWidth = sizeof(Vector) / sizeof(float);
    const float *t0 = tables[0], *t1 = tables[std::min<size_t>(1, count - 1)];
    const float *t2 = tables[std::min<size_t>(2, count - 1)], *t3 = tables[std::min<size_t>(3, count - 1)];
    Vector c0{}, c1{}, c2{}, c3{}, s0{}, s1{}, s2{}, s3{};
    for (size_t n = 0; n < padded; n += kWidth) {
        Vector v;
        std::memcpy(&v, x + n, sizeof v);
        multiplyAdd(c0, v, t0 + n);
        multiplyAdd(s0, v, t0 + padded + n);
        multiplyAdd(c1, v, t1 + n);
        multiplyAdd(s1, v, t1 + padded + n);
        multiplyAdd(c2, v, t2 + n);
        multiplyAdd(s2, v, t2 + padded + n);
        multiplyAdd(c3, v, t3 + n);
        multiplyAdd(s3, v, t3 + padded + n);
    }
    const double sums[2][4] = {{sumOf(c0), sumOf(c1), sumOf(c2), sumOf(c3)},
                               {sumOf(s0), sumOf(s1), sumOf(s2), sumOf(s3)}};
    for (size_t f = 0; f < count; ++f) {
        re[f] = sums[0][f];
        im[f] = sums[1][f];
    }
}

void correlate(const float *x, const float *const *tables, size_t count, size_t padded, double *re, double *im) {
    correlateWith<Float4>(x, tables, count, padded, re, im);
}

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
// The same with AVX2 and FMA, for the processors that have them.
__attribute__((target("avx2,fma"))) void correlateAvx2(const float *x, const float *const *tables, size_t count,
                                                       size_t padded, double *re, double *im) {
    using Float8 = float __attribute__((vector_size(32)));
    correlateWith<Float8>(x, tables, count, padded, re, im);
}
#endif

}  // namespace

FilterBank::FilterBank(std::span<const Filter> filters, std::span<const double> weights)
    : padded_(paddedLength(weights.size())), correlate_(correlate) {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) correlate_ = correlateAvx2;
#endif
    tables_.assign(filters.size() * 6 * padded_, 0.0f);
    double weightSum = 0;
    for (double w : weights) weightSum += w;
    scale_ = 2.0 / weightSum;
    for (size_t f = 0; f < filters.size(); ++f) {
        const double cosines[3] = {filters[f].cosine, filters[f].below, filters[f].above};
        for (size_t k = 0; k < 3; ++k) {
            const double omega = std::acos(cosines[k]);
            float *cosine = table(k == 0 ? f : filters.size() + 2 * f + k - 1), *sine = cosine + padded_;
            for (size_t n = 0; n < weights.size(); ++n) {
                cosine[n] = static_cast<float>(weights[n] * std::cos(omega * static_cast<double>(n)));
                sine[n] = static_cast<float>(weights[n] * std::sin(omega * static_cast<double>(n)));
            }
        }
    }
}

void FilterBank::amplitudes(const float *x, size_t first, size_t count, double *out) const {
    for (size_t done = 0; done < count; done += kGroup) {
        const size_t group = std::min(kGroup, count - done);
        const float *tables[kGroup];
        for (size_t f = 0; f < group; ++f) tables[f] = table(first + done + f);
        double re[kGroup], im[kGroup];
        correlate_(x, tables, group, padded_, re, im);
        for (size_t f = 0; f < group; ++f) out[done + f] = scale_ * std::sqrt(re[f] * re[f] + im[f] * im[f]);
    }
}

void FilterBank::run(const float *x, std::span<double> centres) const {
    amplitudes(x, 0, centres.size(), centres.data());
}

void FilterBank::guards(const float *x, const size_t (&filters)[2], double (&guards)[2][2]) const {
    const size_t guardTables = tables_.size() / (6 * padded_);  // after the centre filters' tables
    const float *tables[4];
    for (size_t k = 0; k < 4; ++k) tables[k] = table(guardTables + 2 * filters[k / 2] + k % 2);
    double re[4], im[4];
    correlate_(x, tables, 4, padded_, re, im);
    for (size_t k = 0; k < 4; ++k) guards[k / 2][k % 2] = scale_ * std::sqrt(re[k] * re[k] + im[k] * im[k]);
}

}  // namespace vb::signal
