// The tone blocks' signal processing: integer oscillators as a DSP runs
// them, dial strings, and Goertzel receivers on Hamming-weighted windows.
#include "Signal.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <numbers>

namespace vb::signal {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kQ15 = 32768.0;
constexpr uint64_t kSamplesPerMs = kSampleRate / 1000;

// A valid window holds its tones: their power at least this share of the
// window's power, and the power of its two halves at least this close
// (a window the tone only partly fills is no part of it).
constexpr double kPurity = 0.7;
constexpr double kSteadiness = 0.6;
// The guard filters, this share of the frequency below and above it.
constexpr double kGuardOffset = 0.05;
constexpr double kCombSpacing = 0.005;
// Windows of the tone receivers: 12.75 ms up to 128 ms.
constexpr uint32_t kShortestWindow = kDigitWindow;
constexpr uint32_t kLongestWindow = 1024;

int16_t saturate(int64_t value) { return static_cast<int16_t>(std::clamp<int64_t>(value, INT16_MIN, INT16_MAX)); }

double angleOf(double hertz) { return kTwoPi * hertz / kSampleRate; }

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

}  // namespace

// ---- Numbers ----------------------------------------------------------------

uint16_t coefficientOf(double hertz) {
    return static_cast<uint16_t>(static_cast<int32_t>(std::cos(angleOf(hertz)) * kQ15));
}

double cosineOf(uint16_t coefficient) { return coefficient == 0x8000 ? 1.0 : static_cast<int16_t>(coefficient) / kQ15; }

double frequencyOf(uint16_t coefficient) { return std::acos(cosineOf(coefficient)) * kSampleRate / kTwoPi; }

double peakOf(double attenuationDb) { return kReferencePeak * std::pow(10.0, -attenuationDb / 20.0); }

double fullScalePeakOf(double attenuationDb) { return peakOf(attenuationDb) * kFullScale / kReferencePeak; }

uint64_t samplesOf(uint64_t milliseconds) { return milliseconds * kSamplesPerMs; }

// ---- Measures ---------------------------------------------------------------

double energy(std::span<const int16_t> samples) {
    double sum = 0;
    for (int16_t x : samples) sum += static_cast<double>(x) * x;
    return sum;
}

double powerAt(std::span<const int16_t> samples, double hertz) { return goertzel(samples, std::cos(angleOf(hertz))); }

// ---- Sources ----------------------------------------------------------------

Oscillator::Oscillator(uint16_t coefficient, uint16_t first, uint16_t second)
    : coefficient_(coefficient == 0x8000 ? 32768 : static_cast<int16_t>(coefficient)),
      first_(static_cast<int16_t>(first)),
      second_(static_cast<int16_t>(second)),
      older_(first_),
      newer_(second_) {}

Oscillator Oscillator::tone(double hertz, double peak) {
    const int32_t second = static_cast<int32_t>(std::sin(angleOf(hertz)) * peak);
    return Oscillator(coefficientOf(hertz), 0, static_cast<uint16_t>(second));
}

int16_t Oscillator::next() {
    const int16_t out = older_;
    const int64_t product = (2 * int64_t{coefficient_} * newer_ + (1 << 14)) >> 15;
    older_ = newer_;
    newer_ = saturate(product - out);
    return out;
}

void Oscillator::restart() {
    older_ = first_;
    newer_ = second_;
}

ToneBurst::ToneBurst(std::vector<Oscillator> oscillators, uint64_t onSamples, uint64_t offSamples, bool repeat)
    : oscillators_(std::move(oscillators)), on_(onSamples), off_(offSamples), repeat_(repeat) {}

int16_t ToneBurst::next() {
    const auto mix = [this] {
        int64_t sum = 0;
        for (Oscillator &oscillator : oscillators_) sum += oscillator.next();
        return saturate(sum);
    };
    if (on_ == 0) return mix();
    if (!repeat_) return position_ < on_ ? (++position_, mix()) : int16_t{0};
    if (position_ == on_ + off_) {
        position_ = 0;
        for (Oscillator &oscillator : oscillators_) oscillator.restart();
    }
    return position_++ < on_ ? mix() : int16_t{0};
}

