// The virtual board through the shared library, as an application sees it:
// one request's round trip into the driver module, and the signal processing
// of its DSP blocks against real time (8000 samples a second).
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"

namespace {

struct Connection {
    Connection() { RynDrvConnectLib(); }
    ~Connection() { RynDrvReleaseLib(); }
    DeviceHandle dsp() const {
        DeviceHandle handle = 0;
        RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_DSP, 0, &handle);
        return handle;
    }
    DeviceHandle block(int32_t type) const {
        DeviceHandle handle = 0;
        RynDrvCreateLogicalDevice(dsp(), type, 0, 0, &handle);
        return handle;
    }
};

void BM_BoardRoundTrip(benchmark::State &state) {
    Connection connection;
    const DeviceHandle dsp = connection.dsp();
    uint32_t value = 0;
    for (auto _ : state) benchmark::DoNotOptimize(RynDrvGetState(dsp, &value));
}
BENCHMARK(BM_BoardRoundTrip);

// One second of DTMF digits (70 ms tones, 70 ms pauses) through a detector.
void BM_DtmfDetectorSecond(benchmark::State &state) {
    Connection connection;
    const DeviceHandle detector = connection.block(RYN_VB_BLOCK_DTMF_DETECTOR);
    std::vector<int16_t> second(8000);
    for (size_t n = 0; n < second.size(); ++n)
        if (n % 1120 < 560)
            second[n] = static_cast<int16_t>(
                2000 * (std::sin(2 * M_PI * 770 * n / 8000.0) + std::sin(2 * M_PI * 1336 * n / 8000.0)));
    for (auto _ : state)
        RynDrvSetAttributeValue(detector, RYN_VB_ATTR_AUDIO_IN, second.data(),
                                static_cast<uint32_t>(second.size() * 2));
    state.counters["audio_seconds_per_second"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DtmfDetectorSecond)->Unit(benchmark::kMicrosecond);

// "1234#" dialled into a connected detector: synthesis and detection of
// 0.8 s, the sample clock stopped and stepped through the dial's 80 frames.
void BM_DialIntoDetector(benchmark::State &state) {
    Connection connection;
    const DeviceHandle dialler = connection.block(RYN_VB_BLOCK_DTMF_DIALLER),
                       detector = connection.block(RYN_VB_BLOCK_DTMF_DETECTOR);
    DeviceHandle board = 0;
    RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_BOARD, 0, &board);
    RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_RATE, RYN_VB_SAMPLE_CLOCK_STOPPED);
    RynDrvConnectLogicalDevice(dialler, 0, detector, 0);
    for (auto _ : state) {
        RynToneDtmfDial(dialler, "1234#", 5, 0, 0);
        RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_STEP, 80);
    }
}
BENCHMARK(BM_DialIntoDetector)->Unit(benchmark::kMicrosecond);

// A full T1 span of calls on the sample clock: 24 sine-wave generators on
// span 0's time slots, heard by 24 tone detectors on span 1's, through the
// G.711 codec. One iteration is one second of board time (100 frames,
// stepped); `real_time_factor` is how many times faster than real time the
// board runs them.
void BM_SpanOfCallsOnTheClock(benchmark::State &state) {
    Connection connection;
    DeviceHandle board = 0;
    RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_BOARD, 0, &board);
    RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_RATE, RYN_VB_SAMPLE_CLOCK_STOPPED);
    for (uint32_t span = 0; span < 2; ++span) {
        DeviceHandle handle = 0;
        RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_T1E1, span, &handle);
        for (uint32_t slot = 1; slot <= 24; ++slot) {
            DeviceHandle pipe = 0, block = 0;
            RynDrvCreatePipe(0, &pipe);
            RynDrvConnectPipe(pipe, 0, handle, slot, nullptr, 0);
            const double hertz = 400.0 + 50.0 * slot;
            const uint32_t whole = static_cast<uint32_t>(hertz);
            if (span == 0) {
                const SineToneParams tone{hertz, -10.0, 0.0};
                block = connection.block(RYN_VB_BLOCK_SINE_WAVE_GENERATOR);
                RynToneSineWaveGeneratorInit(block, 0, &tone, 1, 0);
                RynDrvConnectLogicalDevice(block, 0, pipe, 0);
            } else {
                block = connection.block(RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR);
                RynToneSingleDetectorInit(block, 0, &whole, 1, 0, 0, 0);
                RynDrvConnectLogicalDevice(pipe, 0, block, 0);
            }
        }
    }
    for (auto _ : state) RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_STEP, 100);
    state.counters["real_time_factor"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SpanOfCallsOnTheClock)->Unit(benchmark::kMillisecond);

}  // namespace
