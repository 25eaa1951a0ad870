// The telephony blocks' shared pieces: levels, frame measures, playing.
#include "Cst.h"

#include <cmath>

namespace vb::cst {
namespace {

constexpr double kPresentShare = 0.1;

}  // namespace

std::vector<uint8_t> setUpValue(Call &, Object &object, uint32_t) {
    const auto *block = dynamic_cast<const Block *>(object.data.get());
    return wordValue(block != nullptr ? block->setUp : kNotSetUp);
}

double meanPowerFloor(uint32_t dbBelow) {
    const double peak = signal::fullScalePeakOf(dbBelow);
    return peak * peak / 2;
}

double scaleOf(uint32_t dbBelow) { return signal::fullScalePeakOf(dbBelow) / kOscillatorPeak; }

uint32_t presentMask(Samples frame, std::span<const double> list, double floor) {
    const double total = signal::energy(frame);
    if (frame.empty() || total / static_cast<double>(frame.size()) < floor) return 0;
    uint32_t mask = 0;
    for (size_t i = 0; i < list.size() && i < 32; ++i)
        if (signal::powerAt(frame, list[i]) / (static_cast<double>(frame.size()) * total) >= kPresentShare)
            mask |= 1u << i;
    return mask;
}

void playScaled(Board &board, Object &block, signal::Source &source, double scale, uint32_t ms) {
    std::vector<int16_t> samples(signal::samplesOf(ms));
    for (int16_t &s : samples)
        s = static_cast<int16_t>(std::clamp(std::lround(source.next() * scale), -32768l, 32767l));
    schedule(board, block, samples);
}

}  // namespace vb::cst
