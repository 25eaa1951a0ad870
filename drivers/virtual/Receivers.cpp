// The tone receivers: Goertzel filters on Hamming-weighted windows, the
// checks on what they see, and the debouncing of symbols.
#include <algorithm>
#include <cmath>

#include "Signal.h"
#include "SignalDetail.h"

namespace vb::signal {
namespace {

using namespace detail;

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
constexpr size_t kCompactAfter = 4096;

}  // namespace

// A window of samples, its power and, when a check asks for them, its
// samples weighted for the Goertzel filters of the guards and the comb.

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

}  // namespace

// ---- Receivers, continued -------------------------------------------------------

namespace {

// The most the comb can raise a centred tone's amplitude over what the centre
// filter sees: the inverse of the window's response to a tone as far off as
// a centred tone can be (halfway to a guard), with 1 dB to spare. A long
// window's narrow response makes it large, and the checks then always
// refine.
double refineGain(std::span<const Filter> filters, std::span<const double> weights) {
    double weightSum = 0;
    for (double w : weights) weightSum += w;
    double gain = 1;
    for (const Filter &f : filters) {
        const double hertz = std::acos(f.cosine) * kSampleRate / kTwoPi;
        for (double share = 0; share <= kGuardOffset / 2; share += kCombSpacing / 4) {
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
