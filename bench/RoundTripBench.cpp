// One request round trip through the library to an in-process null driver,
// next to the null driver's own cost for the same request.
#include <benchmark/benchmark.h>

#include <cstring>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "NullDriver.h"

namespace {

using ryn::bench::kNullDriver;

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
    ryn::bench::connectToNullDriver();
    for (auto _ : state) {
        ryn::Request<20, 12> request(0x811);
        benchmark::DoNotOptimize(request.put<16>(0x10000001).send());
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_NullDriverAlone)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_LibraryRoundTrip)->Threads(1)->Threads(2)->UseRealTime();
