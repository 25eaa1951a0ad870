// The FSK receiver: a quadrature discriminator and character framing.
#include "Fsk.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vb::signal {

namespace {

double angleOf(double hertz) { return 2.0 * std::numbers::pi * hertz / kSampleRate; }

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
        mark_[0][k] = std::cos(angleOf(tones.mark) * n);
        mark_[1][k] = std::sin(angleOf(tones.mark) * n);
        space_[0][k] = std::cos(angleOf(tones.space) * n);
        space_[1][k] = std::sin(angleOf(tones.space) * n);
    }
}

void FskReceiver::run(std::span<const int16_t> samples, std::vector<FskByte> &bytes) {
    for (int16_t sample : samples) {
        newest_ = (newest_ + 1) % kFskWindow;
        window_[newest_] = sample;
        bool carrier = false;
        const double decision = discriminate(carrier);
        if (!carrier) {
            phase_ = Phase::Hunt;
            markRun_ = 0;
        }
        step(decision, bytes);
        ++count_;
    }
}

// From +1 (mark alone) to -1 (space alone); 0 without carrier.
double FskReceiver::discriminate(bool &carrier) const {
    double mark[2] = {}, space[2] = {}, energy = 0;
    for (size_t k = 0; k < kFskWindow; ++k) {
        const double x = window_[(newest_ + 1 + k) % kFskWindow];  // the oldest first
        energy += x * x;
        for (size_t q = 0; q < 2; ++q) {
            mark[q] += x * mark_[q][k];
            space[q] += x * space_[q][k];
        }
    }
    const double markPower = mark[0] * mark[0] + mark[1] * mark[1];
    const double spacePower = space[0] * space[0] + space[1] * space[1];
    carrier = energy >= floor_ && markPower + spacePower > 0;
    return carrier ? (markPower - spacePower) / (markPower + spacePower) : 0;
}

void FskReceiver::step(double decision, std::vector<FskByte> &bytes) {
    const double previous = recent_[2];
    recent_[0] = recent_[1];
    recent_[1] = previous;
    recent_[2] = decision;
    if (phase_ == Phase::Hunt && decision > 0) {
        phase_ = Phase::Armed;
    } else if (phase_ == Phase::Armed && decision > 0) {
        ++markRun_;
    } else if (phase_ == Phase::Armed) {
        // The edge lies where the output crossed zero between the last two samples.
        const double fall = previous - decision;
        edge_ = static_cast<double>(count_) - 1 + (fall > 0 ? std::clamp(previous / fall, 0.0, 1.0) : 1.0);
        afterMark_ = static_cast<double>(markRun_) >= kMarkBeforeMessage;
        phase_ = Phase::Framing;
        bits_ = shift_ = 0;
        due_ = static_cast<uint64_t>(std::llround(edge_ + kBitSamples / 2)) + 1;
    } else if (phase_ == Phase::Framing && count_ >= due_) {
        bit(recent_[0] + recent_[1] + recent_[2] > 0, bytes);
    }
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
