// Burst transfers of 64 B, 1 KiB and 8 KiB through an in-process driver,
// next to a plain memcpy of the same size: the library allocates one block
// and copies the data once per call, so a transfer should cost at most about
// two copies of its data.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "osa/Device.h"
#include "NullDriver.h"

namespace {

constexpr DeviceHandle kChannel = 0x20000001;

void BM_Memcpy(benchmark::State &state) {
    const auto size = static_cast<size_t>(state.range(0));
    std::vector<uint8_t> from(size, 0x5A), to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

void BM_BurstSend(benchmark::State &state) {
    ryn::bench::connectToNullDriver();
    const auto size = static_cast<uint32_t>(state.range(0));
    std::vector<uint8_t> data(size, 0x5A);
    for (auto _ : state) {
        uint32_t length = size;
        benchmark::DoNotOptimize(RynBurstSendData_16(kChannel, 0, data.data(), &length));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// The null driver's reply reports no data, so this read copies nothing out:
// it shows the cost of the zero-filled reply block and the exchange.
void BM_BurstReadEmpty(benchmark::State &state) {
    ryn::bench::connectToNullDriver();
    const auto size = static_cast<uint32_t>(state.range(0));
    std::vector<uint8_t> buffer(size);
    for (auto _ : state) {
        uint32_t length = size;
        benchmark::DoNotOptimize(RynBurstReadData_16(kChannel, 0, buffer.data(), &length));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// As the null driver, but a burst read reply reports a full buffer, so that
// the library copies every byte out. It is reached as "RYNNET" while the
// benchmark runs; the null driver's connection is restored afterwards.
int fullControl(void *device, const RynDriverRequest *request, uint32_t *returned) {
    ryn::bench::nullControl(device, request, returned);
    if (request->code == ryn::ioControlCode(0x99B)) {
        auto *reply = static_cast<uint8_t *>(request->output);
        ryn::store32(reply + 8, request->outputLength - 32);
        ryn::store32(reply + 28, 0);
    }
    return 1;
}
const RynUserDriver kFullDriver{RYN_USER_DRIVER_ABI, ryn::bench::nullOpen, fullControl, ryn::bench::nullClose};

void BM_BurstReadFull(benchmark::State &state) {
    ryn::bench::connectToNullDriver();
    static const bool registered = ryn::osa::registerDevice("RYNNET", &kFullDriver);
    RynDrvReleaseLib_0();
    if (!registered || RynNetConnectLib_0() != 0) state.SkipWithError("no full-reply driver");
    const auto size = static_cast<uint32_t>(state.range(0));
    std::vector<uint8_t> buffer(size);
    uint32_t copied = 0;
    for (auto _ : state) {
        uint32_t length = size;
        benchmark::DoNotOptimize(RynBurstReadData_16(kChannel, 0, buffer.data(), &length));
        benchmark::ClobberMemory();
        copied = length;
    }
    if (copied != size && state.iterations() != 0) state.SkipWithError("the read did not copy a full buffer");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
    RynDrvReleaseLib_0();
    RynDrvConnectLib_0();
}

}  // namespace

BENCHMARK(BM_Memcpy)->Arg(64)->Arg(1024)->Arg(8192);
BENCHMARK(BM_BurstSend)->Arg(64)->Arg(1024)->Arg(8192);
BENCHMARK(BM_BurstReadEmpty)->Arg(64)->Arg(1024)->Arg(8192);
BENCHMARK(BM_BurstReadFull)->Arg(64)->Arg(1024)->Arg(8192);
