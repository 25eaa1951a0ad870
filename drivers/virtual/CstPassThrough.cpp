// The telephony voice mixer (type 124) and echo canceller (type 125): blocks
// that pass what reaches them on to the blocks after them, scaled by their
// gain.
#include "Cst.h"

namespace vb {
namespace {

using namespace cst;

constexpr uint32_t kLargestGain = 4096;  // gains in 1/256, as kUnityGain

struct PassThrough : Block {
    uint32_t gain = kUnityGain;
};

// ---- Voice mixer --------------------------------------------------------------

using Mix = VoiceMixerInitEx;

struct VoiceMixer : PassThrough {
    std::vector<uint32_t> inputs;      // handles of the blocks mixed
    std::vector<uint16_t> inputGains;  // in 1/256, kept with the inputs
};

// param1: output gain in 1/256 (0: unity; at most 4096); param2 not used.
uint32_t mixerInit(Call &call) {
    const auto gain = setting(call.in.u32(VoiceMixerInit::kParam1), kUnityGain, 1, kLargestGain);
    if (!gain) return VB_FAILURE(kOutOfRange);
    auto &mixer = call.object->as<VoiceMixer>();
    mixer = VoiceMixer{};
    mixer.gain = *gain;
    mixer.setUp = kBasicSetUp;
    return 0;
}

// Items: the handles of the input blocks (objects of the board, not the
// mixer itself); param2: output gain as above; values: each input's gain
// in 1/256; param4 not used; a count of 0..128. Once inputs are
// listed, the mixer passes on only what they play, each scaled by its own
// gain and then by the output gain; with none listed (the basic set-up, or a
// count of 0) it passes on whatever reaches it, scaled by the output gain.
uint32_t mixerInitEx(Call &call) {
    const int32_t count = call.in.i32(Mix::kCount);
    if (count < 0 || count > static_cast<int32_t>(Mix::kSlots)) return VB_FAILURE(kOutOfRange);
    const auto gain = setting(call.in.u32(Mix::kParam2), kUnityGain, 1, kLargestGain);
    if (!gain) return VB_FAILURE(kOutOfRange);
    VoiceMixer mixed;
    for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) {
        const uint32_t handle = call.in.u32(Mix::kItems + 4 * i);
        if (handle == call.object->handle || call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
        mixed.inputs.push_back(handle);
        mixed.inputGains.push_back(call.in.u16(Mix::kValues + 2 * i));
    }
    mixed.gain = *gain;
    mixed.setUp = kExtendedSetUp;
    call.object->as<VoiceMixer>() = std::move(mixed);
    return 0;
}

// The gain with which the mixer takes what `from` plays (0: the
// application): its own for a listed input, none for another; unity for
// everything while none is listed. The audio path sums the inputs.
int32_t inputGain(const Object &block, uint32_t from) {
    if (block.type != kVoiceMixer) return static_cast<int32_t>(kUnityGain);
    const auto &mixer = block.as<VoiceMixer>();
    if (mixer.inputs.empty()) return static_cast<int32_t>(kUnityGain);
    const auto input = std::find(mixer.inputs.begin(), mixer.inputs.end(), from);
    if (input == mixer.inputs.end()) return -1;  // not one of the inputs mixed
    return mixer.inputGains[static_cast<size_t>(input - mixer.inputs.begin())];
}

// ---- Echo canceller -----------------------------------------------------------

constexpr uint32_t kDefaultTailMs = 64, kLongestTailMs = 128;

struct EchoCanceller : PassThrough {
    uint32_t tailMs = kDefaultTailMs;
    uint32_t flags = 0;
};

// param1: echo tail in ms (0: 64; 1..128); param2: flags, kept. The board's
// lines make no echo, so the canceller hands its input on unchanged.
uint32_t echoInit(Call &call) {
    const auto tail = setting(call.in.u32(EchoCancelInit::kParam1), kDefaultTailMs, 1, kLongestTailMs);
    if (!tail) return VB_FAILURE(kOutOfRange);
    auto &canceller = call.object->as<EchoCanceller>();
    canceller.tailMs = *tail;
    canceller.flags = call.in.u32(EchoCancelInit::kParam2);
    canceller.setUp = kBasicSetUp;
    return 0;
}

constexpr Row kRows[] = {
    row<VoiceMixerInit>(only<kVoiceMixer, mixerInit>),
    row<EchoCancelInit>(only<kEchoCanceller, echoInit>),
    row<VoiceMixerInitEx>(only<kVoiceMixer, mixerInitEx>),
};

bool takes(const Object &) { return true; }

bool arrive(Board &, Object &block, Samples frame, uint32_t, std::vector<int16_t> &out) {
    const auto &state = block.as<PassThrough>();
    if (state.setUp == kNotSetUp) return false;
    out = scaled(frame, static_cast<int32_t>(state.gain));
    return true;
}

constexpr Audio kAudio{takes, arrive, nullptr, nullptr, inputGain};

}  // namespace

const Family kCstPassThroughFamily =
    blockPair<kVoiceMixer, VoiceMixer, kEchoCanceller, EchoCanceller>("Telephony pass-through", kRows, kAudio);

}  // namespace vb
