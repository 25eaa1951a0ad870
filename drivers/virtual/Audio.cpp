// The audio path: frames from a block to the blocks that take them, the
// board clock following, and the two audio attributes of the block families.
#include <algorithm>
#include <bit>
#include <cstring>
#include <deque>
#include <optional>

#include "Families.h"
#include "G711.h"
#include "Spans.h"

namespace vb {
namespace {

constexpr uint32_t kAudioBytes = RYN_VB_AUDIO_MAX_BYTES;  // per attribute call

const Audio *audioOf(const Object &block) { return block.family->audio; }

bool takesSamples(const Object &block) {
    const Audio *audio = audioOf(block);
    return audio != nullptr && audio->takes != nullptr && audio->takes(block);
}

// The span and time slot a pipe is joined to, if it is.
std::optional<std::pair<Object *, uint32_t>> slotOf(Board &board, uint32_t pipe) {
    for (const Board::Connection &c : board.connections) {
        if (c.handleA != pipe) continue;
        Object *device = board.find(c.handleB);
        if (device != nullptr && device->family == &kT1E1Family) return std::pair{device, c.portB};
    }
    return std::nullopt;
}

// What `from` plays reaches: the blocks that take samples connected to it
// directly (as the first handle of a connection) or through pipes, and the
// time slots of the pipes joined to spans; each pipe and block once.
struct Reach {
    std::vector<Object *> blocks;
    std::vector<std::pair<Object *, uint32_t>> slots;
};

Reach reach(Board &board, uint32_t from) {
    Reach found;
    std::vector<uint32_t> visited{from}, pending{from};
    while (!pending.empty()) {
        const uint32_t at = pending.back();
        pending.pop_back();
        for (const Board::Connection &c : board.connections) {
            if (c.handleA != at || std::find(visited.begin(), visited.end(), c.handleB) != visited.end()) continue;
            visited.push_back(c.handleB);
            Object *target = board.find(c.handleB);
            if (target == nullptr) continue;
            if (target->family == &kPipeFamily) {
                if (const auto slot = slotOf(board, target->handle)) {
                    found.slots.push_back(*slot);
                } else {
                    pending.push_back(target->handle);
                }
            } else if (takesSamples(*target)) {
                found.blocks.push_back(target);
            }
        }
    }
    return found;
}

// A frame through the codec: each sample to its G.711 byte and back.
std::vector<int16_t> companded(Samples frame, uint32_t law) {
    std::vector<int16_t> out(frame.size());
    std::transform(frame.begin(), frame.end(), out.begin(), [law](int16_t x) {
        return law == RYN_VB_LAW_A ? wire::g711::linearFromAlaw(wire::g711::alawFromLinear(x))
                                   : wire::g711::linearFromUlaw(wire::g711::ulawFromLinear(x));
    });
    return out;
}

// One hop of a frame: the samples a block (or a time slot's pipe) played,
// and the blocks that passed them on so far.
struct Hop {
    uint32_t from;
    std::vector<int16_t> samples;
    std::vector<uint32_t> through;
};

// A frame sent on a span's time slot goes to the pipes joined to that slot
// on every span that receives it. A slot sends a frame once, so that loops
// through the spans end.
using Sent = std::vector<std::pair<uint32_t, uint32_t>>;  // (span, slot)

void send(Board &board, Object &span, uint32_t slot, const Hop &hop, std::deque<Hop> &hops, Sent &sent) {
    const std::pair key{span.handle, slot};
    if (!voiceSlot(board, span, slot) || std::find(sent.begin(), sent.end(), key) != sent.end()) return;
    sent.push_back(key);
    const std::vector<int16_t> line = companded(hop.samples, codecLaw(board));
    for (Object *receiver : spansReceiving(board, span)) {
        if (!voiceSlot(board, *receiver, slot)) continue;
        for (const Board::Connection &c : board.connections) {
            Object *pipe = c.handleB == receiver->handle && c.portB == slot ? board.find(c.handleA) : nullptr;
            if (pipe != nullptr && pipe->family == &kPipeFamily) hops.push_back({pipe->handle, line, hop.through});
        }
    }
}

// Carries a frame from block to block, and across the spans, hop by hop, as
// far as it goes. A block that passes samples on does not take back what
// already went through it, so a loop of such blocks ends.
void carry(Board &board, Hop first) {
    std::deque<Hop> hops;
    hops.push_back(std::move(first));
    std::vector<int16_t> out;
    Sent sent;
    while (!hops.empty()) {
        const Hop hop = std::move(hops.front());
        hops.pop_front();
        const Reach reached = reach(board, hop.from);
        for (Object *block : reached.blocks) {
            if (std::find(hop.through.begin(), hop.through.end(), block->handle) != hop.through.end()) continue;
            out.clear();
            if (!audioOf(*block)->arrive(board, *block, hop.samples, hop.from, out)) continue;
            std::vector<uint32_t> through = hop.through;
            through.push_back(block->handle);
            hops.push_back({block->handle, out, std::move(through)});
        }
        for (const auto &[span, slot] : reached.slots) send(board, *span, slot, hop, hops, sent);
    }
}

// Frame by frame, the board clock advancing by each.
template <typename Each>
void framed(Board &board, Samples samples, Each each) {
    for (size_t at = 0; at < samples.size(); at += kFrame) {
        const Samples frame = samples.subspan(at, std::min(kFrame, samples.size() - at));
        each(frame);
        board.advance(frame.size() * kSampleInterval);
    }
}

// RYN_VB_ATTR_AUDIO_OUT of a block that gives samples: its next samples (as
// many as the caller's buffer holds, at most 64 KiB, else error 9),
// little-endian; another block has no output to give (error 6). A block's
// live output also goes to the connected blocks.
std::vector<uint8_t> renderAudio(Call &call, Object &block, uint32_t capacity) {
    const Audio *audio = audioOf(block);
    const bool gives = audio->gives != nullptr && audio->gives(block);
    if (!gives || capacity > kAudioBytes) {
        call.refusal = gives ? VB_FAILURE(kOutOfRange) : VB_FAILURE(kNotProvided);
        return {};
    }
    std::vector<int16_t> samples(capacity / 2);
    if (audio->render(call.board, block, samples)) play(call.board, block, samples);
    return toLittleEndian(samples);
}

// RYN_VB_ATTR_AUDIO_IN of a block that takes samples: little-endian samples,
// an even number of bytes, at most 64 KiB, run through the block.
uint32_t receiveAudio(Call &call, Object &block, std::span<const uint8_t> value) {
    if (!takesSamples(block)) return VB_FAILURE(kNotProvided);
    if (value.size() % 2 != 0 || value.size() > kAudioBytes) return VB_FAILURE(kOutOfRange);
    listen(call.board, block, fromLittleEndian(value));
    return 0;
}

// The audio-in attribute is set only.
std::vector<uint8_t> setOnly(Call &call, Object &, uint32_t capacity) {
    if (capacity != 0) call.refusal = VB_FAILURE(kNotProvided);
    return {};
}

const Attribute kAudioAttributes[] = {
    {RYN_VB_ATTR_AUDIO_OUT, RYN_VB_VALUE_BINARY, renderAudio, nullptr},
    {RYN_VB_ATTR_AUDIO_IN, RYN_VB_VALUE_BINARY, setOnly, receiveAudio},
};

}  // namespace

void play(Board &board, const Object &block, Samples samples) {
    framed(board, samples, [&](Samples frame) { carry(board, {block.handle, {frame.begin(), frame.end()}, {}}); });
}

void listen(Board &board, Object &block, Samples samples) {
    std::vector<int16_t> out;
    framed(board, samples, [&](Samples frame) {
        out.clear();
        if (audioOf(block)->arrive(board, block, frame, 0, out)) carry(board, {block.handle, out, {block.handle}});
    });
}

std::span<const Attribute> audioAttributes() { return kAudioAttributes; }

std::vector<int16_t> fromLittleEndian(std::span<const uint8_t> bytes) {
    std::vector<int16_t> samples(bytes.size() / 2);
    if constexpr (std::endian::native == std::endian::little) {
        if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    } else {
        for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int16_t>(wire::le::load16(&bytes[2 * i]));
    }
    return samples;
}

std::vector<uint8_t> toLittleEndian(std::span<const int16_t> samples) {
    std::vector<uint8_t> bytes(samples.size() * 2);
    for (size_t i = 0; i < samples.size(); ++i) wire::le::store16(&bytes[2 * i], static_cast<uint16_t>(samples[i]));
    return bytes;
}

}  // namespace vb