EffectSource::EffectSource(Effect effect, int16_t peak, uint32_t hertz)
    : effect_(effect),
      peak_(std::max<int32_t>(peak, 0)),
      step_(static_cast<uint32_t>((uint64_t{hertz} << 32) / kSampleRate)) {}

int16_t EffectSource::next() {
    phase_ += step_;
    switch (effect_) {
        case Effect::Noise:  // xorshift: white, uniform in -peak..peak
            noise_ ^= noise_ << 13;
            noise_ ^= noise_ >> 17;
            noise_ ^= noise_ << 5;
            return static_cast<int16_t>(static_cast<int32_t>(noise_ % (2 * uint32_t(peak_) + 1)) - peak_);
        case Effect::Square:
            return static_cast<int16_t>(phase_ < 0x80000000u ? peak_ : -peak_);
        case Effect::Ramp:
            return static_cast<int16_t>(-peak_ + static_cast<int64_t>(phase_ >> 16) * 2 * peak_ / 0xFFFF);
        case Effect::Silence:
            break;
    }
    return 0;
}

// ---- Digits -----------------------------------------------------------------

namespace {

constexpr double kDtmfFrequencies[2 * kDtmfGroup] = {697, 770, 852, 941, 1209, 1336, 1477, 1633};
constexpr char kDtmfCharacters[] = "123A456B789C*0#D";

constexpr double kMfFrequencies[] = {700, 900, 1100, 1300, 1500, 1700};
struct MfDigit {
    char character;
    int low, high;  // into kMfFrequencies
};
constexpr MfDigit kMfDigits[] = {
    {'1', 0, 1}, {'2', 0, 2}, {'3', 1, 2}, {'4', 0, 3}, {'5', 1, 3}, {'6', 2, 3}, {'7', 0, 4}, {'8', 1, 4},
    {'9', 2, 4}, {'0', 3, 4}, {'*', 2, 5}, {'#', 4, 5}, {'A', 1, 5}, {'B', 3, 5}, {'C', 0, 5},
};

}  // namespace

std::optional<Pair> dtmfPair(uint8_t character) {
    const int upper = std::toupper(character);
    for (int i = 0; i < 16; ++i)
        if (upper != 0 && kDtmfCharacters[i] == upper)
            return Pair{kDtmfFrequencies[i / kDtmfGroup], kDtmfFrequencies[kDtmfGroup + i % kDtmfGroup]};
    return std::nullopt;
}

std::span<const double, 2 * kDtmfGroup> dtmfFrequencies() { return kDtmfFrequencies; }

std::optional<Pair> mfPair(uint8_t character) {
    const int upper = character == 'K' ? '*' : character == 'S' ? '#' : character;
    for (const MfDigit &digit : kMfDigits)
        if (digit.character == upper) return Pair{kMfFrequencies[digit.low], kMfFrequencies[digit.high]};
    return std::nullopt;
}

std::vector<int16_t> dial(std::span<const Pair> digits, const DialTiming &timing) {
    std::vector<int16_t> samples;
    for (size_t i = 0; i < digits.size(); ++i) {
        const uint64_t tone = i == 0 && timing.firstToneSamples != 0 ? timing.firstToneSamples : timing.toneSamples;
        ToneBurst pair(
            {Oscillator::tone(digits[i].low, timing.lowPeak), Oscillator::tone(digits[i].high, timing.highPeak)}, 0, 0,
            false);
        for (uint64_t n = 0; n < tone; ++n) samples.push_back(pair.next());
        samples.insert(samples.end(), timing.pauseSamples, 0);
    }
    return samples;
}

namespace {
uint32_t holdOf(uint32_t entry, uint32_t hold) { return (entry >> 16) != 0 ? entry >> 16 : std::max(hold, 1u); }
}  // namespace

uint64_t sequenceLength(std::span<const uint32_t> entries, uint32_t hold, uint32_t repeats) {
    uint64_t length = 0;
    for (uint32_t entry : entries) length += holdOf(entry, hold);
    return length * std::max(repeats, 1u);
}

