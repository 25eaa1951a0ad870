// The board's audio path. Samples are 16-bit, 8 kHz, and travel one way:
// a block's output goes along its connections, directly or through pipes,
// to the blocks that take samples in; a block that passes samples on (a
// mixer, an echo canceller) hands its output back, and the path carries it
// on from there. Everything moves in frames of kFrame samples, the board
// clock advancing by each frame, so that events carry the time they were
// found. A family says only what its blocks do with a frame.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vb {

class Board;
struct Object;
struct Attribute;

inline constexpr size_t kFrame = 80;        // 10 ms
inline constexpr int32_t kUnityGain = 256;  // gains in 1/256
using Samples = std::span<const int16_t>;

// What a family's blocks do with samples.
struct Audio {
    // Whether a block takes samples in (from connections, and from the
    // application through the audio-in attribute); nullptr: none does, and
    // `arrive` is never called.
    bool (*takes)(const Object &block);
    // A frame reaches a block that takes samples, from `from` (the handle of
    // the block that played it, 0 for the application). A block that passes
    // samples on writes its output to `out` and returns true.
    bool (*arrive)(Board &board, Object &block, Samples frame, uint32_t from, std::vector<int16_t> &out);
    // Whether a block gives samples to the application (the audio-out
    // attribute); nullptr: none does.
    bool (*gives)(const Object &block) = nullptr;
    // The block's next samples, into `out`. Returns true when the block
    // plays something (its output then goes to the connected blocks), false
    // when it is silent.
    bool (*render)(Board &board, Object &block, std::span<int16_t> out) = nullptr;
    // The gain, in 1/256, with which a block takes what `from` plays (0:
    // the application); negative: it does not take it. nullptr: unity for
    // every input. What reaches a block in one frame of the clock is summed
    // at these gains.
    int32_t (*inputGain)(const Object &block, uint32_t from) = nullptr;
};

// Plays a block's output to everything connected after it, at once.
void play(Board &board, const Object &block, Samples samples);

// Gives a block samples to play in time, after what it was given before,
// and an event that comes once all of it has played (word 5..7 the values).
void schedule(Board &board, Object &block, Samples samples);
void scheduleEvent(Board &board, Object &block, uint32_t code, uint32_t value5 = 0, uint32_t value6 = 0,
                   uint32_t value7 = 0);

// One frame of the sample clock: every block and line that plays and is
// connected plays its frame; a block connected to nothing lets its time
// pass; the time slots nothing plays into send their idle or constant byte;
// a connected block that heard nothing in the frame hears silence.
void runFrame(Board &board);

// Runs the application's samples through one block, as if they arrived
// through a connection.
void listen(Board &board, Object &block, Samples samples);

// Samples at a gain in 1/256, saturated to 16 bits.
std::vector<int16_t> scaled(Samples samples, int32_t gain);

// The audio-out and audio-in attributes of the families that have audio.
std::span<const Attribute> audioAttributes();

// Samples as the application hands them over and takes them back: 16-bit
// little-endian values (an odd last byte is left out).
std::vector<int16_t> fromLittleEndian(std::span<const uint8_t> bytes);
std::vector<uint8_t> toLittleEndian(std::span<const int16_t> samples);

}  // namespace vb
