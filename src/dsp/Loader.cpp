// The DSP program loader: program files to a DSP (direct mode) or to
// program images in the caller's memory (command-stream and record images),
// and program images to a DSP.
#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"
#include "dsp/Coff.h"
#include "osa/Files.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDsp;

constexpr uint32_t kFunctionHold = 0x99A;
constexpr uint32_t kFunctionStart = 0x99B;
constexpr uint32_t kFunctionBlockWrite = 0x99C;
constexpr uint32_t kFunctionCancel = 0x99D;
constexpr uint32_t kFunctionLoadImage = 0x9A0;
constexpr uint32_t kFunctionDisable = 0x80D;

constexpr uint32_t kBlockBytes = 256;  // data bytes of one block write
constexpr uint32_t kSettleMs = 50;     // after hold, before the transfer
constexpr uint32_t kDirectStaging = 0x1004;
constexpr uint32_t kImageRecordPage = 10;
constexpr char kModuleBaseName[] = "rynspm1";

// Record images start with this header; its fifth word is the record
// version: 1 for word records, 2 for byte records.
constexpr uint16_t kRecordMagic[4] = {0x54AB, 0x6D2E, 0x1010, 0x1C1C};
constexpr uint32_t kRecordHeaderWords = 5;
constexpr uint32_t kRecordFieldWords = 4;

// ---- Requests of a load ----------------------------------------------------

ResultCode sendStart(DeviceHandle handle, uint32_t entry, uint32_t moduleFlag) {
    Request<28, 12> request(kFunctionStart);
    request.put<16>(handle).put<20>(entry).put<24>(moduleFlag);
    return request.send();
}

// The device-core disable request with the values that stop a DSP.
void sendDisable(DeviceHandle handle) {
    Request<28, 12> request(kFunctionDisable);
    request.put<16>(handle).put<20>(0).put<24>(0xFFFFFFFFu);
    request.send();
}

// What a failed transfer leaves behind: the DSP disabled, the load cancelled.
void cleanUpTransfer(DeviceHandle handle) {
    sendDisable(handle);
    sendHandleOnly(kFunctionCancel, handle);
}

ResultCode sendWordBlock(DeviceHandle handle, uint32_t staging, uint32_t words, uint32_t address, uint32_t page,
                         const uint8_t *data) {
    Request<292, 12> request(kFunctionBlockWrite);
    request.put<16>(handle).put<20>(staging).put<24>(words).put<28>(address).put<32>(page);
    request.putBytes<36, kBlockBytes>(data, words * 2);
    return request.send();
}

ResultCode sendByteBlock(DeviceHandle handle, uint32_t bytes, uint32_t address, const uint8_t *data) {
    Request<292, 12> request(kFunctionBlockWrite);
    request.put<16>(handle).put<24>(bytes).put<28>(address);
    request.putBytes<36, kBlockBytes>(data, bytes);
    return request.send();
}

