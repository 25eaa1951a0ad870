// The audio path: frames from a block to the blocks that take them, the
// board clock following, and the two audio attributes of the block families.
#include <algorithm>
#include <array>
#include <map>
#include <set>
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

int32_t gainOf(const Object &block, uint32_t from) {
    const Audio *audio = audioOf(block);
    return audio->inputGain != nullptr ? audio->inputGain(block, from) : kUnityGain;
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

// The pipes that hear a span's time slot: those joined to that slot on
// every span that receives it.
std::vector<uint32_t> slotListeners(Board &board, Object &span, uint32_t slot) {
    std::vector<uint32_t> pipes;
    for (Object *receiver : spansReceiving(board, span)) {
        if (!voiceSlot(board, *receiver, slot)) continue;
        for (const Board::Connection &c : board.connections) {
            Object *pipe = c.handleB == receiver->handle && c.portB == slot ? board.find(c.handleA) : nullptr;
            if (pipe != nullptr && pipe->family == &kPipeFamily) pipes.push_back(pipe->handle);
        }
    }
    return pipes;
}

void send(Board &board, Object &span, uint32_t slot, const Hop &hop, std::deque<Hop> &hops, Sent &sent) {
    const std::pair key{span.handle, slot};
    if (!voiceSlot(board, span, slot) || std::find(sent.begin(), sent.end(), key) != sent.end()) return;
    sent.push_back(key);
    const std::vector<int16_t> line = companded(hop.samples, codecLaw(board));
    for (uint32_t pipe : slotListeners(board, span, slot)) hops.push_back({pipe, line, hop.through});
}

// Carries frames from block to block, and across the spans, hop by hop, as
// far as they go. A block that passes samples on does not take back what
// already went through it, so a loop of such blocks ends.
void carry(Board &board, std::deque<Hop> hops, Sent &sent) {
    std::vector<int16_t> out;
    while (!hops.empty()) {
        const Hop hop = std::move(hops.front());
        hops.pop_front();
        const Reach reached = reach(board, hop.from);
        for (Object *block : reached.blocks) {
            if (std::find(hop.through.begin(), hop.through.end(), block->handle) != hop.through.end()) continue;
            const int32_t gain = gainOf(*block, hop.from);
            if (gain < 0) continue;
            out.clear();
            if (!audioOf(*block)->arrive(board, *block, scaled(hop.samples, gain), hop.from, out)) continue;
            std::vector<uint32_t> through = hop.through;
            through.push_back(block->handle);
            hops.push_back({block->handle, out, std::move(through)});
        }
        for (const auto &[span, slot] : reached.slots) send(board, *span, slot, hop, hops, sent);
    }
}

void carry(Board &board, Hop first, Sent &sent) {
    std::deque<Hop> hops;
    hops.push_back(std::move(first));
    carry(board, std::move(hops), sent);
}

void carry(Board &board, Hop first) {
    Sent sent;
    carry(board, std::move(first), sent);
}

// ---- Playing in time ------------------------------------------------------------

// Posts the events of a block whose time has come.
void settle(Board &board, Object &block) {
    Outgoing &o = block.outgoing;
    const uint64_t gone = std::max(o.taken, o.aired);
    while (!o.marks.empty() && o.marks.front().at <= gone) {
        const Outgoing::Mark mark = o.marks.front();
        o.marks.pop_front();
        board.post(block, mark.code, mark.value5, mark.value6, mark.value7);
    }
}

// Takes what a block was given to play, as much as `out` holds; returns
// how many samples that was.
size_t takeQueued(Board &board, Object &block, std::span<int16_t> out) {
    Outgoing &o = block.outgoing;
    const size_t count = std::min(out.size(), o.samples.size());
    std::copy_n(o.samples.begin(), count, out.begin());
    o.samples.erase(o.samples.begin(), o.samples.begin() + static_cast<std::ptrdiff_t>(count));
    o.taken += count;
    o.aired = std::max(o.aired, o.taken);
    settle(board, block);
    return count;
}

// The time of `count` samples passes for a block connected to nothing.
void letPass(Board &board, Object &block, size_t count) {
    Outgoing &o = block.outgoing;
    o.aired = std::min(std::max(o.aired, o.taken) + count, o.taken + o.samples.size());
    settle(board, block);
}

// A block's next samples: what it was given to play, then what it renders.
// True when it played anything.
bool output(Board &board, Object &block, std::span<int16_t> out) {
    const size_t queued = takeQueued(board, block, out);
    const std::span<int16_t> rest = out.subspan(queued);
    std::fill(rest.begin(), rest.end(), int16_t{0});
    const Audio *audio = audioOf(block);
    bool played = queued > 0;
    if (audio->render != nullptr && !rest.empty()) played = audio->render(board, block, rest) || played;
    if (!out.empty()) block.outgoing.last = out.back();
    return played;
}

bool isLine(const Object &object) { return kindOf(object.handle) == kKindPhysical; }

// Where what an object plays starts: a block's own output; a line's goes
// out through the pipes joined to it.
std::vector<uint32_t> startsOf(Board &board, const Object &object) {
    if (!isLine(object)) return {object.handle};
    std::vector<uint32_t> pipes;
    for (const Board::Connection &c : board.connections)
        if (c.handleB == object.handle && kindOf(c.handleA) == kKindPipe) pipes.push_back(c.handleA);
    return pipes;
}

bool connectedAfter(Board &board, std::span<const uint32_t> starts) {
    return std::any_of(board.connections.begin(), board.connections.end(), [&](const Board::Connection &c) {
        return std::find(starts.begin(), starts.end(), c.handleA) != starts.end() && board.find(c.handleB) != nullptr;
    });
}

// The law's idle code, or the constant byte set on the slot, as a frame.
std::vector<int16_t> idleFrame(Board &board, const Object &span, uint32_t slot) {
    const uint32_t law = codecLaw(board);
    const uint8_t idle = law == RYN_VB_LAW_A ? wire::g711::kAlawIdle : wire::g711::kUlawIdle;
    const uint8_t byte = constantByte(board, span.id, slot).value_or(idle);
    const int16_t sample = law == RYN_VB_LAW_A ? wire::g711::linearFromAlaw(byte) : wire::g711::linearFromUlaw(byte);
    return std::vector<int16_t>(kFrame, sample);
}

// ---- One frame of the clock ------------------------------------------------------
//
// In a frame of the clock every block hears one frame: the sum of what
// reaches it, each input weighed by the block's gain for it. The frame
// moves in waves: the sources play, the blocks they reach run, the blocks
// that pass samples on reach the next ones, and so on. A block runs once a
// frame; what reaches it after it ran it hears in the next frame. As with
// frames carried at once, samples never come back to a block they already
// went through, so a loop of blocks adds no echo of its own. A time slot
// sends once a frame.

using Sum = std::array<int32_t, kFrame>;

std::vector<int16_t> clamped(const Sum &sum) {
    std::vector<int16_t> frame(kFrame);
    std::transform(sum.begin(), sum.end(), frame.begin(),
                   [](int32_t x) { return static_cast<int16_t>(std::clamp<int32_t>(x, -32768, 32767)); });
    return frame;
}

class FrameRun {
public:
    explicit FrameRun(Board &board) : board_(board) {}

    // What `from` plays this frame goes to the blocks and time slots it
    // reaches, except those it went through.
    void deliver(uint32_t from, Samples samples, const std::vector<uint32_t> &through = {}) {
        const Reach reached = reach(board_, from);
        for (Object *block : reached.blocks) {
            const int32_t gain = gainOf(*block, from);
            if (gain < 0 || std::find(through.begin(), through.end(), block->handle) != through.end()) continue;
            if (ran_.count(block->handle) != 0) {
                addLate(*block, samples, gain);
                continue;
            }
            Input &input = input_[block->handle];
            add(input.sum, samples, gain);
            for (uint32_t passed : through)
                if (std::find(input.through.begin(), input.through.end(), passed) == input.through.end())
                    input.through.push_back(passed);
        }
        for (const auto &[span, slot] : reached.slots) add(slots_[{span->handle, slot}], samples, kUnityGain);
    }

    // Runs waves until nothing moves.
    void settle() {
        while (!input_.empty() || !slots_.empty()) {
            sendSlots();
            std::map<uint32_t, Input> wave;
            wave.swap(input_);
            std::vector<int16_t> out;
            for (auto &[handle, input] : wave) {
                Object *block = board_.find(handle);
                if (block == nullptr || !ran_.insert(handle).second) continue;
                out.clear();
                if (!audioOf(*block)->arrive(board_, *block, clamped(input.sum), 0, out)) continue;
                input.through.push_back(handle);
                deliver(handle, out, input.through);
            }
        }
    }

    // What reached blocks after they ran in the last frame.
    void takeLate() {
        for (const auto &object : board_.objects()) {
            if (object->late.empty()) continue;
            add(input_[object->handle].sum, object->late, kUnityGain);
            object->late.clear();
        }
    }

    // Time slots that nothing played into send the idle code (or their
    // constant byte) to the pipes joined to them on the receiving spans.
    void idleSlots() {
        std::vector<std::pair<uint32_t, uint32_t>> joined;  // (span, slot) with a pipe
        for (const Board::Connection &c : board_.connections) {
            const Object *device = board_.find(c.handleB);
            if (device != nullptr && device->family == &kT1E1Family && kindOf(c.handleA) == kKindPipe)
                joined.emplace_back(c.handleB, c.portB);
        }
        if (joined.empty()) return;
        for (const auto &object : board_.objects()) {
            if (object->family != &kT1E1Family) continue;
            const std::vector<Object *> receivers = spansReceiving(board_, *object);
            for (const auto &pair : joined) {
                const uint32_t slot = pair.second;
                const bool heard = std::any_of(receivers.begin(), receivers.end(),
                                               [&](const Object *r) { return r->handle == pair.first; });
                if (heard && sent_.count({object->handle, slot}) == 0)
                    add(slots_[{object->handle, slot}], idleFrame(board_, *object, slot), kUnityGain);
            }
        }
    }

    // A block that takes samples from a connection whose source played
    // nothing hears silence; blocks after one that passes samples on hear
    // what it passes.
    void silence() {
        static const std::array<int16_t, kFrame> quiet{};
        for (const auto &object : board_.objects()) {
            const Object &block = *object;
            if (ran_.count(block.handle) != 0 || !takesSamples(block)) continue;
            bool fed = false, afterPasser = false;
            for (const Board::Connection &c : board_.connections) {
                if (c.handleB != block.handle) continue;
                const Object *source = board_.find(c.handleA);
                if (source == nullptr) continue;
                if (source->family != &kPipeFamily && takesSamples(*source)) afterPasser = true;
                fed = true;
            }
            if (fed && !afterPasser) add(input_[block.handle].sum, quiet, kUnityGain);
        }
    }

private:
    // Adds samples at a gain into a frame's sum (kept exact far beyond any
    // sample), or into what a block hears late (kept to 16 bits).
    template <typename Into>
    static void accumulate(Into &into, Samples samples, int32_t gain, int64_t limit) {
        for (size_t i = 0; i < kFrame && i < samples.size(); ++i) {
            const int64_t sum = into[i] + int64_t{samples[i]} * gain / kUnityGain;
            into[i] = static_cast<typename Into::value_type>(std::clamp<int64_t>(sum, -limit - 1, limit));
        }
    }
    static void add(Sum &into, Samples samples, int32_t gain) { accumulate(into, samples, gain, 1 << 24); }
    static void addLate(Object &block, Samples samples, int32_t gain) {
        block.late.resize(kFrame);
        accumulate(block.late, samples, gain, 32767);
    }

    // Each time slot played into in this wave sends its frame, once a frame,
    // through the codec to the pipes joined to it on the receiving spans.
    void sendSlots() {
        std::map<std::pair<uint32_t, uint32_t>, Sum> slots;
        slots.swap(slots_);
        const uint32_t law = codecLaw(board_);
        for (const auto &[key, sum] : slots) {
            Object *span = board_.find(key.first);
            const uint32_t slot = key.second;
            if (span == nullptr || !voiceSlot(board_, *span, slot) || !sent_.insert(key).second) continue;
            const std::vector<int16_t> line = companded(clamped(sum), law);
            for (uint32_t pipe : slotListeners(board_, *span, slot)) deliver(pipe, line);
        }
    }

    Board &board_;
    struct Input {
        Sum sum{};
        std::vector<uint32_t> through;  // the blocks its samples went through
    };
    std::map<uint32_t, Input> input_;
    std::map<std::pair<uint32_t, uint32_t>, Sum> slots_;
    std::set<uint32_t> ran_;
    std::set<std::pair<uint32_t, uint32_t>> sent_;
};

}  // namespace

