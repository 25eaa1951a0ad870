// The board's table of families. A family is everything the board knows
// about one kind of object: the requests it answers, the attributes it has
// beside the common ones, the state of its objects and, for DSP blocks, the
// block types it makes and what its blocks do with samples. The dispatcher
// (Driver.cpp), the device-core requests (Core.cpp) and the audio path
// (Audio.cpp) read this table and nothing else about a family.
//
// Adding a family is its own file, which defines `const Family kNameFamily`,
// and one line in VB_FAMILIES below.
#pragma once

#include "Audio.h"
#include "Board.h"

namespace vb {

struct Family {
    const char *name;
    Table rows;
    std::span<const Attribute> attributes;
    // The state of a new object of the family (nullptr: none).
    std::unique_ptr<ObjectState> (*newState)(const Object &object) = nullptr;
    // Returns an object to its start (a reset, the close of a device); when
    // nullptr, its state is made afresh. A family that must tell someone
    // does it here: a running DSP program ends with its event, the far span
    // sees the change.
    void (*reset)(Board &board, Object &object) = nullptr;
    // DSP blocks: whether the family makes blocks of a type (nullptr: the
    // family makes none), and what they do with samples (nullptr: nothing).
    bool (*makesBlock)(int32_t type) = nullptr;
    const Audio *audio = nullptr;
    // What an object does in each frame of the sample clock beside its
    // audio (nullptr: nothing).
    void (*tick)(Board &board, Object &object) = nullptr;
};

// The state maker of a family whose objects all keep one struct.
template <typename State>
std::unique_ptr<ObjectState> makeState(const Object &) {
    return std::make_unique<State>();
}

// Every family of the board, one line each.
// clang-format off
#define VB_FAMILIES(X) \
    X(Board) \
    X(T1E1) \
    X(Bri) \
    X(Dsp) \
    X(Hdlc) \
    X(RawData) \
    X(Burst) \
    X(Pots) \
    X(Slic) \
    X(Jtag) \
    X(ToneGenerators) \
    X(ToneDetectors) \
    X(CstDtmf) \
    X(CstVoice) \
    X(CstPassThrough) \
    X(CallProgress) \
    X(CallerId) \
    X(DataMixer) \
    X(DspPots) \
    X(EventQueue) \
    X(Pipe)
// clang-format on

#define VB_DECLARE_FAMILY(name) extern const Family k##name##Family;
VB_FAMILIES(VB_DECLARE_FAMILY)
#undef VB_DECLARE_FAMILY

// The family that makes blocks of `type`, nullptr when none does.
const Family *blockFamily(int32_t type);

// The attributes of an object beside the common ones: its family's, and the
// audio attributes of a block family that has audio.
std::span<const Attribute> attributesOf(const Object &object);

// Returns an object's state to its start.
void resetState(Board &board, Object &object);

}  // namespace vb
