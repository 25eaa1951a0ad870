// The FSK receiver: a quadrature discriminator and character framing.
#include "Fsk.h"

#include <algorithm>
#include <cmath>

#include "SignalDetail.h"

namespace vb::signal {

namespace {

using detail::angleOf;

constexpr double kBitSamples = kSampleRate / 1200.0;  // 6 2/3 at 1200 baud
constexpr uint32_t kStopBit = 9;                      // after the start bit and 8 data bits
constexpr double kMarkBeforeMessage = 10 * kBitSamples;
// The discriminator sees an edge of the signal when its window is half past it.
constexpr double kDiscriminatorDelay = (kFskWindow - 1) / 2.0;

struct FskTones {
    double mark, space;
};
FskTones tonesOf(FskMode mode) { return mode == FskMode::V23 ? FskTones{1300, 2100} : FskTones{1200, 2200}; }

}  // namespace

FskReceiver::FskReceiver(FskMode mode, double floorPeak) : floor_(kFskWindow * floorPeak * floorPeak / 2) {
    const FskTones tones = tonesOf(mode);
    for (size_t k = 0; k < kFskWindow; ++k) {
        const double n = static_cast<double>(k);
        reference_[k][0] = std::cos(angleOf(tones.mark) * n);
        reference_[k][1] = std::sin(angleOf(tones.mark) * n);
        reference_[k][2] = std::cos(angleOf(tones.space) * n);
        reference_[k][3] = std::sin(angleOf(tones.space) * n);
    }
}

void FskReceiver::run(std::span<const int16_t> samples, std::vector<FskByte> &bytes) {
    while (!samples.empty()) {
        const size_t n = std::min(samples.size(), kBlock);
        discriminate(samples.first(n));
        for (size_t i = 0; i < n; ++i) frame(outputs_ + 2 + i, bytes);
        std::copy(outputs_ + n, outputs_ + n + 2, outputs_);
        samples = samples.subspan(n);
    }
}

// One output per sample, on the window that ends there. The sums are taken
// from the window's oldest sample, in the same order every time.
void FskReceiver::discriminate(std::span<const int16_t> samples) {
    std::copy(samples.begin(), samples.end(), window_ + kFskWindow);
    Output *__restrict outputs = outputs_ + 2;
    double energy = energy_;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double *window = window_ + i + 1, x = window[kFskWindow - 1];
        energy += x * x - window[-1] * window[-1];
        double sums[4] = {};
        for (size_t k = 0; k < kFskWindow; ++k)
            for (size_t q = 0; q < 4; ++q) sums[q] += window[k] * reference_[k][q];
        const double markPower = sums[0] * sums[0] + sums[1] * sums[1];
        const double spacePower = sums[2] * sums[2] + sums[3] * sums[3];
        const bool carrier = energy >= floor_ && markPower + spacePower > 0;
        outputs[i] = {carrier ? markPower - spacePower : 0, carrier ? markPower + spacePower : 0};
    }
    energy_ = energy;
    std::copy(window_ + samples.size(), window_ + samples.size() + kFskWindow, window_);
}

// `output` is the newest; the two before it precede it.
void FskReceiver::frame(const Output *output, std::vector<FskByte> &bytes) {
    if (output->total == 0) {  // no carrier
        phase_ = Phase::Hunt;
        markRun_ = 0;
    }
    if (phase_ == Phase::Hunt) {
        if (output->mark()) phase_ = Phase::Armed;
    } else if (phase_ == Phase::Armed) {
        if (output->mark())
            ++markRun_;
        else
            startBit(output);
    } else if (count_ >= due_) {
        bit(output[-2].value() + output[-1].value() + output[0].value() > 0, bytes);
    }
    ++count_;
}

// The edge lies where the output crossed zero between the last two samples.
void FskReceiver::startBit(const Output *output) {
    const double previous = output[-1].value(), fall = previous - output[0].value();
    edge_ = static_cast<double>(count_) - 1 + (fall > 0 ? std::clamp(previous / fall, 0.0, 1.0) : 1.0);
    afterMark_ = static_cast<double>(markRun_) >= kMarkBeforeMessage;
    phase_ = Phase::Framing;
    bits_ = shift_ = 0;
    due_ = static_cast<uint64_t>(std::llround(edge_ + kBitSamples / 2)) + 1;
}

void FskReceiver::bit(bool mark, std::vector<FskByte> &bytes) {
    if (bits_ == 0 && mark) {  // a false start
        phase_ = Phase::Armed;
        return;
    }
    if (bits_ == kStopBit) {
        const double first = std::max(edge_ - kDiscriminatorDelay, 0.0);
        if (mark)
            bytes.push_back({static_cast<uint8_t>(shift_), static_cast<uint64_t>(std::llround(first)), afterMark_});
        phase_ = mark ? Phase::Armed : Phase::Hunt;
        markRun_ = 0;
        return;
    }
    if (bits_ > 0 && mark) shift_ |= 1u << (bits_ - 1);
    ++bits_;
    due_ = static_cast<uint64_t>(std::llround(edge_ + (bits_ + 0.5) * kBitSamples)) + 1;
}

}  // namespace vb::signal
