// Program images: the input, as little-endian 16-bit words, shipped to a DSP
// by RynDspRunImage through a driver inside the process that reads every
// byte it is given (request blocks and the caller's buffers they name),
// checks what a block write may carry, and answers every request with
// success.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "RynHwDll.h"
#include "osa/Device.h"

namespace {

constexpr DeviceHandle kDsp = 0x10000011;
constexpr uint32_t kBlockWrite = 0x99C;
constexpr uint32_t kBlockBytes = 256;
constexpr uint32_t kRecordPage = 10;

volatile uint8_t sink;

void touch(const void *bytes, uint32_t length) {
    uint8_t sum = 0;
    for (uint32_t i = 0; i < length; ++i) sum = static_cast<uint8_t>(sum + static_cast<const uint8_t *>(bytes)[i]);
    sink = sum;
}

uint32_t field(const RynDriverRequest *request, uint32_t at) {
    uint32_t value = 0;
    std::memcpy(&value, static_cast<const uint8_t *>(request->input) + at, 4);
    return value;
}

void *driverOpen(const char *) {
    static int instance;
    return &instance;
}

int driverControl(void *, const RynDriverRequest *request, uint32_t *returned) {
    touch(request->input, request->inputLength);
    for (uint32_t i = 0; i < request->bufferCount; ++i) touch(request->buffers[i].address, request->buffers[i].length);
    // A block write carries at most 256 data bytes: 128 words of a word
    // record (to page 10) or 256 bytes of a byte record.
    if (request->code == (0x220000 | kBlockWrite << 2)) {
        const uint32_t limit = field(request, 32) == kRecordPage ? kBlockBytes / 2 : kBlockBytes;
        if (request->inputLength != 36 + kBlockBytes || field(request, 24) > limit) std::abort();
    }
    std::memset(static_cast<uint8_t *>(request->output) + request->outputLength - 4, 0, 4);
    *returned = request->outputLength;
    return 1;
}

void driverClose(void *) {}

const RynUserDriver kDriver{RYN_USER_DRIVER_ABI, driverOpen, driverControl, driverClose};

}  // namespace

// The settling time after the hold, 50 ms a run, is left out (the link wraps
// the loader's call of OsaThreadSleep).
extern "C" void __wrap_OsaThreadSleep_4(uint32_t) {}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    if (!ryn::osa::registerDevice("RYNDRV", &kDriver) || RynDrvConnectLib_0() != 0) std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<uint16_t> image(std::min<size_t>(size / 2, 0xFFFF));
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<uint16_t>(data[2 * i] | data[2 * i + 1] << 8);
    RynDspRunImage_16(kDsp, image.data(), static_cast<uint16_t>(image.size()), 0x1000);
    return 0;
}
