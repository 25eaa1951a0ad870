// The virtual board's request dispatcher, fed request blocks of every
// function number, length and object kind through the module's own entry.
//
// Each input gets a board of its own (open, requests, close), so that a
// finding replays from its input alone. The board starts with its physical
// devices looked up through the dispatcher, one event queue for every
// object's events and one block of each type on DSP 0; then the input is a
// sequence of operations:
//   create   a block of a chosen type on a handle of the pool (mostly a DSP),
//            an event queue or a pipe; the handle the board answers joins
//            the pool with the type it was made as;
//   connect  the output of one object of the pool to the input of another,
//            so that what generators play reaches detectors;
//   play     samples through the blocks: a dial of digits the diallers
//            know, a sequence, a generator's audio read out, audio (input
//            bytes or a pair of tones) handed to a detector, or frames of
//            the sample clock stepped (the clock's thread stands still, so
//            that a finding replays);
//   load     a DSP program load as the library makes it: hold, a program
//            image by address (one of the library's built-in module images
//            with words changed by the input, or words of the input), start;
//   request  a request block, in one of three shapes: a handle of the pool
//            with a row of its family's table (or of the device core's);
//            a row of any table with any handle; any function number with
//            any lengths. A row's lengths are used as they are, or near
//            them; the fields after the header are handles of the pool,
//            buffer references, values the board checks for, or input bytes;
//            0 to 4 caller buffers of chosen lengths go with the request.
// Every block and buffer is a heap block of exactly its length, so that
// AddressSanitizer sees a read or write past it. After each request the
// harness checks what the module interface promises: the byte count reported
// is within the reply block, and a failed call leaves the reply untouched.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <vector>

#include "BoardStream.h"
#include "Families.h"
#include "dsp/Spm.h"
#include "RynHwDll.h"
#include "RynUserDriver.h"
#include "RynVirtualBoard.h"

