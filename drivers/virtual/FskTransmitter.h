// The board's FSK transmitter: what a line plays to send caller
// identification (LineAudio.h), the counterpart of the receiver of Fsk.h.
#pragma once

#include <span>
#include <vector>

#include "Fsk.h"

namespace vb::signal {

// 1200 baud, continuous phase: each bit plays its frequency (mark for 1,
// space for 0) and the phase runs on across the bit edges, so the signal
// has no jumps. A bit lasts 8000 / 1200 = 6 2/3 samples; the edges fall on
// the samples where the exact time crosses them (bits of 7, 7 and 6
// samples in turn), so that a long message keeps its timing. The bits are
// queued first and played by next(), then silence.
class FskTransmitter : public Source {
public:
    FskTransmitter(FskMode mode, double peak);

    // Alternating bits, space first (a channel seizure reads as 0x55 bytes).
    void seizure(size_t bits);
    void marks(size_t bits);
    // Asynchronous characters: a start bit (space), 8 data bits from the
    // least significant, a stop bit (mark).
    void characters(std::span<const uint8_t> bytes);

    int16_t next() override;
    bool done() const { return bit_ >= bits_.size(); }

private:
    double markStep_, spaceStep_;  // phase advance per sample, radians
    double peak_;
    std::vector<bool> bits_;
    size_t bit_ = 0;
    // Time into the current bit in 1/(8000 x 1200) s: each sample adds
    // 1200, a bit ends at 8000.
    uint32_t elapsed_ = 0;
    double phase_ = 0;
};

}  // namespace vb::signal
