// The library's reading of replies, fed by a driver whose every answer comes
// from the fuzz input.
//
// The driver is registered inside the process under both device names and
// the library connects to it once. Each input is a sequence of API calls
// (one byte picks the row of kCalls, the row reads its arguments), and each
// request the library sends is answered from the same input: whether the
// call fails, the byte count reported (the whole block, 0, any value, more
// than the block, a part of it), runs of bytes, chosen words at the offsets
// where replies carry counts, lengths and results, whole-block fills, and
// writes into the caller buffer a request names for the driver to fill. The
// byte count may be anything (the device layer bounds it), but the driver
// keeps the module interface's promises about memory: it writes no more than
// the reply block's length, leaves the block alone when the call fails and
// writes no more into a caller buffer than the length the library lists.
//
// Every out-argument and caller buffer is a heap block of exactly the size
// the call documents, so that AddressSanitizer sees any write or read past
// it. Handles are values of each kind the library's checks accept (and a
// few they refuse). The pauses of program loads, ringing and the DAA set-up
// are skipped: the harness's link wraps OsaThreadSleep_4 (fuzz/drivers.cmake).
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "BoardStream.h"
#include "RynHwDll.h"
#include "RynUserDriver.h"
#include "core/Compat.h"
#include "osa/Device.h"

extern "C" void __wrap_OsaThreadSleep_4(uint32_t) {}

namespace {

using ryn::fuzz::Stream;

constexpr uint32_t kMaxCalls = 32;

// ---- The driver ------------------------------------------------------------

Stream *script = nullptr;  // the input being run; null between inputs

// Words that the library reads as counts, lengths and results.
uint32_t interesting(Stream &in, uint32_t blockLength) {
    static constexpr uint32_t kWords[] = {0, 1, 2, 3, 0xFF, 0x100, 0x7FF, 0x800, 1984, 1985, 0xFFFF, 0x10000,
                                          0x7FFFFFFF, 0x80000000u, 0x80000001u, 0xC300AD0Du, 0xFFFFFFFEu, 0xFFFFFFFFu};
    const uint8_t pick = in.u8();
    if (pick < 2 * std::size(kWords)) return kWords[pick % std::size(kWords)];
    if (pick < 200) return blockLength + (pick % 5) - 2;
    return in.u32();
}

// The caller buffer that a request names for the driver to fill (event
// records, a result text, received frames and bytes, a scan's output); the
// other buffers are the driver's to read, and may be the library's own
// constant data.
const RynDriverBuffer *outputBuffer(const RynDriverRequest &request) {
    const uint32_t function = (request.code >> 2) & 0x3FFFu;
    uint32_t at = 0;
    if (function == 0x8D4 && request.inputLength == 28) at = 20;                        // event records
    if (function == 0x81B && request.inputLength == 32) at = 28;                        // result text
    if (function == 0x99D && request.inputLength == 28) at = 24;                        // HDLC and raw-data reads
    if ((function == 0x99B || function == 0x99C) && request.inputLength == 40) at = 32;  // JTAG scan output
    if (at == 0) return nullptr;
    uint32_t reference = 0;
    std::memcpy(&reference, static_cast<const uint8_t *>(request.input) + at, 4);
    if constexpr (sizeof(void *) == 4) {  // the field holds the address itself
        for (uint32_t i = 0; i < request.bufferCount; ++i)
            if (reinterpret_cast<uintptr_t>(request.buffers[i].address) == reference) return &request.buffers[i];
        return nullptr;
    }
    return reference >= 1 && reference <= request.bufferCount ? &request.buffers[reference - 1] : nullptr;
}

void patch(Stream &in, const RynDriverRequest &request) {
    auto *out = static_cast<uint8_t *>(request.output);
    const uint32_t length = request.outputLength;
    const uint8_t op = in.u8();
    switch (op % 5) {
        case 0: {  // a run of input bytes
            if (length == 0) return;
            const uint32_t at = in.u16() % length;
            in.copy(out + at, std::min<uint32_t>(in.u16() % 2048, length - at));
            return;
        }
        case 1:
        case 4: {  // a word (case 1) or a 16-bit field (case 4) where replies keep their fields
            const uint32_t width = op % 5 == 1 ? 4 : 2;
            const uint32_t hot[] = {8, 12, 16, 20, 24, 28, 4, 10, length - 4, length - 8};
            const uint32_t at = hot[in.pick(std::size(hot))];
            const uint32_t value = interesting(in, length);
            if (length >= width && at <= length - width) std::memcpy(out + at, &value, width);
            return;
        }
        case 2:  // the whole block
            if (length != 0) std::memset(out, in.u8(), length);
            return;
        default: {  // the caller buffer the driver fills, up to the length the library lists
            const RynDriverBuffer *filled = outputBuffer(request);
            if (filled == nullptr) return;
            const RynDriverBuffer &buffer = *filled;
            if (buffer.address == nullptr || buffer.length == 0) return;
            const uint8_t how = in.u8();
            const uint32_t count = how & 0x80 ? buffer.length : std::min<uint32_t>(in.u16(), buffer.length);
            std::memset(buffer.address, how & 0x40 ? '1' : how, count);
            in.copy(buffer.address, std::min<uint32_t>(count, how & 0x3F));
            return;
        }
    }
}

int answer(void *, const RynDriverRequest *request, uint32_t *returned) {
    Stream none(nullptr, 0);
    Stream &in = script != nullptr ? *script : none;
    const uint8_t how = in.u8();
    const uint32_t length = request->outputLength;
    switch ((how >> 3) & 7) {
        case 4: *returned = 0; break;
        case 5: *returned = in.u32(); break;
        case 6: *returned = length + 1 + in.u8(); break;
        case 7: *returned = in.u16() % (length + 1); break;
        default: *returned = length;
    }
    if ((how & 0xC0) == 0xC0) return 0;  // failed: the reply stays as it was
    for (unsigned patches = how & 7; patches != 0; --patches) patch(in, *request);
    return 1;
}

void *driverOpen(const char *) {
    static int connection;
    return &connection;
}
void driverClose(void *) {}
const RynUserDriver kDriver{RYN_USER_DRIVER_ABI, driverOpen, answer, driverClose};

// ---- Arguments -------------------------------------------------------------

struct HeapBlock {
    void operator()(void *block) const { std::free(block); }
};

// One call's arguments, read from the input; the blocks live until the
// call's row returns.
class Args {
public:
    explicit Args(Stream &in) : in(in) {}
    Stream &in;