namespace {

using ryn::fuzz::Stream;

constexpr uint32_t kMaxOperations = 48;
constexpr size_t kMaxHandles = 64;
constexpr uint32_t kMaxBlock = 4200;  // longest request or reply tried (a burst block and its head)

uint32_t controlCode(uint32_t function) { return 0x220000u | (function << 2); }

struct HeapBlock {
    void operator()(void *block) const { std::free(block); }
};
using Block = std::unique_ptr<uint8_t, HeapBlock>;

// A heap block of exactly `length` bytes (a distinct zero-length block for 0).
Block allocate(uint32_t length) { return Block(static_cast<uint8_t *>(std::malloc(length))); }

// The family whose table answers an object of `type` (the board's numbering).
const vb::Family &familyOf(int32_t type) {
    if (const vb::Family *block = vb::blockFamily(type)) return *block;
    switch (type) {
        case RYN_VB_DEVICE_BOARD:
            return vb::kBoardFamily;
        case RYN_VB_DEVICE_T1E1:
            return vb::kT1E1Family;
        case RYN_VB_DEVICE_DSP:
            return vb::kDspFamily;
        case RYN_VB_DEVICE_HDLC:
            return vb::kHdlcFamily;
        case RYN_VB_DEVICE_RAW_DATA:
            return vb::kRawDataFamily;
        case RYN_VB_DEVICE_BURST:
            return vb::kBurstFamily;
        case RYN_VB_DEVICE_POTS:
            return vb::kPotsFamily;
        case RYN_VB_DEVICE_SLIC:
            return vb::kSlicFamily;
        case RYN_VB_DEVICE_JTAG:
            return vb::kJtagFamily;
        default:
            return vb::kEventQueueFamily;  // queues and pipes: device-core requests only
    }
}

// Every row the board answers: the device core's, then every family's.
const std::vector<vb::Row> &allRows() {
    static const std::vector<vb::Row> rows = [] {
        std::vector<vb::Row> all;
        for (const vb::Table table : {vb::coreTable(), vb::coreEventTable()})
            all.insert(all.end(), table.begin(), table.end());
#define VB_FAMILY_ROWS(name) all.insert(all.end(), vb::k##name##Family.rows.begin(), vb::k##name##Family.rows.end());
        VB_FAMILIES(VB_FAMILY_ROWS)
#undef VB_FAMILY_ROWS
        return all;
    }();
    return rows;
}

constexpr std::array<int32_t, 9> kDeviceCounts = {1, 2, 2, 2, 1, 1, 1, 1, 1};  // types 1 to 9
constexpr int32_t kBlockTypes[] = {
    RYN_VB_BLOCK_CONST_VALUE_GENERATOR,
    RYN_VB_BLOCK_VALUE_SAMPLER,
    RYN_VB_BLOCK_EFFECTS_GENERATOR,
    RYN_VB_BLOCK_SINE_WAVE_GENERATOR,
    RYN_VB_BLOCK_DTMF_GENERATOR,
    RYN_VB_BLOCK_DTMF_DIALLER,
    RYN_VB_BLOCK_MF_DIALLER,
    RYN_VB_BLOCK_SEQUENCE_GENERATOR,
    RYN_VB_BLOCK_SILENCE_DETECTOR,
    RYN_VB_BLOCK_DTMF_DETECTOR,
    RYN_VB_BLOCK_FSK_DETECTOR,
    RYN_VB_BLOCK_DIAL_TONE_DETECTOR,
    RYN_VB_BLOCK_MF_DETECTOR,
    RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR,
    RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR,
    RYN_VB_BLOCK_CST_DTMF_DIALLER,
    RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR,
    RYN_VB_BLOCK_CST_DTMF_DETECTOR,
    RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR,
    RYN_VB_BLOCK_CST_VOICE_MIXER,
    RYN_VB_BLOCK_CST_ECHO_CANCELLER,
    RYN_VB_BLOCK_CST_CPT_DETECTOR,
    RYN_VB_BLOCK_CST_CPT_GENERATOR,
    RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR,
    RYN_VB_BLOCK_DATA_CONVERTER,
    RYN_VB_BLOCK_DSP_POTS,
    0,
    109,
    151,  // and types the board has not
};
// Counts, lengths, limits and the board's attribute identifiers.
constexpr uint32_t kValues[] = {
    0,    1,     2,      3,      4,      5,          8,           9,           10,         12,   13,   14,
    15,   16,    24,     30,     31,     32,         33,          34,          35,         36,   37,   40,
    41,   42,    43,     44,     64,     100,        101,         102,         103,        104,  105,  106,
    127,  128,   255,    256,    512,    1000,       1024,        1984,        2000,       4096, 4097, 8191,
    8192, 60000, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu};

// The attribute identifiers of RynVirtualBoard.h, and two it has not.
constexpr uint32_t kAttributes[] = {1,  2,  3,  4,  5,  13, 14,  30,  31,  32,  33,  34,  35,  36, 37, 40,
                                    41, 42, 43, 44, 45, 46, 100, 101, 102, 103, 104, 105, 106, 0,  47};

void fail(const char *what, uint32_t function, uint32_t a, uint32_t b) {
    std::fprintf(stderr, "board_dispatch: %s (function 0x%X: %u, %u)\n", what, function, a, b);
    std::abort();
}

class Session {
public:
    Session(const RynUserDriver &driver, Stream &in) : driver_(driver), in_(in) {
        device_ = driver_.open("RYNDRV");
        if (device_ == nullptr) fail("the board refused the connection", 0, 0, 0);
    }
    ~Session() { driver_.close(device_); }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // The physical devices, looked up as an application does, and an event
    // queue that takes the events of every object.
    void start() {
        for (int32_t type = 1; type <= static_cast<int32_t>(kDeviceCounts.size()); ++type)
            for (int32_t id = 0; id < kDeviceCounts[static_cast<size_t>(type - 1)]; ++id) {
                std::vector<uint8_t> body(24, 0);
                put32(body, 16, static_cast<uint32_t>(type));
                put32(body, 20, static_cast<uint32_t>(id));
                exchange(controlCode(0x870), body, 12, {}, type);
            }
        if (pool_.size() < 5) fail("the board answered too few device look-ups", 0x870, 0, 0);
        std::vector<uint8_t> body(28, 0);
        put32(body, 20, event());
        exchange(controlCode(0x873), body, 16, {}, RYN_VB_DEVICE_EVENT_QUEUE);
        body.assign(36, 0);
        put32(body, 16, pool_[3].handle);  // DSP 0
        for (const int32_t type : kBlockTypes) {
            put32(body, 20, static_cast<uint32_t>(type));
            if (type != 0) exchange(controlCode(0x872), body, 16, {}, type);
        }
    }

