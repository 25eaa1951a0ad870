// What the telephony blocks (RYN_VB_BLOCK_CST_..., types 120 to 128) share.
// Each pair of blocks that belong together is a family of its own:
// CstDtmf.cpp (DTMF dialler and detector), CstVoice.cpp (voice activity
// detector, comfort noise generator), CstPassThrough.cpp (voice mixer, echo
// canceller), CallProgress.cpp (call-progress tones) and CallerId.cpp.
//
// A block runs once set up: before its set-up a generator refuses to play
// (error 13), a detector ignores the samples it is given and its status
// reads 0. A set-up may be repeated; it starts the block afresh. Levels are
// in dB below full scale. Detectors analyse their input in frames of their
// own length; the call-progress and voice detectors use a small Goertzel
// bank, where a frequency is present in a frame when it holds a tenth of the
// frame's energy or more (a lone tone holds a half, each of two equal tones a
// quarter) and the frame's level is above the detector's floor.
#pragma once

#include <algorithm>
#include <array>
#include <memory>

#include "Families.h"
#include "Signal.h"
#include "TelephonyWire.h"

namespace vb::cst {

enum Type : int32_t {
    kDtmfDialler = RYN_VB_BLOCK_CST_DTMF_DIALLER,
    kVoiceActivityDetector = RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR,
    kDtmfDetector = RYN_VB_BLOCK_CST_DTMF_DETECTOR,
    kComfortNoiseGenerator = RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR,
    kVoiceMixer = RYN_VB_BLOCK_CST_VOICE_MIXER,
    kEchoCanceller = RYN_VB_BLOCK_CST_ECHO_CANCELLER,
    kCptDetector = RYN_VB_BLOCK_CST_CPT_DETECTOR,
    kCptGenerator = RYN_VB_BLOCK_CST_CPT_GENERATOR,
    kCallerIdDetector = RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR,
};

using namespace wire::telephony;

// RYN_VB_ATTR_CST_SET_UP: how the block was set up.
enum SetUp : uint32_t {
    kNotSetUp = RYN_VB_CST_NOT_SET_UP,
    kBasicSetUp = RYN_VB_CST_BASIC,
    kExtendedSetUp = RYN_VB_CST_EXTENDED
};

struct Block : ObjectState {
    uint32_t setUp = kNotSetUp;
};

// The set-up attribute every telephony block has.
std::vector<uint8_t> setUpValue(Call &, Object &object, uint32_t);
inline constexpr Attribute kSetUpAttribute{RYN_VB_ATTR_CST_SET_UP, RYN_VB_VALUE_UINT32, setUpValue, nullptr};

inline constexpr Attribute kSetUpOnly[] = {kSetUpAttribute};

template <int32_t First, typename FirstState, typename SecondState>
std::unique_ptr<ObjectState> makePair(const Object &block) {
    if (block.type == First) return std::make_unique<FirstState>();
    return std::make_unique<SecondState>();
}

template <int32_t First, int32_t Second>
bool makesEither(int32_t type) {
    return type == First || type == Second;
}

// The row of a telephony family of two block types (or one, given twice),
// each with a state of its own.
template <int32_t First, typename FirstState, int32_t Second, typename SecondState>
constexpr Family blockPair(const char *name, Table rows, const Audio &audio,
                           std::span<const Attribute> attributes = kSetUpOnly) {
    return {name,  rows, attributes, makePair<First, FirstState, SecondState>, nullptr, makesEither<First, Second>,
            &audio};
}

inline int16_t signedWord(const Input &in, uint32_t offset) { return static_cast<int16_t>(in.u16(offset)); }

// ---- Levels -----------------------------------------------------------------

// Output levels of the generators: 6 to 60 dB below full scale for each
// frequency, 10 by default.
inline constexpr uint32_t kDefaultLevelDb = 10, kLoudestDb = 6, kQuietestDb = 60;
// Detector floors: 1 to 90 dB below full scale, 40 by default.
inline constexpr uint32_t kDefaultFloorDb = 40, kHighestFloorDb = 1, kLowestFloorDb = 90;

// The mean power of a sine at a level.
double meanPowerFloor(uint32_t dbBelow);

// The generators' oscillators always play at this peak, two of them within
// 16 bits, and their sum is scaled to the level asked for: the integer
// oscillator keeps its frequency only at peaks well above its rounding, and
// the quietest level (a peak of 33) is not.
inline constexpr double kOscillatorPeak = 16383;
double scaleOf(uint32_t dbBelow);

// ---- Frames -----------------------------------------------------------------

// The frequencies of `list` present in the frame: bit i for list[i]; none in
// a frame quieter than `floor` (a mean power).
uint32_t presentMask(Samples frame, std::span<const double> list, double floor);

// Collects a detector's input into frames of its analysis length.
class Framer {
public:
    static constexpr size_t kLongest = 400;  // the call-progress detector's 50 ms

    template <typename OnFrame>
    void feed(Samples samples, size_t length, OnFrame &&onFrame) {
        length = std::min(length, buffer_.size());
        for (int16_t sample : samples) {
            buffer_[count_++] = sample;
            if (count_ < length) continue;
            count_ = 0;
            onFrame(Samples(buffer_.data(), length));
        }
    }

private:
    std::array<int16_t, kLongest> buffer_{};
    size_t count_ = 0;
};

// The audio of a family in which the blocks of one type take samples and
// pass nothing on.
template <int32_t Type, void (*Receive)(Board &, Object &, Samples)>
inline constexpr Audio kListening{[](const Object &block) { return block.type == Type; },
                                  [](Board &board, Object &block, Samples frame, uint32_t, std::vector<int16_t> &) {
                                      Receive(board, block, frame);
                                      return false;
                                  }};

// A detector's input, in frames of its analysis length, once it is set up.
template <typename Detector, size_t Length, void (*OnFrame)(Board &, Object &, Detector &, Samples)>
void inFrames(Board &board, Object &block, Samples samples) {
    static_assert(Length <= Framer::kLongest);
    auto &detector = block.as<Detector>();
    if (detector.setUp != kNotSetUp)
        detector.framer.feed(samples, Length, [&](Samples frame) { OnFrame(board, block, detector, frame); });
}

// Gives `block` the next `ms` of `source` to play in time, scaled by `scale`.
void playScaled(Board &board, Object &block, signal::Source &source, double scale, uint32_t ms);

}  // namespace vb::cst
