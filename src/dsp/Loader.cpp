// The DSP program loader: program files to a DSP (direct mode) or to
// program images in the caller's memory (command-stream and record images),
// and program images to a DSP.
#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "CoreWire.h"
#include "DspImage.h"
#include "DspWire.h"
#include "LittleEndian.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"
#include "dsp/Coff.h"
#include "osa/Files.h"

namespace ryn {
namespace {

using wire::dsp::BlockWrite;
using wire::dsp_image::ImageWriter;

constexpr uint8_t kSourceId = source::kDsp;

constexpr uint32_t kBlockBytes = BlockWrite::kDataBytes;  // data bytes of one block write
constexpr uint32_t kSettleMs = 50;                        // after hold, before the transfer
constexpr char kModuleBaseName[] = "rynspm1";

// ---- Requests of a load ----------------------------------------------------

ResultCode sendStart(DeviceHandle handle, uint32_t entry, uint32_t moduleFlag) {
    using Wire = wire::dsp::StartProgram;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kEntry>(entry).put<Wire::kModuleFlag>(moduleFlag);
    return request.send();
}

// The device-core disable request with the values that stop a DSP.
void sendDisable(DeviceHandle handle) {
    using Wire = wire::core::Disable;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam2>(0).put<Wire::kParam3>(0xFFFFFFFFu);
    request.send();
}

// What a failed transfer leaves behind: the DSP disabled, the load cancelled.
void cleanUpTransfer(DeviceHandle handle) {
    sendDisable(handle);
    sendHandleOnly<wire::dsp::CancelLoad>(handle);
}

ResultCode sendWordBlock(DeviceHandle handle, uint32_t staging, uint32_t words, uint32_t address, uint32_t page,
                         const uint8_t *data) {
    RequestOf<BlockWrite> request;
    request.put<wire::kHandle>(handle).put<BlockWrite::kStaging>(staging).put<BlockWrite::kCount>(words);
    request.put<BlockWrite::kAddress>(address).put<BlockWrite::kPage>(page);
    request.putBytes<BlockWrite::kData, kBlockBytes>(data, words * 2);
    return request.send();
}

ResultCode sendByteBlock(DeviceHandle handle, uint32_t bytes, uint32_t address, const uint8_t *data) {
    RequestOf<BlockWrite> request;
    request.put<wire::kHandle>(handle).put<BlockWrite::kCount>(bytes).put<BlockWrite::kAddress>(address);
    request.putBytes<BlockWrite::kData, kBlockBytes>(data, bytes);
    return request.send();
}

// Hold, then the settling time every load needs.
ResultCode holdAndSettle(DeviceHandle handle) {
    const ResultCode held = sendHandleOnly<wire::dsp::Hold>(handle);
    if (isFailure(held)) return held;
    RYN_DECORATED(OsaThreadSleep, 4)(kSettleMs);
    return 0;
}

// Starts the program; a refused start leaves the DSP disabled.
ResultCode start(DeviceHandle handle, uint32_t entry, uint32_t moduleFlag) {
    const ResultCode started = sendStart(handle, entry, moduleFlag);
    if (isFailure(started)) {
        sendDisable(handle);
        return started;
    }
    return 0;
}

// ---- Where the chunks of a program file go --------------------------------

// One chunk of a section: `units` load units at DSP `address`.
struct Chunk {
    uint32_t address;
    uint32_t units;
    uint16_t page;
    std::span<const uint8_t> data;  // units × unit size bytes, little-endian words
};

uint16_t wordAt(std::span<const uint8_t> data, size_t index) { return wire::le::load16(&data[2 * index]); }

enum class Mode { Direct, CommandStream, Records };

class ChunkSink {
public:
    ChunkSink(Mode mode, const coff::ProgramFile &file, DeviceHandle handle, ImageWriter *image)
        : mode_(mode), file_(file), handle_(handle), image_(image) {}

    ResultCode write(const Chunk &chunk) {
        switch (mode_) {
            case Mode::Direct:
                return direct(chunk);
            case Mode::CommandStream:
                return commandStream(chunk);
            case Mode::Records:
                return record(chunk);
        }
        return RYN_FAILURE(kErrFailed);
    }

private:
    ResultCode direct(const Chunk &chunk) {
        if (file_.byteTarget()) return sendByteBlock(handle_, chunk.units, chunk.address, chunk.data.data());
        return sendWordBlock(handle_, BlockWrite::kFileStaging, chunk.units, chunk.address, chunk.page,
                             chunk.data.data());
    }

    // One block of the command stream; a word that does not fit fails the load.
    ResultCode commandStream(const Chunk &chunk) {
        if (file_.byteTarget()) return RYN_FAILURE(kErrNotProvided);
        bool ok = image_->openBlock(chunk.page, static_cast<uint16_t>(chunk.address), chunk.units);
        for (uint32_t i = 0; ok && i < chunk.units; ++i) ok = image_->blockWord(wordAt(chunk.data, i));
        ok = ok && image_->closeBlock();
        return ok ? 0 : RYN_FAILURE(kErrImageFull);
    }