    void run() {
        for (uint32_t op = 0; op < kMaxOperations && !in_.empty(); ++op) {
            const uint8_t kind = in_.u8();
            if (kind < 24) {
                create(kind % 4);
            } else if (kind < 28) {
                load();
            } else if (kind < 40) {
                play();
            } else if (kind < 52) {  // connect: handle and port of each side
                std::vector<uint8_t> body(32, 0);
                put32(body, 16, handle());
                put32(body, 20, in_.chance(14) ? 0 : in_.u8());
                put32(body, 24, handle());
                put32(body, 28, in_.chance(14) ? 0 : in_.u8());
                exchange(controlCode(0x813), body, 12, {}, 0);
            } else {
                request();
            }
        }
    }

private:
    struct Known {
        uint32_t handle;
        int32_t type;
    };

    static void put32(std::vector<uint8_t> &body, uint32_t offset, uint32_t value) {
        if (offset + 4 <= body.size()) std::memcpy(body.data() + offset, &value, 4);
    }
    const Known &known() { return pool_[in_.pick(pool_.size())]; }  // the pool holds the devices from the start
    uint32_t handle() { return pool_.empty() ? 0 : known().handle; }
    // A field of a request: 0 (the default of many settings), a handle of
    // the pool, a buffer reference (1 to 4, and 0 and 5 that name none), a
    // value of kValues, a byte or any word.
    uint32_t value() {
        const uint8_t kind = in_.u8();
        if (kind < 48) return 0;
        if (kind < 80) return handle();
        if (kind < 104) return in_.u8() % 6;
        if (kind < 184) return kValues[in_.pick(std::size(kValues))];
        if (kind < 224) return in_.u8();
        return in_.u32();
    }

    // A block (cases 0 and 1) on a handle of the pool, an event queue of a
    // source from the pool with the harness's event, or a pipe.
    void create(unsigned what) {
        std::vector<uint8_t> body;
        uint32_t function = 0;
        int32_t type = 0;
        if (what <= 1) {
            function = 0x872;
            type = kBlockTypes[in_.pick(std::size(kBlockTypes))];
            body.assign(36, 0);
            const bool onDsp = in_.chance(12) && pool_.size() > 4;
            put32(body, 16, onDsp ? pool_[3 + in_.u8() % 2].handle : handle());  // DSP 0 or 1 (the 4th and 5th device)
            put32(body, 20, static_cast<uint32_t>(type));
        } else if (what == 2) {
            function = 0x873;
            type = RYN_VB_DEVICE_EVENT_QUEUE;
            body.assign(28, 0);
            put32(body, 16, in_.chance(4) ? 0 : handle());
            put32(body, 20, in_.chance(12) ? event() : in_.u32());
        } else {
            function = 0x874;
            type = RYN_VB_DEVICE_PIPE;
            body.assign(24, 0);
        }
        exchange(controlCode(function), body, 16, {}, type);
    }

    // A handle of the pool of `type`, or any handle of the pool.
    uint32_t ofType(int32_t type) {
        for (const Known &k : pool_)
            if (k.type == type && in_.chance(15)) return k.handle;
        return handle();
    }

