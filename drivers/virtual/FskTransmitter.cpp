// The FSK transmitter: queued bits played at 1200 baud.
#include "FskTransmitter.h"

#include "SignalDetail.h"

namespace vb::signal {
namespace {

using namespace detail;

constexpr uint32_t kBaud = 1200;

struct Frequencies {
    double mark, space;
};

Frequencies frequenciesOf(FskMode mode) {
    return mode == FskMode::V23 ? Frequencies{1300, 2100} : Frequencies{1200, 2200};
}

}  // namespace

FskTransmitter::FskTransmitter(FskMode mode, double peak)
    : markStep_(angleOf(frequenciesOf(mode).mark)), spaceStep_(angleOf(frequenciesOf(mode).space)), peak_(peak) {}

void FskTransmitter::seizure(size_t bits) {
    for (size_t i = 0; i < bits; ++i) bits_.push_back(i % 2 == 1);
}

void FskTransmitter::marks(size_t bits) { bits_.insert(bits_.end(), bits, true); }

void FskTransmitter::characters(std::span<const uint8_t> bytes) {
    for (uint8_t byte : bytes) {
        bits_.push_back(false);
        for (int b = 0; b < 8; ++b) bits_.push_back(((byte >> b) & 1) != 0);
        bits_.push_back(true);
    }
}

int16_t FskTransmitter::next() {
    if (done()) return 0;
    const auto out = static_cast<int16_t>(std::lround(peak_ * std::sin(phase_)));
    phase_ = std::fmod(phase_ + (bits_[bit_] ? markStep_ : spaceStep_), kTwoPi);
    elapsed_ += kBaud;
    if (elapsed_ >= kSampleRate) {
        elapsed_ -= kSampleRate;
        ++bit_;
    }
    return out;
}

}  // namespace vb::signal
