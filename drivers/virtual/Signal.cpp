// The signal processing of the tone blocks: integer oscillators as a DSP runs
// them, dial strings and sequences, and the measures detectors use.
#include "Signal.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "SignalDetail.h"

namespace vb::signal {
namespace {

using namespace detail;

constexpr double kQ15 = 32768.0;
constexpr uint64_t kSamplesPerMs = kSampleRate / 1000;

int16_t saturate(int64_t value) { return static_cast<int16_t>(std::clamp<int64_t>(value, INT16_MIN, INT16_MAX)); }

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

std::optional<Pair> dtmfPair(uint8_t character) {
    const int upper = std::toupper(character);
    for (int i = 0; i < 16; ++i)
        if (upper != 0 && kDtmfCharacters[i] == upper)
            return Pair{kDtmfFrequencies[i / kDtmfGroup], kDtmfFrequencies[kDtmfGroup + i % kDtmfGroup]};
    return std::nullopt;
}

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

}  // namespace vb::signal