    void play() {
        static constexpr char kDigits[] = "0123456789*#ABCDKS";
        static constexpr int32_t kGenerators[] = {100, 102, 103, 104, 105, 106, 107, 120, 123, 127};
        static constexpr int32_t kReceivers[] = {101, 110, 111, 112, 113, 114, 115, 116, 121, 122, 124, 125, 126, 128};
        static constexpr uint32_t kHertz[] = {350,  425,  440,  480,  620,  697,  700,  770,  852,  900, 941,
                                              1100, 1209, 1300, 1336, 1477, 1500, 1633, 1700, 2100, 2600};
        const uint8_t what = in_.u8() % 6;
        std::vector<uint8_t> body;
        uint32_t function = 0, replyLength = 12;
        if (what <= 1) {  // a dial: tone DTMF or MF dialler, telephony DTMF dialler
            static constexpr uint32_t kDials[][2] = {{105, 0x9A0}, {106, 0x9B0}, {120, 0x99C}};
            const auto &dial = kDials[in_.pick(3)];
            function = dial[1];
            body.assign(160, 0);
            put32(body, 16, ofType(static_cast<int32_t>(dial[0])));
            const uint32_t count = in_.u8() % 24;
            for (uint32_t i = 0; i < count; ++i)
                body[20 + i] = static_cast<uint8_t>(kDigits[in_.pick(sizeof kDigits - 1)]);
            put32(body, 148, count);
        } else if (what == 2) {  // a sequence: value in the low half, hold in the high half
            function = 0x9A2;
            body.assign(544, 0);
            put32(body, 16, ofType(RYN_VB_BLOCK_SEQUENCE_GENERATOR));
            const uint32_t count = in_.u8() % 16;
            for (uint32_t i = 0; i < count; ++i) put32(body, 20 + 4 * i, uint32_t{in_.u8()} << 20 | in_.u16());
            put32(body, 532, count);
            put32(body, 536, in_.u8() % 4);
        } else if (what == 3) {  // a generator's audio, read as attribute 30
            function = 0x818;
            body.assign(28, 0);
            put32(body, 16, ofType(kGenerators[in_.pick(std::size(kGenerators))]));
            put32(body, 20, RYN_VB_ATTR_AUDIO_OUT);
            const uint32_t capacity = 2 * (in_.u16() % 2048);
            put32(body, 24, capacity);
            replyLength = 17 + capacity;
        } else if (what == 5) {  // frames of the sample clock
            function = 0x819;
            body.assign(33, 0);
            put32(body, 16, ofType(RYN_VB_DEVICE_BOARD));
            put32(body, 20, RYN_VB_ATTR_SAMPLE_CLOCK_STEP);
            put32(body, 24, 4);
            put32(body, 28, in_.u8() % 64);
        } else {  // audio for a detector, set as attribute 31
            function = 0x819;
            std::vector<int16_t> samples(in_.u16() % 2048);
            if (in_.chance(8)) {
                in_.copy(samples.data(), 2 * samples.size());
            } else {
                const double low = kHertz[in_.pick(std::size(kHertz))], high = kHertz[in_.pick(std::size(kHertz))];
                const double peak = 1000.0 + 56.0 * in_.u8(),
                             step = 2 * std::numbers::pi / 8000;  // two tones fit 16 bits
                for (size_t i = 0; i < samples.size(); ++i)
                    samples[i] = static_cast<int16_t>(
                        peak * (std::sin(step * low * double(i)) + std::sin(step * high * double(i))));
            }
            const auto bytes = static_cast<uint32_t>(2 * samples.size());
            body.assign(29 + bytes, 0);
            put32(body, 16, ofType(kReceivers[in_.pick(std::size(kReceivers))]));
            put32(body, 20, RYN_VB_ATTR_AUDIO_IN);
            put32(body, 24, bytes);
            if (bytes != 0) std::memcpy(body.data() + 28, samples.data(), bytes);
        }
        exchange(controlCode(function), body, replyLength, {}, 0);
    }

    // The words of the first `count` blocks (command stream) or records
    // (record image) of a module image, and the address the first one loads;
    // a whole image takes the board long to store under the fuzzer's
    // instrumentation, a few of its blocks load the same way.
    static size_t prefixOf(const ryn::spm::Module &module, unsigned count, uint32_t &first) {
        const auto image = module.image;
        const bool stream = module.form == ryn::spm::Form::CommandStream;
        size_t at = stream ? 0 : 5;
        for (unsigned n = 0; n < count && at + (stream ? 14 : 4) <= image.size(); ++n) {
            const uint32_t address =
                stream ? image[at + (image[at + 3] == 0 ? 5 : 9)] : uint32_t{image[at]} << 16 | image[at + 1];
            const uint32_t units = stream ? image[at + 7] + 1u : uint32_t{image[at + 2]} << 16 | image[at + 3];
            if (n == 0) first = address;
            at += stream ? 14 + 2 * size_t{units}
                         : 4 + (module.form == ryn::spm::Form::Records2 ? (size_t{units} + 1) / 2 : size_t{units});
        }
        return std::min(at, image.size());
    }