    uint32_t v() { return in.u8() < 128 ? in.u8() : in.u32(); }
    uint32_t upTo(uint32_t most) { return in.u16() % (most + 1); }
    // A handle of each kind, the pseudo-handles, and values no check accepts.
    DeviceHandle h() {
        static constexpr DeviceHandle kHandles[] = {0x10000001, 0x10000004, 0x20000010, 0x30000020, 0x40000030,
                                                    0x50000001, 0x60000001, RYN_DRIVER_PSEUDO_HANDLE,
                                                    RYN_LIBRARY_PSEUDO_HANDLE, 0x70000001, 0xFFFFFFFF};
        const uint8_t pick = in.u8();
        return pick < 240 ? kHandles[pick % 7] : kHandles[pick % std::size(kHandles)];
    }
    // A heap block of exactly `count` T (a distinct empty block for 0).
    template <class T = uint8_t>
    T *out(size_t count = 1) {
        void *block = std::malloc(count * sizeof(T));
        if (count != 0) std::memset(block, 0xBE, count * sizeof(T));
        blocks_.emplace_back(block);
        return static_cast<T *>(block);
    }
    // An out-argument the call allows to be null: null now and then.
    template <class T>
    T *maybe() { return in.chance(2) ? nullptr : out<T>(); }
    // `count` bytes from the input, not terminated.
    template <class T = uint8_t>
    T *bytes(size_t count) {
        T *block = out<T>(count);
        in.copy(block, count * sizeof(T));
        return block;
    }
    // A terminated text of up to `most` characters; NULs of the input read as `filler`.
    char *text(uint32_t most, char filler = '0') {
        const uint32_t length = in.u8() % (most + 1);
        char *block = out<char>(length + 1);
        in.copy(block, length);
        for (uint32_t i = 0; i < length; ++i)
            if (block[i] == '\0' || static_cast<uint8_t>(block[i]) == 0xBE) block[i] = filler;
        block[length] = '\0';
        return block;
    }

private:
    std::vector<std::unique_ptr<void, HeapBlock>> blocks_;
};

// A DSP program image: a command stream or a record image (magic, version,
// then records as the input gives them).
uint16_t *image(Args &a, uint16_t &length) {
    length = static_cast<uint16_t>(a.in.u8() + (a.in.chance(1) ? 300 : 0));
    uint16_t *words = a.bytes<uint16_t>(length);
    if (length >= 5 && a.in.chance(10)) {
        static constexpr uint16_t kMagic[4] = {0x54AB, 0x6D2E, 0x1010, 0x1C1C};
        std::memcpy(words, kMagic, sizeof kMagic);
        words[4] = static_cast<uint16_t>(1 + a.in.u8() % 2);
    }
    return words;
}

// A call-progress detector configuration with one tone table.
const CptDetectorConfig *cptConfig(Args &a) {
    auto *config = a.out<CptDetectorConfig>();
    auto *table = a.out<CptToneTable>();
    auto *segments = a.out<CptSegment>(4);
    a.in.copy(table->tableWords, sizeof table->tableWords);
    table->tableWords[11] = static_cast<uint16_t>(a.in.u8() % 36);
    table->tableWords[12] = static_cast<uint16_t>(a.in.u8() % 5);
    table->values = a.bytes<uint16_t>(table->tableWords[11]);
    table->segments = segments;
    table->extraBlock = a.in.chance(8) ? a.bytes(16) : nullptr;
    for (int i = 0; i < 4; ++i) {
        segments[i].segmentId = a.in.u8();
        segments[i].stepCount = static_cast<uint16_t>(a.in.u8() % 8);
        const uint32_t words = (segments[i].stepCount & 0xFFu) * (3 + (table->tableWords[11] + 3u) / 4);
        segments[i].steps = a.bytes<uint16_t>(words);
    }
    config->toneTable = table;
    config->tableCount = static_cast<int16_t>(a.in.chance(14) ? 1 : -1);
    config->setting1 = a.in.u8();
    config->setting2 = a.in.u8();
    config->setting3 = a.in.u8();
    return config;
}

// The connection the harness keeps; rows that release it connect again.
void reconnect() {
    if ((RynDrvGetHandle_4(nullptr) & 0xFF) == RYN_ERROR_NOT_CONNECTED) RynDrvConnectLib_0();
}

// ---- The calls -------------------------------------------------------------

using Row = void (*)(Args &);

// Each row makes one call (or one short flow) with documented argument sizes.
const Row kCalls[] = {
    // Result codes, connection, device I/O.
    [](Args &a) { RynResultCode(a.in.u32(), a.out<uint32_t>(), a.out<uint32_t>(), a.out<uint32_t>(), a.out<uint32_t>()); },
    [](Args &a) { RynDrvGetHandle(a.out<OsaHandle>()); },
    [](Args &a) {
        OsaHandle connection = 0;
        RynDrvGetHandle_4(&connection);
        const uint32_t inLength = a.upTo(64), outLength = a.upTo(300);
        OsaDeviceIoControl(connection, 0x220000u | (a.v() & 0x3FFF) << 2, a.bytes(inLength), inLength,
                           a.out(outLength), outLength, a.maybe<uint32_t>());
    },
    [](Args &) {  // the load step against this driver: its version text parsed
        RynDrvReleaseLib_0();
        ryn::runLoadStep();
        RynDrvConnectLib_0();
    },
    [](Args &) {
        RynDrvReleaseLib_0();
        RynNetConnectLib();
        RynDrvReleaseLib();
        RynDrvConnectLib();
    },
    // Enumeration, handles, objects.
    [](Args &a) {
        const DeviceHandle parent = a.h();
        int32_t *iterator = a.out<int32_t>();
        RynDrvIteratorBegin(iterator);
        for (int i = 0; i < 6 && RynDrvIsIteratorEnd(iterator); ++i) RynDrvEnumDeviceType(parent, iterator, a.out<int32_t>());
    },
    [](Args &a) {
        const DeviceHandle parent = a.h();
        int32_t *iterator = a.out<int32_t>();
        RynDrvIteratorBegin_4(iterator);
        for (int i = 0; i < 6 && RynDrvIsIteratorEnd_4(iterator); ++i) RynDrvEnumDeviceType_12(parent, iterator, a.out<int32_t>());
    },
    [](Args &a) {
        const DeviceHandle parent = a.h();
        const auto type = static_cast<int32_t>(a.v());
        int32_t *iterator = a.out<int32_t>();
        *iterator = 0;
        for (int i = 0; i < 6 && RynDrvIsIteratorEnd(iterator); ++i) RynDrvEnumDevice(parent, type, iterator, a.out<uint32_t>());
    },
    [](Args &a) { RynDrvGetDeviceHandle(a.h(), static_cast<int32_t>(a.v()), a.v(), a.maybe<DeviceHandle>()); },
    [](Args &a) { RynDrvOpenPhysicalDevice(a.v(), a.v(), a.v(), a.v(), a.v(), a.out<DeviceHandle>()); },
    [](Args &a) { RynDrvCreateLogicalDevice(a.h(), static_cast<int32_t>(a.v()), a.v(), a.v(), a.out<DeviceHandle>()); },
    [](Args &a) { RynDrvCreatePipe(a.v(), a.out<DeviceHandle>()); },
    [](Args &a) { RynDrvGetState(a.h(), a.out<uint32_t>()); },
    [](Args &a) {
        const auto length = static_cast<int32_t>(a.upTo(512));
        RynDrvConnectPipe(a.h(), a.v(), a.h(), a.v(), a.bytes(static_cast<size_t>(length)), length);
    },
    // Attributes.
    [](Args &a) { RynDrvGetAttributeType(a.h(), static_cast<int32_t>(a.v()), a.out<uint32_t>(), a.out<uint32_t>(), a.out<uint32_t>()); },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynDrvGetAttributeValue(a.h(), static_cast<int32_t>(a.v()), a.out(length), length, a.maybe<uint32_t>());
    },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynDrvGetAttributeValue_20(a.h(), static_cast<int32_t>(a.v()), a.out(length), length, a.maybe<uint32_t>());
    },
    [](Args &a) { RynDrvGetAttributeValueBool(a.h(), static_cast<int32_t>(a.v()), a.out<uint32_t>()); },
    [](Args &a) { RynDrvGetAttributeValueUint32_12(a.h(), static_cast<int32_t>(a.v()), a.out<uint32_t>()); },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynDrvGetAttributeValueSz(a.h(), static_cast<int32_t>(a.v()), a.out<char>(length), length);
    },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynDrvSetAttributeValue(a.h(), static_cast<int32_t>(a.v()), a.bytes(length), length);
    },
    [](Args &a) { RynDrvSetAttributeValueSz(a.h(), static_cast<int32_t>(a.v()), a.text(200)); },
    // Events.
    [](Args &a) { RynDrvCreateEventQueue(a.v(), a.v(), a.out<DeviceHandle>()); },
    [](Args &a) { RynDrvGetEventData(a.h(), a.out<EventData>()); },
    [](Args &a) { RynDrvGetEventData_8(a.h(), a.out<EventData>()); },
    [](Args &a) {
        const uint32_t count = a.upTo(4);
        RynDrvGetEventDataEx(a.h(), a.out<EventData>(count), count, a.out<uint32_t>());
    },
    [](Args &a) {
        const uint32_t count = a.upTo(4);
        RynDrvGetEventDataEx_16(a.h(), a.out<EventData>(count), count, a.out<uint32_t>());
    },
    [](Args &a) { RynDrvEventCode2String(a.h(), a.v(), a.v(), a.out<char>(256)); },
    // Registers, time, result texts.
    [](Args &a) { RynDrvReadReg8(a.h(), a.v(), a.out<uint32_t>()); },
    [](Args &a) { RynDrvReadReg16(a.h(), a.v(), a.out<uint32_t>()); },
    [](Args &a) { RynDrvReadReg32(a.h(), a.v(), a.out<uint32_t>()); },
    [](Args &a) { RynDrvGetCurrentTime(a.out<uint64_t>()); },
    [](Args &a) {
        const uint32_t length = a.upTo(160);
        RynDrvResultCode2String(a.h(), a.v(), a.out<char>(length), length);
    },
    // DSP access and loading.
    [](Args &a) {
        const uint32_t inLength = a.in.chance(1) ? 1985 : a.upTo(100), outSize = a.in.chance(2) ? 1984 : a.upTo(300);
        RynDspIoControl(a.h(), a.in.u16(), a.bytes(inLength), inLength, a.out(outSize), outSize, a.maybe<uint32_t>(),
                        a.v(), a.v());
    },
    [](Args &a) { RynDspReadData(a.h(), a.v(), a.v(), a.v(), a.maybe<uint32_t>(), a.maybe<uint32_t>()); },
    [](Args &a) {
        uint16_t length = 0;
        const DeviceHandle dsp = a.h();
        const uint16_t *words = image(a, length);
        RynDspRunImage(dsp, words, length, a.v());
    },
    [](Args &a) { RynDspRunSpm(a.h(), a.in.u8() % 16); },
    [](Args &a) { RynDspRunSpm_8(a.h(), a.in.u8() % 16); },
    [](Args &a) { RynDspRunProgram(a.h(), "/nonexistent/rynspm1.out", ""); },
    // T1/E1.
    [](Args &a) { RynT1GetConfiguration(a.h(), a.out<T1Configuration>()); },
    [](Args &a) { RynE1GetConfiguration(a.h(), a.out<E1Configuration>()); },
    [](Args &a) { RynT1E1GetLayer1Status(a.h(), a.out<uint32_t>()); },
    [](Args &a) { RynT1GetRobBitData(a.h(), a.out<RobBitData>()); },
    [](Args &a) { RynE1GetABCDBit(a.h(), a.out<ABCDBitData>()); },
    [](Args &a) { RynE1GetSaBit(a.h(), a.v(), a.out<uint8_t>()); },
    [](Args &a) { RynE1GetSiBit(a.h(), a.out<uint8_t>(), a.out<uint8_t>()); },
    [](Args &a) { RynT1GetChannelizedRobBitData(a.h(), a.v(), a.out<uint8_t>()); },
    [](Args &a) { RynE1GetChannelizedABCDBit(a.h(), a.v(), a.out<uint8_t>()); },
    [](Args &a) { RynT1E1GetLayer1StatusEx(a.h(), a.out<Layer1StatusEx>()); },
    [](Args &a) { RynT1SetConfiguration(a.h(), a.bytes<T1Configuration>(1)); },
    [](Args &a) { RynE1SetABCDBit(a.h(), a.bytes<ABCDBitData>(1)); },
    [](Args &a) { RynBriGetLineStatus(a.h(), a.out<uint32_t>()); },
    // POTS and SLIC.
    [](Args &a) { RynPotsGetLiMode(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) {
        const uint32_t count = a.upTo(130);
        RynPotsPulseDial(a.h(), a.v(), a.v(), a.v(), a.bytes(count), count, a.v(), a.v());
    },
    [](Args &a) { RynSlicGetHookState(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicStartRingState(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicStopRingState(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicEnableAudio(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicSignalDisconnectState(a.h(), a.v(), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicSetUserName(a.h(), a.text(17, 'a'), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicSetPhoneNumber(a.h(), a.text(11), a.maybe<uint32_t>()); },
    [](Args &a) { RynSlicSendCallerID(a.h(), a.maybe<uint32_t>()); },
    // JTAG scans.
    [](Args &a) {
        const char *input = a.text(80);
        RynJtagScanIr(a.h(), a.v(), input, a.out<char>(std::strlen(input) + 1));
    },
    [](Args &a) {
        const char *input = a.text(80);
        RynJtagScanDr(a.h(), a.v(), input, a.out<char>(std::strlen(input) + 1));
    },
    // HDLC and SS7.
    [](Args &a) {
        const uint32_t size = a.upTo(300);
        RynHdlcReadData(a.h(), a.out(size), size, a.maybe<uint32_t>(), a.maybe<uint32_t>(), a.maybe<uint32_t>(),
                        a.maybe<uint64_t>());
    },
    [](Args &a) {
        RynHdlcSS7GetReceiveStatus(a.h(), a.maybe<uint32_t>(), a.maybe<uint32_t>(), a.maybe<uint32_t>(),
                                   a.in.chance(2) ? nullptr : a.out<uint8_t>(3));
    },
    [](Args &a) { RynHdlcSS7GetFilter(a.h(), a.maybe<uint32_t>()); },
    [](Args &a) { RynHdlcReadDataEx(a.h(), a.v(), a.v(), a.v(), a.v(), a.maybe<uint32_t>()); },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynHdlcSendData(a.h(), a.bytes(length), length, a.v(), a.v());
    },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        const uint8_t *data = a.bytes(length);
        RynHdlcSS7SendData(a.h(), data, length, a.bytes(3), a.v(), a.v());
    },
    [](Args &a) {
        const uint32_t length = a.upTo(12);
        RynHdlcStartRepeatData(a.h(), a.bytes(length), length, a.v(), a.v());
    },
    // Raw data and burst.
    [](Args &a) {
        const uint32_t size = a.upTo(300);
        RynRawDataReadData(a.h(), a.out(size), size, a.maybe<uint32_t>(), a.maybe<uint32_t>());
    },
    [](Args &a) {
        const uint32_t length = a.upTo(300);
        RynRawDataSendData(a.h(), a.bytes(length), length, a.v(), a.v());
    },
    [](Args &a) {
        uint32_t *length = a.out<uint32_t>();
        *length = a.upTo(600);
        RynBurstSendData(a.h(), a.v(), a.bytes(*length), length);
    },
    [](Args &a) {
        uint32_t *length = a.out<uint32_t>();
        *length = a.upTo(600);
        RynBurstInitSendBuffer(a.h(), a.v(), a.bytes(*length), length);
    },
    [](Args &a) {
        uint32_t *length = a.out<uint32_t>();
        *length = a.upTo(600);
        RynBurstReadDataEx(a.h(), a.v(), a.out(*length), length, a.maybe<uint64_t>(), a.maybe<uint64_t>());
    },
    [](Args &a) {
        uint32_t *length = a.out<uint32_t>();
        *length = a.upTo(600);
        RynBurstReadData(a.h(), a.v(), a.out(*length), length);
    },
    [](Args &a) {
        uint32_t *length = a.out<uint32_t>();
        *length = a.upTo(600);
        RynBurstReceiveData(a.h(), a.v(), a.out(*length), length);
    },
    // Tone generators and detectors.
    [](Args &a) { RynToneValSamplerReadData(a.h(), a.out<uint16_t>()); },
    [](Args &a) { RynToneReadVal(a.h(), a.out<uint16_t>()); },
    [](Args &a) { RynToneSilenceDetectorStatus(a.h(), a.out<uint32_t>()); },
    [](Args &a) { RynToneDtmfDetectorStatus(a.h(), a.out<uint8_t>()); },
    [](Args &a) { RynToneDialtoneDetectorStatus(a.h(), a.out<uint32_t>()); },
    [](Args &a) { RynToneMfDetectorStatus(a.h(), a.out<uint8_t>()); },
    [](Args &a) { RynToneDualDetectorStatus(a.h(), a.out<uint8_t>()); },
    [](Args &a) { RynToneSingleDetectorStatus(a.h(), a.out<uint8_t>()); },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(7)) - 1;
        RynToneSineWaveGeneratorInit(a.h(), a.v(), a.bytes<SineToneParams>(count < 0 ? 0 : static_cast<size_t>(count)),
                                     count, a.v());
    },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(8)) - 1;
        RynToneDualDetectorInit(a.h(), a.v(), a.bytes<uint32_t>(count < 0 ? 0 : static_cast<size_t>(count)), count,
                                a.v(), a.v(), a.in.u16());
    },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(130));
        RynToneDtmfDial(a.h(), a.bytes<char>(static_cast<size_t>(count)), count, a.v(), a.v());
    },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(130));
        RynToneSequenceSend(a.h(), a.bytes<uint32_t>(static_cast<size_t>(count)), count, a.v(), a.v());
    },
    // Telephony blocks and the DSP-driven POTS line.
    [](Args &a) { RynCstVoiceActivityDetectorStatus(a.h(), a.out<uint32_t>()); },
    [](Args &a) { RynCstDtmfDetectorStatus(a.h(), a.out<uint8_t>()); },
    [](Args &a) { RynCstCptDetectorStatus(a.h(), a.out<uint32_t>()); },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(130));
        RynCstDtmfDial(a.h(), a.bytes<char>(static_cast<size_t>(count)), count, a.v(), a.v());
    },
    [](Args &a) {
        const auto count = static_cast<int32_t>(a.upTo(130)) - 1;
        const size_t n = count < 0 ? 0 : static_cast<size_t>(count);
        const DeviceHandle handle = a.h();
        const uint32_t *items = a.bytes<uint32_t>(n);
        RynCstVoiceMixerInitEX(handle, items, a.v(), a.bytes<uint16_t>(n), a.in.u16(), count);
    },
    [](Args &a) {
        const DeviceHandle handle = a.h();
        const CptDetectorConfig *config = cptConfig(a);
        RynCstCptDetectorInitEx(handle, a.v(), a.v(), config, a.v());
    },
    [](Args &a) {
        int16_t *params = a.bytes<int16_t>(13);
        params[0] = 13;
        RynCstVoiceActivityDetectorInitEx(a.h(), params, a.v());
    },
    [](Args &a) { RynCstPotsWriteDaa(a.h(), a.v(), a.v(), a.in.u8(), a.in.u8(), a.out<uint32_t>()); },
    [](Args &a) { RynCstPotsInit(a.h(), a.v(), static_cast<int32_t>(a.in.u8() % 8) - 1); },
    // Application event queues (the library's own records).
    [](Args &a) {
        OsaHandle event = 0;
        RynDrvCreateEvent(&event);
        int32_t *queue = a.out<int32_t>();
        if (RynCreateAppEventQueue(a.upTo(4), event, queue) == 0) {
            for (uint32_t n = a.upTo(6); n != 0; --n) RynSetAppEventDataEx(*queue, a.v(), a.v(), 0, 0, 0, 0, a.v(), 0);
            RynGetAppEventData(*queue, a.out<EventData>());
            const auto maximum = static_cast<int32_t>(a.upTo(4));
            RynGetAppEventDataEx(*queue, a.out<EventData>(static_cast<size_t>(maximum)), maximum, a.out<uint32_t>());
            RynCloseAppEventQueue(*queue);
        }
        RynDrvCloseEvent(event);
    },
};

// Levels of older drivers, for the translations of the undecorated calls.
constexpr uint32_t kLevels[] = {0, 10120, 10125, 10126, 10128, 10130, 10137, 10139, 10142, 10147, 21201};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ryn::osa::registerDevice("RYNDRV", &kDriver);
    ryn::osa::registerDevice("RYNNET", &kDriver);
    RynDrvReleaseLib_0();
    RynDrvConnectLib_0();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Stream in(data, size);
    ryn::setDriverVersionLevel(kLevels[in.pick(std::size(kLevels))]);
    script = &in;
    for (uint32_t n = 0; n < kMaxCalls && !in.empty(); ++n) {
        Args args(in);
        kCalls[in.pick(std::size(kCalls))](args);
    }
    script = nullptr;
    reconnect();
    return 0;
}