std::vector<int16_t> sequence(std::span<const uint32_t> entries, uint32_t hold, uint32_t repeats) {
    std::vector<int16_t> samples;
    for (uint32_t pass = 0; pass < std::max(repeats, 1u); ++pass)
        for (uint32_t entry : entries) samples.insert(samples.end(), holdOf(entry, hold), static_cast<int16_t>(entry));
    return samples;
}

// ---- Receivers --------------------------------------------------------------

// A window of samples, its power and, when a check asks for them, its
// samples weighted for the Goertzel filters of the guards and the comb.
namespace {

using Float4 = float __attribute__((vector_size(16)));

Float4 load4(const float *at) {
    Float4 v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

float sum4(Float4 v) { return v[0] + v[1] + v[2] + v[3]; }

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

}  // namespace

class Window {
public:
    // `input`: the window's samples, readable up to the length padded to eights.
    Window(const float *input, std::span<const double> weights, std::vector<double> &weighted)
        : input_(input), weights_(weights), weighted_(weighted) {
        const size_t length = weights.size(), half = (length + 1) / 2;
        const double halves[2] = {sumOfSquares(input, half), sumOfSquares(input + half, length - half)};
        meanSquare_ = (halves[0] + halves[1]) / static_cast<double>(length);
        const double larger = std::max(halves[0], halves[1]);
        steadiness_ = larger == 0 ? 1.0 : std::min(halves[0], halves[1]) / larger;
    }
    const float *input() const { return input_; }
    double meanSquare() const { return meanSquare_; }
    bool steady() const { return steadiness_ >= kSteadiness; }