    // Hold, load image, start on DSP 0 or 1 (or any handle of the pool).
    void load() {
        const uint32_t dsp = in_.chance(14) && pool_.size() > 4 ? pool_[3 + in_.u8() % 2].handle : handle();
        std::vector<uint8_t> body(20, 0);
        put32(body, 16, dsp);
        exchange(controlCode(0x99A), body, 12, {}, 0);

        const auto modules = ryn::spm::modules();
        const ryn::spm::Module &module = modules[in_.pick(modules.size())];
        std::vector<uint16_t> words;
        uint32_t entry = module.entry;
        if (in_.chance(12)) {
            const size_t length = in_.chance(1) ? module.image.size() : prefixOf(module, 1 + in_.u8() % 4, entry);
            words.assign(module.image.begin(), module.image.begin() + static_cast<std::ptrdiff_t>(length));
            for (unsigned changes = in_.u8() % 4; changes != 0 && !words.empty(); --changes)
                words[in_.u16() % words.size()] = in_.u16();
            if (in_.chance(2)) words.resize(in_.u16() % (words.size() + 1));
        } else {
            words.resize(in_.u8());
            in_.copy(words.data(), 2 * words.size());
        }
        const auto bytes = static_cast<uint32_t>(2 * words.size());
        Block image = allocate(bytes);
        if (bytes != 0) std::memcpy(image.get(), words.data(), bytes);
        body.assign(26, 0);
        put32(body, 16, dsp);
        put32(body, 20, 1);
        const auto length = static_cast<uint16_t>(words.size());
        std::memcpy(body.data() + 24, &length, 2);
        exchange(controlCode(0x9A0), body, 12, {{image.get(), bytes}}, 0);

        body.assign(28, 0);
        put32(body, 16, dsp);
        put32(body, 20, in_.chance(14) ? entry : in_.u32());
        put32(body, 24, in_.chance(14) ? 0 : in_.u8() % 3);
        exchange(controlCode(0x99B), body, 12, {}, 0);
    }

    // One request as described at the top of the file.
    void request() {
        vb::Row row{};
        uint32_t target = handle();
        const uint8_t shape = in_.u8();
        if (shape < 160) {  // a handle and a row of its family
            const Known &object = known();
            target = object.handle;
            vb::Table table = familyOf(object.type).rows;
            if (table.empty() || in_.chance(4)) table = in_.chance(8) ? vb::coreTable() : vb::coreEventTable();
            row = table[in_.pick(table.size())];
        } else if (shape < 232) {  // a row of any table
            row = allRows()[in_.pick16(allRows().size())];
        } else {  // anything
            row.function = in_.u16() & 0x3FFFu;
            row.requestLength = in_.u16() % kMaxBlock;
            row.replyLength = in_.u16() % kMaxBlock;
        }
        uint32_t requestLength = row.requestLength, replyLength = row.replyLength;
        if (row.minimumLength) requestLength += in_.u16() % 1100;  // data after the fields
        if ((shape & 31) == 31) requestLength = std::max(0, int(requestLength) + int8_t(in_.u8()));
        if ((shape & 7) == 7) replyLength += in_.u16() % 2100;  // replies sized by a field
        if ((shape & 15) == 6) replyLength = in_.u8() % 40;     // too short for the row
        requestLength = std::min(requestLength, kMaxBlock);
        replyLength = std::min(replyLength, kMaxBlock);

        // The fields after the header one word at a time (the handle first),
        // the rest of a long block as raw bytes, then words at any even offset.
        std::vector<uint8_t> body(requestLength, 0);
        const uint32_t typed = std::min<uint32_t>(requestLength, 64);
        put32(body, 16, in_.chance(15) ? target : in_.u32());
        for (uint32_t at = 20; at + 4 <= typed; at += 4) put32(body, at, value());
        if (requestLength > typed)
            in_.copy(body.data() + typed, std::min<size_t>(in_.u16() % 1200, requestLength - typed));
        // Lengths that must agree: the data length of a request whose data
        // follows its fields (attribute sets, burst blocks), at 24; the reply
        // of a request that names its capacity at 24 (attribute values, burst
        // reads), which holds that many bytes more than the row's.
        if (row.minimumLength && in_.chance(12)) put32(body, 24, requestLength - row.requestLength);
        if (row.function >= 0x817 && row.function <= 0x819 && in_.chance(12))  // attribute type, value, set
            put32(body, 20, kAttributes[in_.pick(std::size(kAttributes))]);
        if ((shape & 7) == 5 && requestLength >= 28) {
            uint32_t capacity = 0;
            std::memcpy(&capacity, body.data() + 24, 4);
            replyLength =
                std::min(kMaxBlock, row.replyLength + (row.function == 0x818 ? 1 : 0) + std::min(capacity, kMaxBlock));
        }
        for (unsigned splices = in_.u8() % 4; splices != 0; --splices) {
            const uint32_t offset = requestLength < 4 ? 0 : in_.u16() % (requestLength - 3);
            put32(body, offset & ~1u, value());
        }

        std::vector<RynDriverBuffer> buffers;
        std::vector<Block> storage;
        for (unsigned count = in_.u8() % 5; count != 0; --count) {
            const uint32_t length = in_.chance(2) ? kValues[in_.pick(12)] : in_.u16() % 4200;
            Block buffer = allocate(length);
            const uint8_t fill = in_.u8();  // JTAG vectors: '0' or '1', terminated or not
            if (length != 0) std::memset(buffer.get(), fill < 128 ? '0' + (fill & 1) : fill, length);
            if (length != 0 && (fill & 0x40)) buffer.get()[length - 1] = '\0';
            if (length != 0) in_.copy(buffer.get(), std::min<size_t>(in_.u8(), length));
            buffers.push_back({in_.chance(1) ? nullptr : buffer.get(), length});
            storage.push_back(std::move(buffer));
        }
        const uint32_t code = in_.chance(1) ? in_.u32() : controlCode(row.function);
        int32_t madeType = 0;  // what a create request makes, for the pool
        if (row.function == 0x872 && requestLength >= 24) std::memcpy(&madeType, body.data() + 20, 4);
        if (row.function == 0x873) madeType = RYN_VB_DEVICE_EVENT_QUEUE;
        if (row.function == 0x874) madeType = RYN_VB_DEVICE_PIPE;
        exchange(code, body, replyLength, buffers, madeType);
    }