    // One record: address and count high half first, then the data (byte
    // records: two bytes a word, the earlier in the low half). The count is
    // reserved in full, also for byte records.
    ResultCode record(const Chunk &chunk) {
        if (file_.version() == 1) return RYN_FAILURE(kErrNotAvailable);
        if (image_->used() == 0)
            image_->recordHeader(file_.byteTarget() ? wire::dsp_image::kByteRecords : wire::dsp_image::kWordRecords);
        if (!image_->fits(uint64_t{chunk.units} + wire::dsp_image::kRecordFieldWords))
            return RYN_FAILURE(kErrImageFull);
        image_->recordFields(chunk.address, chunk.units);
        // Two bytes a word, the earlier in the low half, as the file holds
        // words; an odd last byte stands alone.
        const size_t pairs = chunk.data.size() / 2;
        uint16_t *to = image_->take(static_cast<uint32_t>((chunk.data.size() + 1) / 2)).data();
        if constexpr (std::endian::native == std::endian::little) {
            // Whole chunks take the copy of constant length, which compiles to plain moves.
            if (pairs * 2 == kBlockBytes) {
                std::memcpy(to, chunk.data.data(), kBlockBytes);
            } else {
                std::memcpy(to, chunk.data.data(), pairs * 2);
            }
        } else {
            for (size_t i = 0; i < pairs; ++i) to[i] = wordAt(chunk.data, i);
        }
        if (chunk.data.size() % 2 != 0) to[pairs] = chunk.data.back();
        return 0;
    }

