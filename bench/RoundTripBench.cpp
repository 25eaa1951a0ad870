// One request round trip through the library to an in-process null driver,
// next to the null driver's own cost for the same request.
#include <benchmark/benchmark.h>

#include <cstring>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "osa/Device.h"

namespace {

// Answers every request with a zero result in the last field of the reply.
void *nullOpen(const char *) {
    static int instance;
    return &instance;
}
int nullControl(void *, const RynDriverRequest *request, uint32_t *returned) {
    std::memset(static_cast<uint8_t *>(request->output) + request->outputLength - 4, 0, 4);
    *returned = request->outputLength;
    return 1;
}
void nullClose(void *) {}
const RynUserDriver kNullDriver{RYN_USER_DRIVER_ABI, nullOpen, nullControl, nullClose};

struct Connected {
    Connected() {
        ryn::osa::registerDevice("RYNDRV", &kNullDriver);
        RynDrvConnectLib_0();
    }
};
void connectOnce() { static Connected connected; }

void BM_NullDriverAlone(benchmark::State &state) {
    uint8_t request[20] = {};
    uint8_t reply[12] = {};
    const RynDriverRequest call{ryn::ioControlCode(0x811), request, sizeof request, reply, sizeof reply, nullptr, 0};
    void *device = kNullDriver.open("RYNDRV");
    // Called through a pointer the compiler cannot see through, as the
    // library calls it.
    int (*volatile control)(void *, const RynDriverRequest *, uint32_t *) = kNullDriver.control;
    for (auto _ : state) {
        uint32_t returned = 0;
        benchmark::DoNotOptimize(control(device, &call, &returned));
        benchmark::DoNotOptimize(reply);
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_LibraryRoundTrip(benchmark::State &state) {
    connectOnce();
    for (auto _ : state) {
        ryn::Request<20, 12> request(0x811);
        benchmark::DoNotOptimize(request.put<16>(0x10000001).send());
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_NullDriverAlone)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_LibraryRoundTrip)->Threads(1)->Threads(2)->UseRealTime();
