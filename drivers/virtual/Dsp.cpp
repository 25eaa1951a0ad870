// The board's DSPs: program loading (hold, block writes, command-stream and
// record images, start, cancel), the running program and what the host reaches
// of it (messages, data reads, the host port, restart).
//
// DSP 0 is a word-addressed DSP of DSP type 1: its boot loader takes
// command-stream images and word block writes, in program memory (page 0) and
// data memory (page 1). DSP 1 is a byte-addressed DSP of DSP type 5: it takes
// record images of byte records and byte block writes, in one memory.
//
// A load runs hold, transfer, start. Everything a transfer carries is checked
// before it lands in the DSP's memory; a malformed block, stream or record
// abandons the load, so no half program is ever started. The DSP runs its
// program while it is not disabled (RynDrvDisable halts it, RynDrvEnable lets
// it go on); hold, cancel load and a reset drop the program.
#include <algorithm>
#include <array>
#include <bitset>
#include <map>
#include <optional>

#include "Families.h"

namespace vb {
namespace {

// ---- The board's DSPs and modules ----------------------------------------

// DSP type of each DSP, by device number: DSP 0 word-addressed, DSP 1
// byte-addressed.
constexpr uint32_t kDspTypes[] = {RYN_VB_DSP_TYPE_WORD, RYN_VB_DSP_TYPE_BYTE};
constexpr uint32_t kByteAddressedType = RYN_VB_DSP_TYPE_BYTE;

uint32_t dspType(const Object &dsp) { return dsp.id < std::size(kDspTypes) ? kDspTypes[dsp.id] : kDspTypes[0]; }
bool byteAddressed(const Object &dsp) { return dspType(dsp) == kByteAddressedType; }

// The built-in modules this board knows: a program started at a module's
// entry address on a DSP of the module's type is that module.
struct Module {
    uint32_t module, dspType, entry;
};
constexpr Module kModules[] = {
    {0, 1, 0x7E16},   {0, 2, 0x35F9},  {0, 3, 0x68CC},  {0, 4, 0x2A8E8},  {1, 1, 0x7C51},  {1, 2, 0x3F15},
    {1, 3, 0x6A39},   {1, 4, 0x2B257}, {1, 5, 0x1724D}, {2, 1, 0x7C8D},   {3, 1, 0x7AE2},  {4, 1, 0x7AD1},
    {4, 2, 0x2DAA},   {4, 3, 0x4D7D},  {4, 4, 0x5D8A},  {4, 5, 0x17C5D},  {5, 4, 0x29ECF}, {5, 5, 0x188A5},
    {6, 1, 0x78DE},   {10, 1, 0x501A}, {10, 3, 0x4EA7}, {10, 4, 0x28ED2}, {11, 3, 0x6747}, {11, 4, 0x2B271},
    {11, 5, 0x1751F}, {12, 2, 0x3A37}, {13, 2, 0x3BB6},
};
constexpr uint32_t kNoModule = RYN_VB_DSP_NO_MODULE;

uint32_t moduleAt(uint32_t type, uint32_t entry) {
    for (const Module &m : kModules)
        if (m.dspType == type && m.entry == entry) return m.module;
    return kNoModule;
}

// ---- Memory ----------------------------------------------------------------

// Addresses count units (words, or bytes on the byte-addressed DSP) and are
// 24 bits wide on both DSPs.
constexpr uint64_t kAddressSpace = 1u << 24;
constexpr uint32_t kProgramPage = 0;
constexpr uint32_t kDataPage = 1;

// The units that were written, kept in chunks of 256 so that a program at a
// high address costs no more than one at a low one.
class Memory {
public:
    void store(uint32_t page, uint32_t address, uint16_t unit) {
        Chunk &chunk = chunks_[key(page, address)];
        chunk.units[address % kChunk] = unit;
        chunk.loaded.set(address % kChunk);
    }
    bool loaded(uint32_t page, uint32_t address) const {
        const auto it = chunks_.find(key(page, address));
        return it != chunks_.end() && it->second.loaded.test(address % kChunk);
    }
    // Units never written read as 0.
    uint16_t read(uint32_t page, uint32_t address) const {
        const auto it = chunks_.find(key(page, address));
        return it == chunks_.end() ? 0 : it->second.units[address % kChunk];
    }
    void clear() { chunks_.clear(); }

private:
    static constexpr uint32_t kChunk = 256;
    struct Chunk {
        std::array<uint16_t, kChunk> units{};
        std::bitset<kChunk> loaded;
    };
    static uint64_t key(uint32_t page, uint32_t address) { return uint64_t{page} << 32 | address / kChunk; }
    std::map<uint64_t, Chunk> chunks_;
};

// The memory page a request names: on the word-addressed DSP 0 (program) or
// 1 and 2 (data; the loader's page 2 shares the data page) and 10 (records of
// an image, which carry no page: program memory); on the byte-addressed DSP
// only 0.
std::optional<uint32_t> memoryPage(const Object &dsp, uint32_t page) {
    if (page == 0) return kProgramPage;
    if (byteAddressed(dsp)) return std::nullopt;
    if (page == 1 || page == 2) return kDataPage;
    if (page == 10) return kProgramPage;
    return std::nullopt;
}

bool inside(uint32_t address, uint64_t count) { return address + count <= kAddressSpace; }

// ---- Program state ----------------------------------------------------------

enum class Program : uint32_t { None = 0, Loading = 1, Started = 2 };

// Program state as the attribute reports it: a started program on a
// disabled DSP is halted.
enum ReportedState : uint32_t {
    kNoProgram = RYN_VB_DSP_PROGRAM_NONE,
    kLoading = RYN_VB_DSP_PROGRAM_LOADING,
    kRunning = RYN_VB_DSP_PROGRAM_RUNNING,
    kHalted = RYN_VB_DSP_PROGRAM_HALTED,
};

struct DspState : ObjectState {
    Program program = Program::None;
    Memory memory;
    uint32_t unitsLoaded = 0;  // units the current load brought
    uint32_t entry = 0;
    uint32_t module = kNoModule;
    uint32_t moduleFlag = 0;
};

DspState &stateOf(Object &dsp) { return dsp.as<DspState>(); }

bool running(const Object &dsp, const DspState &state) {
    return state.program == Program::Started && dsp.state != kStateDisabled;
}

// Drops the program and whatever was loaded; a running program ends with an event.
void dropProgram(Board &board, Object &dsp, DspState &state) {
    if (running(dsp, state)) board.post(dsp, kEventProgramStopped, state.module, state.entry);
    state = DspState{};
}

// A refused transfer or start abandons the load and passes its code on.
uint32_t abandon(Call &call, uint32_t code) {
    stateOf(*call.object) = DspState{};
    return code;
}

void load(DspState &state, uint32_t page, uint32_t address, uint16_t unit) {
    state.memory.store(page, address, unit);
    ++state.unitsLoaded;
}

// ---- Request layouts ---------------------------------------------------------

constexpr uint32_t kMaxWordsPerBlock = 128;
constexpr uint32_t kMaxBytesPerBlock = 256;
constexpr uint32_t kFileStaging = 0x1004;  // word blocks of a program file
constexpr uint32_t kImageStaging = 0;      // word records of an image
constexpr uint32_t kImagePage = 10;

// Block write: 20 staging value, 24 count, 28 address, 32 page, 36 data.
constexpr uint32_t kBlockData = 36;
// Message: 20 message length (command word and input), 24 output size, 28 and
// 32 two values the commands do not use, 36 command, 38 input. Reply: 8 result,
// 12 answer length, 14 answer.
constexpr uint32_t kMessageBytes = 1984;
constexpr uint32_t kMessageInput = 38;
constexpr uint32_t kAnswerLength = 12;
constexpr uint32_t kAnswer = 14;
// The host-port window: device registers of the DSP, one 16-bit register a unit.
constexpr uint32_t kHostPortWindow = 0x1000;
constexpr uint32_t kHostPortUnits = 64;

// ---- Images ------------------------------------------------------------------

// An image in the caller's memory, read as 16-bit little-endian words.
class Words {
public:
    explicit Words(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    size_t size() const { return bytes_.size() / 2; }
    uint16_t operator[](size_t i) const { return static_cast<uint16_t>(bytes_[2 * i] | bytes_[2 * i + 1] << 8); }
    bool pair(size_t at, uint16_t tag, uint16_t value) const { return (*this)[at] == tag && (*this)[at + 1] == value; }

private:
    std::span<const uint8_t> bytes_;
};

// One block of a command stream at `at`: (0x0004, 0x0FFF), four set-up pairs
// (page 0: 0, address, count - 1, 0x1004; page 1: 1, 0x1004, count - 1,
// address), one (0x0002, word) per data word, (0x0000, 0x0808), (0xFFFF,
// 0xFFFF). Loads it and gives the position after it, or nothing when it is
// malformed.
constexpr uint16_t kDataTag = 0x0002;
constexpr uint32_t kBlockFrameWords = 14;

std::optional<size_t> streamBlock(DspState &state, const Words &image, size_t at) {
    if (image.size() - at < kBlockFrameWords || !image.pair(at, 0x0004, 0x0FFF)) return std::nullopt;
    for (size_t pair = at + 2; pair < at + 10; pair += 2)
        if (image[pair] != kDataTag) return std::nullopt;
    const uint16_t selector = image[at + 3];
    const uint16_t fixed = selector == 0 ? image[at + 9] : image[at + 5];
    const uint32_t address = selector == 0 ? image[at + 5] : image[at + 9];
    const uint32_t count = uint32_t{image[at + 7]} + 1;
    if (selector > 1 || fixed != kFileStaging || count > kMaxWordsPerBlock || address + count > 0x10000)
        return std::nullopt;
    const size_t data = at + 10, close = data + 2 * count;
    if (image.size() - at < kBlockFrameWords + 2 * count) return std::nullopt;
    if (!image.pair(close, 0x0000, 0x0808) || !image.pair(close + 2, 0xFFFF, 0xFFFF)) return std::nullopt;
    for (uint32_t i = 0; i < count; ++i)
        if (image[data + 2 * i] != kDataTag) return std::nullopt;
    for (uint32_t i = 0; i < count; ++i) load(state, selector, address + i, image[data + 2 * i + 1]);
    return close + 4;
}

uint32_t loadCommandStream(DspState &state, const Words &image) {
    if (image.size() == 0) return VB_FAILURE(kMalformed);
    for (size_t at = 0; at < image.size();) {
        const std::optional<size_t> next = streamBlock(state, image, at);
        if (!next) return VB_FAILURE(kMalformed);
        at = *next;
    }
    return 0;
}

// A record image: 0x54AB, 0x6D2E, 0x1010, 0x1C1C, the record version (1 word
// records, 2 byte records), then records of address and count (each high half
// first) and the data, ending exactly at the image's length.
constexpr uint16_t kRecordMagic[] = {0x54AB, 0x6D2E, 0x1010, 0x1C1C};
constexpr uint32_t kRecordHeaderWords = 5;
constexpr uint32_t kRecordFieldWords = 4;

uint32_t loadRecords(DspState &state, const Words &image, uint16_t version) {
    if (image.size() < kRecordHeaderWords || image[4] != version) return VB_FAILURE(kMalformed);
    for (size_t i = 0; i < std::size(kRecordMagic); ++i)
        if (image[i] != kRecordMagic[i]) return VB_FAILURE(kMalformed);
    const bool bytes = version == 2;
    for (size_t at = kRecordHeaderWords; at != image.size();) {
        if (image.size() - at < kRecordFieldWords) return VB_FAILURE(kMalformed);
        const uint32_t address = uint32_t{image[at]} << 16 | image[at + 1];
        const uint32_t count = uint32_t{image[at + 2]} << 16 | image[at + 3];
        const size_t words = bytes ? (size_t{count} + 1) / 2 : count;
        at += kRecordFieldWords;
        if (count == 0 || count > (bytes ? kMaxBytesPerBlock : kMaxWordsPerBlock) || words > image.size() - at ||
            !inside(address, count))
            return VB_FAILURE(kMalformed);
        for (uint32_t i = 0; i < count; ++i) {
            const uint16_t word = image[at + (bytes ? i / 2 : i)];
            load(state, kProgramPage, address + i, bytes ? static_cast<uint8_t>(i % 2 ? word >> 8 : word) : word);
        }
        at += words;
    }
    return 0;
}

// ---- Loading -------------------------------------------------------------------

// Hold: a new load begins; the program that ran is dropped.
uint32_t hold(Call &call) {
    DspState &state = stateOf(*call.object);
    dropProgram(call.board, *call.object, state);
    state.program = Program::Loading;
    return 0;
}

uint32_t cancelLoad(Call &call) {
    dropProgram(call.board, *call.object, stateOf(*call.object));
    return 0;
}

// Block write, word form on DSP 0: a program file's block (staging 0x1004,
// its section's page) or an image's word record (staging 0, page 10). Byte
// form on DSP 1, whose fields 20 and 32 stay 0.
uint32_t blockWrite(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    if (state.program != Program::Loading) return VB_FAILURE(kFailed);
    const uint32_t staging = call.in.u32(20), count = call.in.u32(24), address = call.in.u32(28);
    const uint32_t page = call.in.u32(32);
    const bool bytes = byteAddressed(dsp);
    const bool framed =
        bytes ? staging == 0 && page == 0
              : (staging == kFileStaging && page != kImagePage) || (staging == kImageStaging && page == kImagePage);
    const std::optional<uint32_t> memory = memoryPage(dsp, page);
    if (!framed || !memory || count == 0 || count > (bytes ? kMaxBytesPerBlock : kMaxWordsPerBlock) ||
        !inside(address, count))
        return abandon(call, VB_FAILURE(kMalformed));
    const std::span<const uint8_t> data = call.in.bytes(kBlockData, bytes ? count : 2 * count);
    if (data.empty()) return abandon(call, VB_FAILURE(kMalformed));
    for (uint32_t i = 0; i < count; ++i)
        load(state, *memory, address + i, bytes ? data[i] : static_cast<uint16_t>(data[2 * i] | data[2 * i + 1] << 8));
    return 0;
}

// Load command-stream image: 20 the image's address, 24 its length in words
// (16-bit). DSP 0 takes a command stream, DSP 1 a record image of byte records.
uint32_t loadImage(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    if (state.program != Program::Loading) return VB_FAILURE(kFailed);
    const RynDriverBuffer *buffer = call.in.buffer(20);
    const uint32_t bytes = 2u * call.in.u16(24);
    if (buffer == nullptr || buffer->address == nullptr || bytes > buffer->length)
        return abandon(call, VB_FAILURE(kOutOfRange));
    const Words image({static_cast<const uint8_t *>(buffer->address), bytes});
    const uint32_t result = byteAddressed(dsp) ? loadRecords(state, image, 2) : loadCommandStream(state, image);
    return failed(result) ? abandon(call, result) : 0;
}

// Start program: 20 entry address, 24 module flag. The entry must lie in
// loaded program memory.
uint32_t startProgram(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    const uint32_t entry = call.in.u32(20), flag = call.in.u32(24);
    if (state.program != Program::Loading) return VB_FAILURE(kFailed);
    if (flag > 1) return abandon(call, VB_FAILURE(kOutOfRange));
    if (!state.memory.loaded(kProgramPage, entry)) return abandon(call, VB_FAILURE(kMalformed));
    state.program = Program::Started;
    state.entry = entry;
    state.module = moduleAt(dspType(dsp), entry);
    state.moduleFlag = flag;
    dsp.state = kStateEnabled;
    call.board.post(dsp, kEventProgramStarted, state.module, entry, flag);
    return 0;
}

uint32_t restartProgram(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    if (state.program != Program::Started) return VB_FAILURE(kFailed);
    dsp.state = kStateEnabled;
    call.board.post(dsp, kEventProgramStarted, state.module, state.entry, state.moduleFlag);
    return 0;
}

uint32_t queryDspType(Call &call) {
    call.out.u32(8, dspType(*call.object));
    return 0;
}

// ---- The running program -------------------------------------------------------

// Messages to the running program. The echo command answers its input; the
// program command the running module (kNoModule for none of the built-in
// ones) and the entry address. The answer length is the full answer; no more of it than the
// caller's output size is written.
uint32_t message(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    if (!running(dsp, state)) return VB_FAILURE(kFailed);
    const uint32_t length = call.in.u32(20);
    if (length < 2 || length > kMessageBytes + 2) return VB_FAILURE(kOutOfRange);
    std::vector<uint8_t> answer;
    switch (call.in.u16(36)) {
        case RYN_VB_DSP_MESSAGE_ECHO: {
            const std::span<const uint8_t> input = call.in.bytes(kMessageInput, length - 2);
            answer.assign(input.begin(), input.end());
            break;
        }
        case RYN_VB_DSP_MESSAGE_PROGRAM:
            answer = wordValue(state.module);
            for (uint8_t byte : wordValue(state.entry)) answer.push_back(byte);
            break;
        default:
            return VB_FAILURE(kNotProvided);
    }
    call.out.u16(kAnswerLength, static_cast<uint16_t>(answer.size()));
    const size_t written = std::min<size_t>({answer.size(), call.in.u32(24), kMessageBytes});
    call.out.write(kAnswer, answer.data(), static_cast<uint32_t>(written));
    return 0;
}

// A range of memory the host asks for: page, address and count checked.
std::optional<uint32_t> hostRange(Call &call, uint32_t page, uint32_t address, uint64_t count) {
    const std::optional<uint32_t> memory = memoryPage(*call.object, page);
    if (!memory || !inside(address, count)) return std::nullopt;
    return memory;
}

// Read data: 20 page, 24 count (1 or 2), 28 address; the units at address
// and address + 1 come back at 8 and 12 (0 past the count).
uint32_t readData(Call &call) {
    const uint32_t page = call.in.u32(20), count = call.in.u32(24), address = call.in.u32(28);
    const std::optional<uint32_t> memory = hostRange(call, page, address, count);
    if (!memory || count == 0 || count > 2) return VB_FAILURE(kOutOfRange);
    const Memory &dspMemory = stateOf(*call.object).memory;
    for (uint32_t i = 0; i < count; ++i) call.out.u32(8 + 4 * i, dspMemory.read(*memory, address + i));
    return 0;
}

// Host-port read: 20 page, 24 address, 28 count (1 to 64): the units go to the
// host-port window, the DSP's registers 0x1000 + 2 × i.
uint32_t readHostPort(Call &call) {
    const uint32_t page = call.in.u32(20), address = call.in.u32(24), count = call.in.u32(28);
    const std::optional<uint32_t> memory = hostRange(call, page, address, count);
    if (!memory || count == 0 || count > kHostPortUnits) return VB_FAILURE(kOutOfRange);
    const Memory &dspMemory = stateOf(*call.object).memory;
    for (uint32_t i = 0; i < count; ++i)
        call.board.setRegister(call.object->handle, kHostPortWindow + 2 * i, dspMemory.read(*memory, address + i));
    return 0;
}

// Host-port write: 20 page, 24 address, 28 value (a word, or a byte on DSP 1).
uint32_t writeHostPort(Call &call) {
    const uint32_t page = call.in.u32(20), address = call.in.u32(24), value = call.in.u32(28);
    const std::optional<uint32_t> memory = hostRange(call, page, address, 1);
    if (!memory || value > (byteAddressed(*call.object) ? 0xFFu : 0xFFFFu)) return VB_FAILURE(kOutOfRange);
    stateOf(*call.object).memory.store(*memory, address, static_cast<uint16_t>(value));
    return 0;
}

// clang-format off
constexpr Row kRows[] = {
    {0x99A, 20, 12, hold},
    {0x99B, 28, 12, startProgram},
    {0x99C, 292, 12, blockWrite},
    {0x99D, 20, 12, cancelLoad},
    {0x99E, 2022, 1998, message, 8},  // the result comes before the answer
    {0x99F, 32, 20, readData},
    {0x9A0, 26, 12, loadImage},
    {0x9A1, 20, 12, restartProgram},
    {0x9A2, 32, 12, readHostPort},
    {0x9A3, 32, 12, writeHostPort},
    {0x9A4, 20, 16, queryDspType},
};
// clang-format on

// ---- Attributes ------------------------------------------------------------------

template <uint32_t (*Value)(Object &)>
std::vector<uint8_t> word(Call &, Object &dsp, uint32_t) {
    return wordValue(Value(dsp));
}

uint32_t reportedState(Object &dsp) {
    const DspState &state = stateOf(dsp);
    if (state.program == Program::Loading) return kLoading;
    if (state.program == Program::None) return kNoProgram;
    return running(dsp, state) ? kRunning : kHalted;
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_DSP_TYPE, RYN_VB_VALUE_UINT32, word<[](Object &dsp) { return dspType(dsp); }>, nullptr},
    {RYN_VB_ATTR_DSP_MODULE, RYN_VB_VALUE_UINT32, word<[](Object &dsp) { return stateOf(dsp).module; }>, nullptr},
    {RYN_VB_ATTR_DSP_ENTRY, RYN_VB_VALUE_UINT32, word<[](Object &dsp) { return stateOf(dsp).entry; }>, nullptr},
    {RYN_VB_ATTR_DSP_PROGRAM_STATE, RYN_VB_VALUE_UINT32, word<reportedState>, nullptr},
    {RYN_VB_ATTR_DSP_UNITS_LOADED, RYN_VB_VALUE_UINT32, word<[](Object &dsp) { return stateOf(dsp).unitsLoaded; }>,
     nullptr},
    {RYN_VB_ATTR_DSP_MODULE_FLAG, RYN_VB_VALUE_UINT32, word<[](Object &dsp) { return stateOf(dsp).moduleFlag; }>,
     nullptr},
};

}  // namespace

void dspReset(Board &board, Object &dsp) { dropProgram(board, dsp, stateOf(dsp)); }

Table dspTable() { return kRows; }
std::span<const Attribute> dspAttributes() { return kAttributes; }

}  // namespace vb