    Mode mode_;
    const coff::ProgramFile &file_;
    DeviceHandle handle_;
    ImageWriter *image_;
};

// ---- Loading a program file ------------------------------------------------

struct FreeBytes {
    void operator()(uint8_t *bytes) const { ::operator delete[](bytes, std::nothrow); }
};

// The whole file in memory: 0, or the error number of a file that cannot be
// opened (13), read (5) or held (8).
uint8_t readProgramFile(const char *fileName, std::unique_ptr<uint8_t[], FreeBytes> &bytes, uint64_t &size) {
    FILE *file = RYN_DECORATED(OsaFileOpen, 8)(fileName, "rb");
    if (file == nullptr) return kErrFailed;
    const std::optional<uint64_t> length = osa::regularFileSize(file);
    uint8_t error = 0;
    if (!length || *length > UINT32_MAX) {
        error = length ? kErrBadData : kErrFailed;
    } else {
        size = *length;
        bytes.reset(static_cast<uint8_t *>(::operator new[](size == 0 ? 1 : size, std::nothrow)));
        if (bytes == nullptr) {
            error = kErrNoMemory;
        } else if (RYN_DECORATED(OsaFileRead, 16)(bytes.get(), 1, static_cast<uint32_t>(size), file) != size) {
            error = kErrBadData;
        }
    }
    RYN_DECORATED(OsaFileClose, 4)(file);
    return error;
}

// Loads `fileName` into the sink's destination and finds the entry address:
// the first section's address when it is ".text", else 0, unless an entry
// name is given. The file is closed before this returns.
ResultCode loadProgram(const char *fileName, const char *entryName, Mode mode, DeviceHandle handle, ImageWriter *image,
                       uint32_t &entry) {
    std::unique_ptr<uint8_t[], FreeBytes> bytes;
    uint64_t size = 0;
    if (const uint8_t error = readProgramFile(fileName, bytes, size); error != 0) return RYN_FAILURE(error);

    coff::ProgramFile file;
    if (const uint8_t error = file.open({bytes.get(), static_cast<size_t>(size)}); error != 0)
        return RYN_FAILURE(error);
    if (const uint8_t error = file.validate(); error != 0) return RYN_FAILURE(error);

    ChunkSink sink(mode, file, handle, image);
    for (uint32_t i = 0; i < file.sectionCount(); ++i) {
        const coff::Section section = *file.section(i);
        if (!file.loads(section)) continue;
        const std::span<const uint8_t> data = *file.data(section);
        for (uint32_t offset = 0; offset < section.size; offset += file.chunkUnits()) {
            const uint32_t units = std::min(section.size - offset, file.chunkUnits());
            const Chunk chunk{section.physicalAddress + offset, units, section.page,
                              data.subspan(size_t{offset} * file.unitBytes(), size_t{units} * file.unitBytes())};
            if (const ResultCode written = sink.write(chunk); isFailure(written)) return written;
        }
    }

    uint32_t address = file.defaultEntry();
    const std::string_view name = entryName != nullptr ? std::string_view(entryName) : std::string_view();
    if (!name.empty()) {
        if (const uint8_t error = file.resolveEntry(name, address); error != 0) return RYN_FAILURE(error);
    }
    entry = address;
    return 0;
}

// The base name of a path: after any drive, directory (/ or \) and before
// the last dot of what remains.
std::string_view baseName(std::string_view path) {
    if (path.size() >= 2 && path[1] == ':') path.remove_prefix(2);
    if (const size_t slash = path.find_last_of("/\\"); slash != std::string_view::npos) path.remove_prefix(slash + 1);
    if (const size_t dot = path.rfind('.'); dot != std::string_view::npos) path = path.substr(0, dot);
    return path;
}

// Module flag 1 for a program file named rynspm1 (any case, directory and
// extension), else 0.
uint32_t moduleFlag(const char *fileName) {
    char base[256] = {};
    const std::string_view name = baseName(fileName);
    if (name.size() >= sizeof base) return 0;
    std::memcpy(base, name.data(), name.size());
    return RYN_DECORATED(OsaStrCmpI, 8)(base, kModuleBaseName) == 0 ? 1 : 0;
}

// ---- Shipping a program image ----------------------------------------------

// Sends each record with a block write. A record that reaches past the
// length, or holds more than one block write carries, is refused before it
// is sent.
ResultCode shipRecords(DeviceHandle handle, wire::dsp_image::RecordReader records) {
    while (!records.done()) {
        const std::optional<wire::dsp_image::Record> record = records.next();
        if (!record) return RYN_FAILURE(kErrLengthMismatch);
        uint8_t data[kBlockBytes];
        for (size_t i = 0; i < record->data.size(); ++i) wire::le::store16(data + 2 * i, record->data[i]);
        const ResultCode sent = record->bytes ? sendByteBlock(handle, record->count, record->address, data)
                                              : sendWordBlock(handle, BlockWrite::kImageStaging, record->count,
                                                              record->address, BlockWrite::kImagePage, data);
        if (isFailure(sent)) return sent;
    }
    return 0;
}

ResultCode shipCommandStream(DeviceHandle handle, const uint16_t *image, uint16_t length) {
    using Wire = wire::dsp::LoadImage;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putAddress<Wire::kImage>(image, uint32_t{length} * 2);
    request.put16<Wire::kLength>(length);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDspRunProgram, 12)(DeviceHandle handle, const char *fileName, const char *entryName) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (const ResultCode held = holdAndSettle(handle); isFailure(held)) return held;
    uint32_t entry = 0;
    const ResultCode loaded = loadProgram(fileName, entryName, Mode::Direct, handle, nullptr, entry);
    if (isFailure(loaded)) {
        cleanUpTransfer(handle);
        return loaded;
    }
    return start(handle, entry, moduleFlag(fileName));
}

ResultCode RYN_DECORATED(RynDspCreateProgramImage, 24)(const char *fileName, const char *entryName, uint16_t capacity,
                                                       uint16_t *buffer, uint16_t *used, uint32_t *entry) {
    if (used == nullptr || entry == nullptr || (buffer == nullptr && capacity != 0))
        return RYN_FAILURE(kErrNullPointer);
    *used = 0;
    ImageWriter image({buffer, capacity});
    uint32_t address = 0;
    const ResultCode loaded = loadProgram(fileName, entryName, Mode::CommandStream, 0, &image, address);
    *used = static_cast<uint16_t>(image.used());
    if (!isFailure(loaded)) *entry = address;
    return loaded;
}

ResultCode RYN_DECORATED(RynDspCreateProgramImageEx, 24)(const char *fileName, const char *entryName, uint32_t capacity,
                                                         uint16_t *buffer, uint32_t *used, uint32_t *entry) {
    if (used == nullptr || entry == nullptr || (buffer == nullptr && capacity != 0))
        return RYN_FAILURE(kErrNullPointer);
    *used = 0;
    if (capacity < wire::dsp_image::kRecordHeaderWords) return RYN_FAILURE(kErrRange);
    ImageWriter image({buffer, capacity});
    uint32_t address = 0;
    const ResultCode loaded = loadProgram(fileName, entryName, Mode::Records, 0, &image, address);
    *used = image.used();
    if (!isFailure(loaded)) *entry = address;
    return loaded;
}

ResultCode RYN_DECORATED(RynDspRunImage, 16)(DeviceHandle handle, const uint16_t *image, uint16_t length,
                                             uint32_t entry) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (image == nullptr && length != 0) return RYN_FAILURE(kErrNullPointer);
    if (const ResultCode held = holdAndSettle(handle); isFailure(held)) return held;
    const auto records = wire::dsp_image::RecordReader::open({image, length});
    const ResultCode shipped = records ? shipRecords(handle, *records) : shipCommandStream(handle, image, length);
    if (isFailure(shipped)) {
        cleanUpTransfer(handle);
        return shipped;
    }
    return start(handle, entry, 0);
}

}  // extern "C"