    // Sends one request through the module's control entry, checks the
    // module's promises and keeps the handles that create calls answer.
    void exchange(uint32_t code, const std::vector<uint8_t> &body, uint32_t replyLength,
                  const std::vector<RynDriverBuffer> &buffers, int32_t madeType) {
        const auto inputLength = static_cast<uint32_t>(body.size());
        Block input = allocate(inputLength);
        if (inputLength != 0) std::memcpy(input.get(), body.data(), inputLength);
        Block output = allocate(replyLength);
        if (replyLength != 0) std::memset(output.get(), 0, replyLength);
        const RynDriverRequest request{code,
                                       input.get(),
                                       inputLength,
                                       output.get(),
                                       replyLength,
                                       buffers.empty() ? nullptr : buffers.data(),
                                       static_cast<uint32_t>(buffers.size())};
        uint32_t returned = 0xFFFFFFFFu;
        const uint32_t function = (code >> 2) & 0x3FFFu;
        const int ok = driver_.control(device_, &request, &returned);
        if (ok != 0 && returned > replyLength)
            fail("reply byte count beyond the reply block", function, returned, replyLength);
        if (ok == 0) {
            for (uint32_t i = 0; i < replyLength; ++i)
                if (output.get()[i] != 0) fail("a failed call wrote into the reply", function, i, replyLength);
            return;
        }
        // Handles answered at 8 by the create and look-up calls, on success
        // (the look-up's result at 4, the others' in their last word).
        const bool creates = function == 0x870 || function == 0x872 || function == 0x873 || function == 0x874;
        if (creates && code == controlCode(function) && replyLength >= 12 && pool_.size() < kMaxHandles) {
            uint32_t result = 0, made = 0;
            std::memcpy(&result, output.get() + (function == 0x870 ? 4 : replyLength - 4), 4);
            std::memcpy(&made, output.get() + 8, 4);
            if (result == 0 && made != 0) pool_.push_back({made, madeType});
        }
    }

    // The event object that the board's queues signal, one for the process.
    static uint32_t event() {
        static const OsaHandle made = [] {
            OsaHandle handle = 0;
            RynDrvCreateEvent(&handle);
            return handle;
        }();
        return made;
    }

    const RynUserDriver &driver_;
    Stream &in_;
    void *device_ = nullptr;
    std::vector<Known> pool_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    setenv(RYN_VB_SAMPLE_CLOCK_ENV, "0", 1);  // boards start with their clock stopped
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Stream in(data, size);
    Session session(*RynUserDriverEntry(), in);
    session.start();
    session.run();
    return 0;
}