// Hold, then the settling time every load needs.
ResultCode holdAndSettle(DeviceHandle handle) {
    const ResultCode held = sendHandleOnly(kFunctionHold, handle);
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

uint16_t wordAt(std::span<const uint8_t> data, size_t index) {
    return static_cast<uint16_t>(data[2 * index] | data[2 * index + 1] << 8);
}

// An image in the caller's memory, filled up to its capacity. Its state
// lives for one create call.
class ImageWriter {
public:
    ImageWriter(uint16_t *buffer, uint32_t capacity) : buffer_(buffer), capacity_(capacity) {}

    uint32_t used() const { return used_; }
    bool fits(uint64_t words) const { return used_ + words <= capacity_; }
    bool put(uint16_t word) {
        if (used_ >= capacity_) return false;
        buffer_[used_++] = word;
        return true;
    }
    // The next `words` words of the image, which the caller fills; only
    // after fits(words).
    uint16_t *take(uint32_t words) {
        uint16_t *at = buffer_ + used_;
        used_ += words;
        return at;
    }

private:
    uint16_t *buffer_;
    uint32_t capacity_;
    uint32_t used_ = 0;
};

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
        return sendWordBlock(handle_, kDirectStaging, chunk.units, chunk.address, chunk.page, chunk.data.data());
    }

    // One block of (tag, value) pairs; a word that does not fit fails the load.
    ResultCode commandStream(const Chunk &chunk) {
        if (file_.byteTarget()) return RYN_FAILURE(kErrNotProvided);
        const auto address = static_cast<uint16_t>(chunk.address);
        const auto last = static_cast<uint16_t>(chunk.units - 1);
        bool ok = pair(0x0004, 0x0FFF);
        if (chunk.page == 0) {
            ok = ok && pair(0x0002, 0x0000) && pair(0x0002, address) && pair(0x0002, last) && pair(0x0002, 0x1004);
        } else if (chunk.page == 1 || chunk.page == 2) {
            ok = ok && pair(0x0002, 0x0001) && pair(0x0002, 0x1004) && pair(0x0002, last) && pair(0x0002, address);
        }
        for (uint32_t i = 0; ok && i < chunk.units; ++i) ok = pair(0x0002, wordAt(chunk.data, i));
        ok = ok && pair(0x0000, 0x0808) && pair(0xFFFF, 0xFFFF);
        return ok ? 0 : RYN_FAILURE(kErrImageFull);
    }
    bool pair(uint16_t tag, uint16_t value) { return image_->put(tag) && image_->put(value); }

    // One record: address and count high half first, then the data (byte
    // records: two bytes a word, the earlier in the low half). The count is
    // reserved in full, also for byte records.
    ResultCode record(const Chunk &chunk) {
        if (file_.version() == 1) return RYN_FAILURE(kErrNotAvailable);
        if (image_->used() == 0) {
            for (uint16_t word : kRecordMagic) image_->put(word);
            image_->put(file_.byteTarget() ? 2 : 1);
        }
        if (!image_->fits(uint64_t{chunk.units} + kRecordFieldWords)) return RYN_FAILURE(kErrImageFull);
        image_->put(static_cast<uint16_t>(chunk.address >> 16));
        image_->put(static_cast<uint16_t>(chunk.address));
        image_->put(static_cast<uint16_t>(chunk.units >> 16));
        image_->put(static_cast<uint16_t>(chunk.units));
        // Two bytes a word, the earlier in the low half, as the file holds
        // words; an odd last byte stands alone.
        const size_t pairs = chunk.data.size() / 2;
        uint16_t *to = image_->take(static_cast<uint32_t>((chunk.data.size() + 1) / 2));
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

bool isRecordImage(const uint16_t *image, uint32_t length, uint16_t &version) {
    if (length < kRecordHeaderWords || std::memcmp(image, kRecordMagic, sizeof kRecordMagic) != 0) return false;
    version = image[4];
    return version == 1 || version == 2;
}

// Sends each record with a block write. A record that reaches past the
// length, or holds more than one block write carries, is refused before it
// is sent.
ResultCode shipRecords(DeviceHandle handle, const uint16_t *image, uint32_t length, uint16_t version) {
    uint32_t at = kRecordHeaderWords;
    while (at != length) {
        if (length - at < kRecordFieldWords) return RYN_FAILURE(kErrLengthMismatch);
        const uint32_t address = uint32_t{image[at]} << 16 | image[at + 1];
        const uint32_t count = uint32_t{image[at + 2]} << 16 | image[at + 3];
        at += kRecordFieldWords;
        const uint32_t maximum = version == 1 ? kBlockBytes / 2 : kBlockBytes;
        const uint64_t words = version == 1 ? uint64_t{count} : (uint64_t{count} + 1) / 2;
        if (words > length - at) return RYN_FAILURE(kErrLengthMismatch);
        if (count > maximum) return RYN_FAILURE(kErrLengthMismatch);
        uint8_t data[kBlockBytes];
        for (uint32_t i = 0; i < words; ++i) {
            data[2 * i] = static_cast<uint8_t>(image[at + i]);
            data[2 * i + 1] = static_cast<uint8_t>(image[at + i] >> 8);
        }
        const ResultCode sent = version == 1 ? sendWordBlock(handle, 0, count, address, kImageRecordPage, data)
                                             : sendByteBlock(handle, count, address, data);
        if (isFailure(sent)) return sent;
        at += static_cast<uint32_t>(words);
    }
    return 0;
}

ResultCode shipCommandStream(DeviceHandle handle, const uint16_t *image, uint16_t length) {
    Request<26, 12> request(kFunctionLoadImage);
    request.put<16>(handle).putAddress<20>(image, uint32_t{length} * 2).put16<24>(length);
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
    ImageWriter image(buffer, capacity);
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
    if (capacity < kRecordHeaderWords) return RYN_FAILURE(kErrRange);
    ImageWriter image(buffer, capacity);
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
    uint16_t version = 0;
    const ResultCode shipped = isRecordImage(image, length, version) ? shipRecords(handle, image, length, version)
                                                                     : shipCommandStream(handle, image, length);
    if (isFailure(shipped)) {
        cleanUpTransfer(handle);
        return shipped;
    }
    return start(handle, entry, 0);
}

}  // extern "C"