    // The peak amplitude of the window's component at a cosine (Goertzel).
    double amplitude(double cosine) const {
        if (weightSum_ == 0) {
            weighted_.resize(weights_.size());
            for (size_t n = 0; n < weights_.size(); ++n) {
                weighted_[n] = input_[n] * weights_[n];
                weightSum_ += weights_[n];
            }
        }
        return 2.0 * std::sqrt(std::max(goertzel(weighted_, cosine), 0.0)) / weightSum_;
    }

private:
    const float *input_;
    std::span<const double> weights_;
    std::vector<double> &weighted_;  // the receiver's, made when first asked for
    mutable double weightSum_ = 0;
    double meanSquare_ = 0, steadiness_ = 1;
};

Filter Filter::of(uint16_t coefficient) {
    const double hertz = frequencyOf(coefficient);
    const auto near = [hertz](double share) {
        return std::cos(angleOf(std::min(hertz * (1 + share), kSampleRate / 2.0)));
    };
    Filter filter{cosineOf(coefficient), near(-kGuardOffset), near(kGuardOffset), {}};
    for (int step = -kCombSteps; step <= kCombSteps; ++step)
        filter.comb[static_cast<size_t>(step + kCombSteps)] = near(step * kCombSpacing);
    return filter;
}

namespace {

// The number of whole windows, one every `hop` samples, that any signal of
// `ms` fills (at least one).
uint32_t windowsFilled(uint32_t ms, uint32_t length, uint32_t hop) {
    const uint64_t samples = samplesOf(ms);
    return samples < length + uint64_t{hop} ? 1 : static_cast<uint32_t>((samples - length + 1) / hop);
}

std::vector<double> hamming(uint32_t length) {
    std::vector<double> weights(length);
    for (uint32_t n = 0; n < length; ++n) weights[n] = 0.54 - 0.46 * std::cos(kTwoPi * n / (length - 1));
    return weights;
}

// A window's length padded to eights, for the filter bank's loads; the
// receiver keeps that many zeros after its samples.
size_t paddedLength(size_t length) { return (length + 7) / 8 * 8; }
constexpr size_t kPadding = 8;
constexpr size_t kCompactAfter = 4096;

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

}  // namespace

// ---- The centre filters --------------------------------------------------------

namespace {

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

// ---- Receivers, continued -------------------------------------------------------

namespace {

// The most the comb can raise a centred tone's amplitude over what the centre
// filter sees: the inverse of the window's response to a tone as far off as
// a centred tone can be (half the guards' offset, and a comb step), with 1 dB
// to spare. A long window's narrow response makes it large, and the checks
// then always refine.
double refineGain(std::span<const Filter> filters, std::span<const double> weights) {
    double weightSum = 0;
    for (double w : weights) weightSum += w;
    double gain = 1;
    for (const Filter &f : filters) {
        const double hertz = std::acos(f.cosine) * kSampleRate / kTwoPi;
        for (double share = 0; share <= kGuardOffset / 2 + kCombSpacing; share += kCombSpacing / 4) {
            const double shift = angleOf(hertz * share);
            double re = 0, im = 0;
            for (size_t n = 0; n < weights.size(); ++n) {
                re += weights[n] * std::cos(shift * static_cast<double>(n));
                im += weights[n] * std::sin(shift * static_cast<double>(n));
            }
            gain = std::max(gain, weightSum / std::max(std::hypot(re, im), 1e-9));
        }
    }
    return gain * std::pow(10.0, 1.0 / 20);
}

}  // namespace

Receiver::Receiver(uint32_t windowLength, const Limits &limits)
    : length_(std::clamp(windowLength, kShortestWindow, kLongestWindow)),
      hop_(length_ / 2),
      limits_(limits),
      toneWindows_(windowsFilled(limits.toneMs, length_, hop_)),
      pauseWindows_(windowsFilled(limits.pauseMs, length_, hop_)),
      weights_(hamming(length_)),
      floorPeak_(peakOf(limits.minimumDb)),
      normalTwist_(std::pow(10.0, limits.normalTwistDb / 20)),
      reverseTwist_(std::pow(10.0, limits.reverseTwistDb / 20)),
      pending_(kPadding) {}

void Receiver::setFilters(std::vector<Filter> filters) {
    filters_ = std::move(filters);
    bank_ = std::make_unique<FilterBank>(filters_, weights_);
    refineGain_ = refineGain(filters_, weights_);
    amplitudes_.assign(filters_.size(), 0);
    centred_.assign(filters_.size(), false);
    checked_.assign(filters_.size(), false);
    refined_.assign(filters_.size(), false);
}

void Receiver::run(std::span<const int16_t> samples, std::vector<Report> &reports) {
    // The samples not used up yet, as floats, and kPadding zeros after them.
    // Samples used up are dropped once they are many, not at every call.
    if (start_ >= kCompactAfter) {
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(start_));
        start_ = 0;
    }
    const size_t held = pending_.size() - kPadding;
    pending_.resize(held + samples.size() + kPadding);
    toFloats(samples, &pending_[held]);
    std::fill(pending_.end() - kPadding, pending_.end(), 0.0f);
    size_t used = start_;
    for (; pending_.size() - kPadding - used >= length_; used += hop_) {
        const Window window(&pending_[used], weights_, weighted_);
        bool pause = false;
        const int symbol = classify(window, pause);
        debounce(symbol, pause, consumed_, reports);
        consumed_ += hop_;
    }
    start_ = used;
}

// A symbol is reported once it has filled the tone time's windows, and
// ends after the pause time's windows of pause or of another symbol; other
// windows (noise, a tone only partly there) neither extend nor end it.
void Receiver::debounce(int symbol, bool pause, uint64_t first, std::vector<Report> &reports) {
    if (symbol != kNone && symbol == candidate_) {
        ++run_;
    } else {
        candidate_ = symbol;
        run_ = 1;
        runFirst_ = first;
    }
    if (active_ != kNone && symbol == active_) {
        gap_ = 0;
        activeEnd_ = first + length_;
    } else if (active_ != kNone && (pause || symbol != kNone) && ++gap_ >= pauseWindows_) {
        reports.push_back({false, active_, activeFirst_, activeEnd_ - activeFirst_});
        active_ = kNone;
    }
    if (active_ == kNone && symbol != kNone && run_ >= toneWindows_) {
        active_ = symbol;
        activeFirst_ = runFirst_;
        activeEnd_ = first + length_;
        gap_ = 0;
        reports.push_back({true, symbol, runFirst_, 0});
    }
}

void Receiver::measure(const Window &window) {
    bank_->run(window.input(), amplitudes_);
    std::fill(checked_.begin(), checked_.end(), false);
    std::fill(refined_.begin(), refined_.end(), false);
}

bool Receiver::centred(const Window &window, int filter, int other) {
    if (!checked_[filter]) {
        // Both filters' guards in one run of the bank.
        const size_t filters[2] = {static_cast<size_t>(filter), static_cast<size_t>(other < 0 ? filter : other)};
        double guards[2][2];
        bank_->guards(window.input(), filters, guards);
        for (size_t k = 0; k < 2; ++k) {
            checked_[filters[k]] = true;
            centred_[filters[k]] = amplitudes_[filters[k]] >= guards[k][0] && amplitudes_[filters[k]] >= guards[k][1];
        }
    }
    return centred_[filter];
}

void Receiver::refine(const Window &window, int filter) {
    if (refined_[filter]) return;
    refined_[filter] = true;
    for (double cosine : filters_[filter].comb)
        amplitudes_[filter] = std::max(amplitudes_[filter], window.amplitude(cosine));
}

bool Receiver::possible(const Window &window, double a, double b) const {
    const double floor = floorPeak_;
    if (a * refineGain_ < floor || (b >= 0 && b * refineGain_ < floor)) return false;
    const double tonePower = (a * a + std::max(b, 0.0) * std::max(b, 0.0)) / 2 * refineGain_ * refineGain_;
    return pure(window, tonePower);
}

bool Receiver::present(int filter) const { return amplitudes_[filter] >= floorPeak_; }

bool Receiver::pure(const Window &window, double tonePower) const {
    return window.steady() && tonePower >= kPurity * window.meanSquare();
}

// The comb only raises amplitudes: a tone that passes on the centre filter
// passes.
bool Receiver::validSingle(const Window &window, int filter) {
    if (!possible(window, amplitudes_[filter], -1) || !centred(window, filter)) return false;
    const auto passes = [&] {
        const double a = amplitudes_[filter];
        return present(filter) && pure(window, a * a / 2);
    };
    if (passes()) return true;
    refine(window, filter);
    return passes();
}

// Twist is the lower-frequency tone's excess over the higher one: normal
// when it is louder (as lines attenuate high frequencies more), reverse when
// the higher one is. The comb moves it by less than refineGain_ either way,
// so only a twist that close to a limit waits for the comb.
bool Receiver::validPair(const Window &window, int low, int high) {
    if (!possible(window, amplitudes_[low], amplitudes_[high]) || !centred(window, low, high) || !centred(window, high))
        return false;
    // As amplitude ratios: the lower tone's over the higher, and the limits.
    const auto twist = [&] { return amplitudes_[low] / amplitudes_[high]; };
    const auto passes = [&](double margin) {
        const double a = amplitudes_[low], b = amplitudes_[high];
        return present(low) && present(high) && pure(window, (a * a + b * b) / 2) && twist() <= normalTwist_ / margin &&
               1 / twist() <= reverseTwist_ / margin;
    };
    if (passes(refineGain_)) return true;
    if (twist() > normalTwist_ * refineGain_ || 1 / twist() > reverseTwist_ * refineGain_) return false;
    refine(window, low);
    refine(window, high);
    return passes(1);
}

bool Receiver::quiet(const Window &window) const { return window.meanSquare() < floorPeak_ * floorPeak_ / 2; }

// ---- DTMF -------------------------------------------------------------------

DtmfReceiver::DtmfReceiver(const Limits &limits) : Receiver(kDigitWindow, limits) {
    std::vector<Filter> filters;
    for (double hertz : kDtmfFrequencies) filters.push_back(Filter::of(coefficientOf(hertz)));
    setFilters(std::move(filters));
}

uint8_t DtmfReceiver::character(int symbol) {
    return symbol >= 0 && symbol < 16 ? static_cast<uint8_t>(kDtmfCharacters[symbol]) : 0;
}

int DtmfReceiver::classify(const Window &window, bool &pause) {
    pause = quiet(window);
    if (pause) return kNone;  // too weak to hold a tone
    measure(window);
    const auto strongest = [this](int from) {
        return static_cast<int>(std::max_element(amplitudes_.begin() + from, amplitudes_.begin() + from + 4) -
                                amplitudes_.begin());
    };
    const int low = strongest(0), high = strongest(4);
    return validPair(window, low, high) ? low * 4 + (high - 4) : kNone;
}

// ---- MF ---------------------------------------------------------------------

MfReceiver::MfReceiver(const Limits &limits) : Receiver(kMfWindow, limits) {
    std::vector<Filter> filters;
    for (double hertz : kMfFrequencies) filters.push_back(Filter::of(coefficientOf(hertz)));
    setFilters(std::move(filters));
}

uint8_t MfReceiver::character(int symbol) {
    return symbol >= 0 && symbol < static_cast<int>(std::size(kMfDigits)) ? kMfDigits[symbol].character : 0;
}

int MfReceiver::classify(const Window &window, bool &pause) {
    pause = quiet(window);
    if (pause) return kNone;  // too weak to hold a tone
    measure(window);
    int order[std::size(kMfFrequencies)];
    for (int i = 0; i < static_cast<int>(std::size(order)); ++i) order[i] = i;
    std::partial_sort(std::begin(order), std::begin(order) + 2, std::end(order),
                      [this](int a, int b) { return amplitudes_[a] > amplitudes_[b]; });
    const int low = std::min(order[0], order[1]), high = std::max(order[0], order[1]);
    for (int symbol = 0; symbol < static_cast<int>(std::size(kMfDigits)); ++symbol)
        if (kMfDigits[symbol].low == low && kMfDigits[symbol].high == high)
            return validPair(window, low, high) ? symbol : kNone;
    return kNone;
}

// ---- Tones given by coefficients --------------------------------------------

ToneReceiver::ToneReceiver(std::span<const uint16_t> coefficients, std::span<const uint8_t> sizes,
                           uint32_t windowLength, const Limits &limits)
    : Receiver(windowLength, limits), sizes_(sizes.begin(), sizes.end()) {
    std::vector<Filter> filters;
    for (uint16_t coefficient : coefficients) filters.push_back(Filter::of(coefficient));
    setFilters(std::move(filters));
}

uint32_t ToneReceiver::windowFor(std::span<const uint16_t> coefficients) {
    // The main lobe of a Hamming window of N samples is 2 x 8000 / N Hz wide
    // on either side.
    double closest = kSampleRate;
    for (size_t i = 0; i < coefficients.size(); ++i)
        for (size_t j = i + 1; j < coefficients.size(); ++j) {
            const double spacing = std::abs(frequencyOf(coefficients[i]) - frequencyOf(coefficients[j]));
            if (spacing > 0) closest = std::min(closest, spacing);
        }
    const double length = std::ceil(2.0 * kSampleRate / closest);
    return static_cast<uint32_t>(std::clamp(length, double{kShortestWindow}, double{kLongestWindow}));
}

int ToneReceiver::classify(const Window &window, bool &pause) {
    pause = quiet(window);
    if (pause) return kNone;  // too weak to hold a tone
    measure(window);
    int best = kNone;
    double bestPower = 0;
    size_t first = 0;
    for (size_t tone = 0; tone < sizes_.size(); first += sizes_[tone], ++tone) {
        if (first + sizes_[tone] > amplitudes_.size()) break;
        const int a = static_cast<int>(first), b = static_cast<int>(first + 1);
        const bool valid = sizes_[tone] == 2 ? validPair(window, a, b) : validSingle(window, a);
        const double power =
            amplitudes_[a] * amplitudes_[a] + (sizes_[tone] == 2 ? amplitudes_[b] * amplitudes_[b] : 0);
        if (valid && power > bestPower) {
            best = static_cast<int>(tone);
            bestPower = power;
        }
    }
    return best;
}

// ---- Silence ----------------------------------------------------------------

SilenceReceiver::SilenceReceiver(const Limits &limits) : Receiver(kDigitWindow, limits) {}

int SilenceReceiver::classify(const Window &window, bool &pause) {
    // The limit is the power of a reference sine at minimumDb.
    pause = !quiet(window);
    return pause ? kNone : 0;
}

}  // namespace vb::signal