void schedule(Board &, Object &block, Samples samples) {
    Outgoing &o = block.outgoing;
    // What played into nothing is gone: a new dial starts after it.
    const uint64_t stale = std::min<uint64_t>(o.aired - o.taken, o.samples.size());
    o.samples.erase(o.samples.begin(), o.samples.begin() + static_cast<std::ptrdiff_t>(stale));
    o.taken += stale;
    o.samples.insert(o.samples.end(), samples.begin(), samples.end());
}

void scheduleEvent(Board &board, Object &block, uint32_t code, uint32_t value5, uint32_t value6, uint32_t value7) {
    Outgoing &o = block.outgoing;
    o.marks.push_back({o.taken + o.samples.size(), code, value5, value6, value7});
    settle(board, block);
}

void runFrame(Board &board) {
    FrameRun run(board);
    run.takeLate();
    std::array<int16_t, kFrame> frame{};
    for (const auto &object : board.objects()) {
        Object &source = *object;
        const Audio *audio = audioOf(source);
        if (audio == nullptr || (source.outgoing.idle() && audio->render == nullptr)) continue;
        if (audio->gives != nullptr && !audio->gives(source) && source.outgoing.idle()) continue;
        const std::vector<uint32_t> starts = startsOf(board, source);
        if (!running(source) || !connectedAfter(board, starts)) {  // a disabled block plays silence
            if (!source.outgoing.idle()) letPass(board, source, kFrame);
            continue;
        }
        if (!output(board, source, frame)) continue;
        // A line does not hear itself through the pipes it plays into.
        const std::vector<uint32_t> through =
            isLine(source) ? std::vector<uint32_t>{source.handle} : std::vector<uint32_t>{};
        for (uint32_t start : starts) run.deliver(start, frame, through);
    }
    run.settle();
    run.idleSlots();
    run.settle();
    run.silence();
    run.settle();
}

namespace {

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
    if (output(call.board, block, samples)) play(call.board, block, samples);
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

std::vector<int16_t> scaled(Samples samples, int32_t gain) {
    std::vector<int16_t> out(samples.size());
    std::transform(samples.begin(), samples.end(), out.begin(), [gain](int16_t x) {
        return static_cast<int16_t>(std::clamp<int64_t>(int64_t{x} * gain / kUnityGain, -32768, 32767));
    });
    return out;
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
