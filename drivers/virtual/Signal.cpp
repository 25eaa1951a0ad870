// The tone blocks' signal processing: integer oscillators as a DSP runs
// them, dial strings, and Goertzel receivers on Hamming-weighted windows.
#include "Signal.h"

#include <algorithm>
#include <cctype>
#include <cmath>
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

class Window {
public:
    Window(std::span<const int16_t> samples, std::span<const double> weights) : weighted_(samples.size()) {
        for (size_t n = 0; n < samples.size(); ++n) {
            weighted_[n] = samples[n] * weights[n];
            weightSum_ += weights[n];
        }
        const size_t half = (samples.size() + 1) / 2;
        const double halves[2] = {energy(samples.first(half)), energy(samples.subspan(half))};
        meanSquare_ = (halves[0] + halves[1]) / static_cast<double>(samples.size());
        const double larger = std::max(halves[0], halves[1]);
        steadiness_ = larger == 0 ? 1.0 : std::min(halves[0], halves[1]) / larger;
    }
    double meanSquare() const { return meanSquare_; }
    bool steady() const { return steadiness_ >= kSteadiness; }

    // The peak amplitude of the window's component at a cosine (Goertzel).
    double amplitude(double cosine) const {
        return 2.0 * std::sqrt(std::max(goertzel(weighted_, cosine), 0.0)) / weightSum_;
    }

private:
    std::vector<double> weighted_;
    double weightSum_ = 0, meanSquare_ = 0, steadiness_ = 1;
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

double decibels(double ratio) { return 20.0 * std::log10(ratio); }

}  // namespace

Receiver::Receiver(uint32_t windowLength, const Limits &limits)
    : length_(std::clamp(windowLength, kShortestWindow, kLongestWindow)),
      hop_(length_ / 2),
      limits_(limits),
      toneWindows_(windowsFilled(limits.toneMs, length_, hop_)),
      pauseWindows_(windowsFilled(limits.pauseMs, length_, hop_)),
      weights_(hamming(length_)) {}

void Receiver::run(std::span<const int16_t> samples, std::vector<Report> &reports) {
    pending_.insert(pending_.end(), samples.begin(), samples.end());
    size_t used = 0;
    for (; pending_.size() - used >= length_; used += hop_) {
        const Window window(std::span<const int16_t>(pending_).subspan(used, length_), weights_);
        bool pause = false;
        const int symbol = classify(window, pause);
        debounce(symbol, pause, consumed_, reports);
        consumed_ += hop_;
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(used));
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
    amplitudes_.resize(filters_.size());
    centred_.resize(filters_.size());
    for (size_t i = 0; i < filters_.size(); ++i) {
        const Filter &f = filters_[i];
        const double centre = window.amplitude(f.cosine);
        centred_[i] = centre >= window.amplitude(f.below) && centre >= window.amplitude(f.above);
        amplitudes_[i] = centre;
        if (!centred_[i]) continue;
        for (double cosine : f.comb) amplitudes_[i] = std::max(amplitudes_[i], window.amplitude(cosine));
    }
}

bool Receiver::present(int filter) const {
    return centred_[filter] && amplitudes_[filter] >= peakOf(limits_.minimumDb);
}

bool Receiver::pure(const Window &window, double tonePower) const {
    return window.steady() && tonePower >= kPurity * window.meanSquare();
}

bool Receiver::validSingle(const Window &window, int filter) const {
    const double a = amplitudes_[filter];
    return present(filter) && pure(window, a * a / 2);
}

bool Receiver::validPair(const Window &window, int low, int high) const {
    const double a = amplitudes_[low], b = amplitudes_[high];
    if (!present(low) || !present(high) || !pure(window, (a * a + b * b) / 2)) return false;
    const double twist = decibels(b / a);  // the higher tone's excess
    return twist <= limits_.normalTwistDb && -twist <= limits_.reverseTwistDb;
}

bool Receiver::quiet(const Window &window) const {
    const double peak = peakOf(limits_.minimumDb);
    return window.meanSquare() < peak * peak / 2;
}

// ---- DTMF -------------------------------------------------------------------

DtmfReceiver::DtmfReceiver(const Limits &limits) : Receiver(kDigitWindow, limits) {
    for (double hertz : kDtmfFrequencies) filters_.push_back(Filter::of(coefficientOf(hertz)));
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
    for (double hertz : kMfFrequencies) filters_.push_back(Filter::of(coefficientOf(hertz)));
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
    for (uint16_t coefficient : coefficients) filters_.push_back(Filter::of(coefficient));
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
        if (first + sizes_[tone] > filters_.size()) break;
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
