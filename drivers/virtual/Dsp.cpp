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

#include "DspImage.h"
#include "DspWire.h"
#include "Families.h"
#include "LittleEndian.h"

namespace vb {
namespace {

using wire::dsp::BlockWrite, wire::dsp::CancelLoad, wire::dsp::Hold, wire::dsp::LoadImage, wire::dsp::Message;
using wire::dsp::QueryDspType, wire::dsp::ReadData, wire::dsp::ReadHostPort, wire::dsp::RestartProgram;
using wire::dsp::StartProgram, wire::dsp::WriteHostPort;
namespace image = wire::dsp_image;

// ---- The board's DSPs and modules ----------------------------------------

// DSP type of each DSP, by device number: DSP 0 word-addressed, DSP 1
// byte-addressed.
constexpr uint32_t kDspTypes[] = {RYN_VB_DSP_TYPE_WORD, RYN_VB_DSP_TYPE_BYTE};
constexpr uint32_t kByteAddressedType = RYN_VB_DSP_TYPE_BYTE;

uint32_t dspType(const Object &dsp) { return dsp.id < std::size(kDspTypes) ? kDspTypes[dsp.id] : kDspTypes[0]; }
bool byteAddressed(const Object &dsp) { return dspType(dsp) == kByteAddressedType; }

// The built-in modules this board knows (the module table the library's
// images are made from): a program started at a module's entry address on a
// DSP of the module's type is that module.
struct Module {
    uint32_t module, dspType, entry;
};
constexpr Module kModules[] = {
#define RYN_SPM_MODULE(module, type, form, length, entry, text) {module, type, entry},
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE
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

constexpr uint32_t kMaxWordsPerBlock = BlockWrite::kDataBytes / 2;
constexpr uint32_t kMaxBytesPerBlock = BlockWrite::kDataBytes;
constexpr uint32_t kMessageBytes = Message::kMessageBytes;
// The host-port window: device registers of the DSP, one 16-bit register a unit.
constexpr uint32_t kHostPortWindow = 0x1000;
constexpr uint32_t kHostPortUnits = 64;

// ---- Images ------------------------------------------------------------------

// A command stream: each block is loaded once it was read whole; a malformed
// block refuses the image.
uint32_t loadCommandStream(DspState &state, std::span<const uint16_t> words) {
    if (words.empty()) return VB_FAILURE(kMalformed);
    for (image::StreamReader stream(words); !stream.done();) {
        const std::optional<image::Block> block = stream.next();
        if (!block) return VB_FAILURE(kMalformed);
        for (uint32_t i = 0; i < block->count; ++i) load(state, block->page, block->address + i, block->word(i));
    }
    return 0;
}

// A record image of byte records: records of no units or past the address
// space refuse it as well.
uint32_t loadRecords(DspState &state, std::span<const uint16_t> words) {
    std::optional<image::RecordReader> records = image::RecordReader::open(words);
    if (!records || !records->bytes()) return VB_FAILURE(kMalformed);
    while (!records->done()) {
        const std::optional<image::Record> record = records->next();
        if (!record || record->count == 0 || !inside(record->address, record->count)) return VB_FAILURE(kMalformed);
        for (uint32_t i = 0; i < record->count; ++i) load(state, kProgramPage, record->address + i, record->unit(i));
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
    const uint32_t staging = call.in.u32(BlockWrite::kStaging), count = call.in.u32(BlockWrite::kCount);
    const uint32_t address = call.in.u32(BlockWrite::kAddress), page = call.in.u32(BlockWrite::kPage);
    const bool bytes = byteAddressed(dsp);
    const bool framed = bytes ? staging == 0 && page == 0
                              : (staging == BlockWrite::kFileStaging && page != BlockWrite::kImagePage) ||
                                    (staging == BlockWrite::kImageStaging && page == BlockWrite::kImagePage);
    const std::optional<uint32_t> memory = memoryPage(dsp, page);
    if (!framed || !memory || count == 0 || count > (bytes ? kMaxBytesPerBlock : kMaxWordsPerBlock) ||
        !inside(address, count))
        return abandon(call, VB_FAILURE(kMalformed));
    const std::span<const uint8_t> data = call.in.bytes(BlockWrite::kData, bytes ? count : 2 * count);
    if (data.empty()) return abandon(call, VB_FAILURE(kMalformed));
    for (uint32_t i = 0; i < count; ++i)
        load(state, *memory, address + i, bytes ? data[i] : wire::le::load16(&data[2 * i]));
    return 0;
}

// Load command-stream image: 20 the image's address, 24 its length in words
// (16-bit). DSP 0 takes a command stream, DSP 1 a record image of byte records.
uint32_t loadImage(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    if (state.program != Program::Loading) return VB_FAILURE(kFailed);
    const RynDriverBuffer *buffer = call.in.buffer(LoadImage::kImage);
    const uint32_t length = call.in.u16(LoadImage::kLength);
    if (buffer == nullptr || buffer->address == nullptr || 2u * length > buffer->length)
        return abandon(call, VB_FAILURE(kOutOfRange));
    // The image in the caller's memory, as 16-bit little-endian words.
    std::vector<uint16_t> words(length);
    for (uint32_t i = 0; i < length; ++i)
        words[i] = wire::le::load16(static_cast<const uint8_t *>(buffer->address) + 2 * i);
    const uint32_t result = byteAddressed(dsp) ? loadRecords(state, words) : loadCommandStream(state, words);
    return failed(result) ? abandon(call, result) : 0;
}

// Start program: 20 entry address, 24 module flag. The entry must lie in
// loaded program memory.
uint32_t startProgram(Call &call) {
    Object &dsp = *call.object;
    DspState &state = stateOf(dsp);
    const uint32_t entry = call.in.u32(StartProgram::kEntry), flag = call.in.u32(StartProgram::kModuleFlag);
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
    call.out.u32(QueryDspType::kReplyType, dspType(*call.object));
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
    const uint32_t length = call.in.u32(Message::kLength);
    if (length < 2 || length > kMessageBytes + 2) return VB_FAILURE(kOutOfRange);
    std::vector<uint8_t> answer;
    switch (call.in.u16(Message::kCommand)) {
        case RYN_VB_DSP_MESSAGE_ECHO: {
            const std::span<const uint8_t> input = call.in.bytes(Message::kInput, length - 2);
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
    call.out.u16(Message::kReplyAnswerLength, static_cast<uint16_t>(answer.size()));
    const size_t written = std::min<size_t>({answer.size(), call.in.u32(Message::kOutputSize), kMessageBytes});
    call.out.write(Message::kReplyAnswer, answer.data(), static_cast<uint32_t>(written));
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
    const uint32_t page = call.in.u32(ReadData::kPage), count = call.in.u32(ReadData::kCount);
    const uint32_t address = call.in.u32(ReadData::kAddress);
    const std::optional<uint32_t> memory = hostRange(call, page, address, count);
    if (!memory || count == 0 || count > 2) return VB_FAILURE(kOutOfRange);
    const Memory &dspMemory = stateOf(*call.object).memory;
    const uint32_t replies[] = {ReadData::kReplyFirst, ReadData::kReplySecond};
    for (uint32_t i = 0; i < count; ++i) call.out.u32(replies[i], dspMemory.read(*memory, address + i));
    return 0;
}

// Host-port read: 20 page, 24 address, 28 count (1 to 64): the units go to the
// host-port window, the DSP's registers 0x1000 + 2 × i.
uint32_t readHostPort(Call &call) {
    const uint32_t page = call.in.u32(ReadHostPort::kPage), address = call.in.u32(ReadHostPort::kAddress);
    const uint32_t count = call.in.u32(ReadHostPort::kCount);
    const std::optional<uint32_t> memory = hostRange(call, page, address, count);
    if (!memory || count == 0 || count > kHostPortUnits) return VB_FAILURE(kOutOfRange);
    const Memory &dspMemory = stateOf(*call.object).memory;
    for (uint32_t i = 0; i < count; ++i)
        call.board.setRegister(call.object->handle, kHostPortWindow + 2 * i, dspMemory.read(*memory, address + i));
    return 0;
}

// Host-port write: 20 page, 24 address, 28 value (a word, or a byte on DSP 1).
uint32_t writeHostPort(Call &call) {
    const uint32_t page = call.in.u32(WriteHostPort::kPage), address = call.in.u32(WriteHostPort::kAddress);
    const uint32_t value = call.in.u32(WriteHostPort::kValue);
    const std::optional<uint32_t> memory = hostRange(call, page, address, 1);
    if (!memory || value > (byteAddressed(*call.object) ? 0xFFu : 0xFFFFu)) return VB_FAILURE(kOutOfRange);
    stateOf(*call.object).memory.store(*memory, address, static_cast<uint16_t>(value));
    return 0;
}

constexpr Row kRows[] = {
    row<Hold>(hold),
    row<StartProgram>(startProgram),
    row<BlockWrite>(blockWrite),
    row<CancelLoad>(cancelLoad),
    row<Message>(message),  // the result comes before the answer
    row<ReadData>(readData),
    row<LoadImage>(loadImage),
    row<RestartProgram>(restartProgram),
    row<ReadHostPort>(readHostPort),
    row<WriteHostPort>(writeHostPort),
    row<QueryDspType>(queryDspType),
};

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

const Family kDspFamily{"DSP", kRows, kAttributes, makeState<DspState>, dspReset};

}  // namespace vb
