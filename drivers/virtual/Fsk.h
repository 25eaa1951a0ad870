// The board's FSK receiver (the FSK and caller identification detectors).
#pragma once

#include "Signal.h"

namespace vb::signal {

// 1200 baud frequency-shift keying: Bell 202 (mark 1200 Hz, space 2200 Hz)
// or V.23 (mark 1300 Hz, space 2100 Hz), in asynchronous characters: a start
// bit (space), 8 data bits from the least significant, a stop bit (mark).
enum class FskMode : uint32_t { Bell202 = RYN_VB_FSK_BELL202, V23 = RYN_VB_FSK_V23 };

struct FskByte {
    uint8_t value;
    uint64_t firstSample;  // where its start bit began, counted from the receiver's start
    bool afterMark;        // at least a character's time (10 bits) of steady mark came before it
};

// A quadrature discriminator: over the last 7 samples (about a bit) it
// correlates the signal with the mark and the space frequency and takes the
// stronger. The receiver hunts for mark, then for the edge to space that
// begins a start bit; it places the edge between two samples, times every
// bit of the character from it and decides each bit on the three
// discriminator outputs around its centre. A start bit that is not space at
// its centre is a false start; a character whose stop bit is not mark is
// dropped and the receiver hunts for mark again. Below the carrier floor
// (the power of a sine of peak `floorPeak`) it drops what it was receiving.
// A channel seizure (alternating bits) reads as characters 0x55.
inline constexpr size_t kFskWindow = 7;
class FskReceiver {
public:
    FskReceiver(FskMode mode, double floorPeak);
    void run(std::span<const int16_t> samples, std::vector<FskByte> &bytes);

private:
    enum class Phase { Hunt, Armed, Framing };
    // A discriminator output as mark power less and plus space power (both 0
    // without carrier): the sign is the first's, the value their quotient,
    // worked out only where the framing needs it.
    struct Output {
        double difference = 0, total = 0;
        bool mark() const { return difference > 0; }
        double value() const { return total > 0 ? difference / total : 0; }
    };
    static constexpr size_t kBlock = 128;  // samples discriminated at a time, then framed
    void discriminate(std::span<const int16_t> samples);
    void frame(const Output *output, std::vector<FskByte> &bytes);
    void startBit(const Output *output);
    void bit(bool mark, std::vector<FskByte> &bytes);

    alignas(16) double reference_[kFskWindow][4];  // cosine and sine of mark, then of space
    double floor_;                                 // of the window's energy
    double window_[kFskWindow + kBlock] = {};      // the last samples, then a block's
    double energy_ = 0;                            // of the window: whole numbers, exact
    Output outputs_[2 + kBlock];                   // the last two outputs, then a block's
    uint64_t count_ = 0;                           // samples run
    Phase phase_ = Phase::Hunt;
    uint64_t markRun_ = 0;  // samples of steady mark before the edge
    double edge_ = 0;       // the start bit's edge, in discriminator samples
    uint64_t due_ = 0;      // the sample after the centre of the next bit
    uint32_t bits_ = 0, shift_ = 0;
    bool afterMark_ = false;
};

}  // namespace vb::signal
