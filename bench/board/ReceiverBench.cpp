// The board's receivers against spandsp's, on the same samples in the same
// run: DTMF, MF (R1) and Bell 202 FSK (caller identification) through the
// board's detector blocks, and a channel density of 256 DTMF receivers fed
// 20 ms frames.
//
// Each benchmark times both sides itself, alternating, in process CPU time
// (every thread of the process), and checks on every pass that both found
// what the signal holds: a speed figure of a receiver that finds nothing is
// worthless. Counters:
//   board_ms_per_s, spandsp_ms_per_s  CPU milliseconds per second of audio
//   vs_spandsp                        board time / spandsp time (below 1: the board is faster)
//   board_found, spandsp_found        what each side found in a pass (digits, message bytes)
//   expected                          what the signal holds
#include <benchmark/benchmark.h>
#include <spandsp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <numbers>
#include <numeric>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"
#include "Signal.h"

namespace {

constexpr size_t kRate = RYN_VB_SAMPLE_RATE;
constexpr size_t kPassSamples = 2 * kRate;  // 2 s: one audio-in call on the board
static_assert(kPassSamples * sizeof(int16_t) <= RYN_VB_AUDIO_MAX_BYTES);

// Process CPU time, in microseconds on Linux.
double cpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// ---- Signals ------------------------------------------------------------------

// The peak of a sine at a level in dBm0, as spandsp reckons it (a full-scale
// sine is +3.14 dBm0).
double peakAt(double dbm0) { return 32767.0 * std::pow(10.0, (dbm0 - 3.14) / 20.0); }

size_t samplesOf(double ms) { return static_cast<size_t>(std::lround(ms * kRate / 1000.0)); }

void appendSilence(std::vector<int16_t> &signal, size_t samples) { signal.insert(signal.end(), samples, 0); }

// Sines of the same peak from phase 0, summed.
void appendTones(std::vector<int16_t> &signal, std::initializer_list<double> hertz, double peak, size_t samples) {
    for (size_t n = 0; n < samples; ++n) {
        double value = 0;
        for (double f : hertz) value += peak * std::sin(2 * std::numbers::pi * f * static_cast<double>(n) / kRate);
        signal.push_back(static_cast<int16_t>(std::lround(value)));
    }
}

// Uniform white noise of a fixed seed, at most `amplitude` either way.
void addNoise(std::vector<int16_t> &signal, int amplitude) {
    uint32_t state = 0x12345678u;
    for (int16_t &sample : signal) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const int noise = static_cast<int>(state % (2u * amplitude + 1)) - amplitude;
        sample = static_cast<int16_t>(std::clamp(sample + noise, -32768, 32767));
    }
}

constexpr char kDtmfKeys[] = "123A456B789C*0#D";

// The 16 keys in 2 s: 50 ms tones with 75 ms pauses (half of each before and
// after the tone), each tone at -16 dBm0, and noise some 50 dB below.
std::vector<int16_t> dtmfSignal() {
    static constexpr double kRows[] = {697, 770, 852, 941}, kColumns[] = {1209, 1336, 1477, 1633};
    std::vector<int16_t> signal;
    for (size_t key = 0; key < 16; ++key) {
        appendSilence(signal, samplesOf(37.5));
        appendTones(signal, {kRows[key / 4], kColumns[key % 4]}, peakAt(-16), samplesOf(50));
        appendSilence(signal, samplesOf(37.5));
    }
    addNoise(signal, 100);
    signal.resize(kPassSamples);
    return signal;
}

// R1 as a register sender plays it: KP 100 ms, the digits and ST 68 ms,
// 68 ms gaps, each tone at -16 dBm0; silence up to 2 s. Both receivers
// report KP as '*' and ST as '#'.
constexpr char kMfDigits[] = "*1234567890#";

std::vector<int16_t> mfSignal() {
    struct Pair {
        char digit;
        double low, high;
    };
    static constexpr Pair kPairs[] = {{'1', 700, 900},   {'2', 700, 1100},  {'3', 900, 1100},  {'4', 700, 1300},
                                      {'5', 900, 1300},  {'6', 1100, 1300}, {'7', 700, 1500},  {'8', 900, 1500},
                                      {'9', 1100, 1500}, {'0', 1300, 1500}, {'*', 1100, 1700}, {'#', 1500, 1700}};
    std::vector<int16_t> signal;
    for (const char *digit = kMfDigits; *digit != '\0'; ++digit) {
        const Pair pair =
            *std::find_if(std::begin(kPairs), std::end(kPairs), [digit](const Pair &p) { return p.digit == *digit; });
        appendSilence(signal, samplesOf(68));
        appendTones(signal, {pair.low, pair.high}, peakAt(-16), samplesOf(*digit == '*' ? 100 : 68));
    }
    signal.resize(kPassSamples);
    return signal;
}

// A caller-identification message (multiple data message format): date and
// time, number, name, and the checksum.
std::vector<uint8_t> callerIdMessage() {
    std::vector<uint8_t> message{0x80, 0};
    for (const auto &[type, text] :
         {std::pair<uint8_t, std::string>{0x01, "11230915"}, {0x02, "5551234567"}, {0x07, "RYN BENCHMARK"}}) {
        message.push_back(type);
        message.push_back(static_cast<uint8_t>(text.size()));
        for (char c : text) message.push_back(static_cast<uint8_t>(c));
    }
    message[1] = static_cast<uint8_t>(message.size() - 2);
    uint8_t sum = 0;
    for (uint8_t byte : message) sum = static_cast<uint8_t>(sum + byte);
    message.push_back(static_cast<uint8_t>(-sum));
    return message;
}

constexpr size_t kFskBursts = 2;

// Two caller-identification bursts in 2 s, Bell 202 (mark 1200 Hz, space
// 2200 Hz, 1200 baud, phase-continuous) at -13 dBm0: 300 bits of channel
// seizure, 180 of mark, the message (start bit, 8 data bits least
// significant first, stop bit), a little mark; silence around.
std::vector<int16_t> fskSignal(const std::vector<uint8_t> &message) {
    std::vector<int> bits;
    for (int n = 0; n < 300; ++n) bits.push_back(n & 1);
    bits.insert(bits.end(), 180, 1);
    for (uint8_t byte : message) {
        bits.push_back(0);
        for (int n = 0; n < 8; ++n) bits.push_back((byte >> n) & 1);
        bits.push_back(1);
    }
    bits.insert(bits.end(), 10, 1);
    const double peak = peakAt(-13);
    std::vector<int16_t> signal;
    for (size_t burst = 0; burst < kFskBursts; ++burst) {
        appendSilence(signal, samplesOf(50));
        const size_t start = signal.size();
        double phase = 0;
        for (size_t bit = 0; bit < bits.size(); ++bit) {
            const size_t end = start + (bit + 1) * kRate / 1200;
            const double step = 2 * std::numbers::pi * (bits[bit] ? 1200 : 2200) / kRate;
            for (; signal.size() < end; phase += step)
                signal.push_back(static_cast<int16_t>(std::lround(peak * std::sin(phase))));
        }
        signal.resize(kPassSamples * (burst + 1) / kFskBursts);
    }
    return signal;
}

// How many bytes of `found` are copies of `message`, each whole copy counted.
size_t messageBytesIn(const std::string &found, const std::vector<uint8_t> &message) {
    const std::string wanted(message.begin(), message.end());
    size_t bytes = 0;
    for (size_t at = found.find(wanted); at != std::string::npos; at = found.find(wanted, at + wanted.size()))
        bytes += wanted.size();
    return bytes;
}

// ---- The board through the library ----------------------------------------------

// A detector block on DSP 0, with a driver event queue for its events.
class BoardDetector {
public:
    explicit BoardDetector(int32_t type) {
        RynDrvConnectLib();
        RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_DSP, 0, &dsp_);
        RynDrvCreateLogicalDevice(dsp_, type, 0, 0, &block_);
        RynDrvCreateEvent(&event_);
        RynDrvCreateEventQueue(dsp_, event_, &queue_);
    }
    ~BoardDetector() {
        RynDrvClose(queue_);
        RynDrvCloseEvent(event_);
        RynDrvClose(block_);
        RynDrvReleaseLib();
    }
    BoardDetector(const BoardDetector &) = delete;
    BoardDetector &operator=(const BoardDetector &) = delete;

    DeviceHandle block() const { return block_; }
    bool ready() const { return block_ != 0 && queue_ != 0; }

    // The samples in calls of at most 2 s.
    bool feed(std::span<const int16_t> samples) const {
        for (size_t at = 0; at < samples.size(); at += kPassSamples) {
            const size_t count = std::min(kPassSamples, samples.size() - at);
            if (RynDrvSetAttributeValue(block_, RYN_VB_ATTR_AUDIO_IN, samples.data() + at,
                                        static_cast<uint32_t>(count * sizeof(int16_t))) != 0)
                return false;
        }
        return true;
    }

    // Word 5 of each queued event `code` of the block, in order.
    std::string take(uint32_t code) const {
        std::string found;
        EventData record{};
        while (RynDrvGetEventData(queue_, &record) == 0)
            if (record.word[3] == code && record.word[4] == block_) found.push_back(static_cast<char>(record.word[5]));
        return found;
    }

private:
    DeviceHandle dsp_ = 0, block_ = 0, queue_ = 0;
    OsaHandle event_ = 0;
};

// ---- spandsp ------------------------------------------------------------------

void appendDigits(void *user, const char *digits, int count) {
    static_cast<std::string *>(user)->append(digits, count);
}

// The messages of spandsp's caller-identification receiver (Bell 202 FSK),
// each delivered once its checksum holds, without the checksum: the bytes
// of those that are `message`, checksum included.
struct CallerIdBytes {
    std::vector<uint8_t> message;
    size_t bytes = 0;

    static void put(void *user, const uint8_t *received, int length) {
        auto &self = *static_cast<CallerIdBytes *>(user);
        if (length >= 0 && static_cast<size_t>(length) + 1 == self.message.size() &&
            std::equal(received, received + length, self.message.begin()))
            self.bytes += self.message.size();
    }
};

// ---- The comparison -------------------------------------------------------------

// One pass of a side: runs the 2 s (timed), then says how much it found.
struct Side {
    std::function<void()> run;
    std::function<size_t()> found;
};

// Both sides pass after pass, alternating which goes first; every pass of
// each must find `expected`.
void compare(benchmark::State &state, const Side &board, const Side &spandsp, size_t expected) {
    double boardSeconds = 0, spandspSeconds = 0;
    size_t boardFound = expected, spandspFound = expected, passes = 0;
    const auto timed = [](const Side &side, double &seconds, size_t &found) {
        const double start = cpuSeconds();
        side.run();
        seconds += cpuSeconds() - start;
        found = std::min(found, side.found());
    };
    for (auto _ : state) {
        if (passes++ % 2 == 0) {
            timed(board, boardSeconds, boardFound);
            timed(spandsp, spandspSeconds, spandspFound);
        } else {
            timed(spandsp, spandspSeconds, spandspFound);
            timed(board, boardSeconds, boardFound);
        }
    }
    const double audioSeconds = static_cast<double>(passes * kPassSamples) / kRate;
    state.counters["board_ms_per_s"] = 1e3 * boardSeconds / audioSeconds;
    state.counters["spandsp_ms_per_s"] = 1e3 * spandspSeconds / audioSeconds;
    state.counters["vs_spandsp"] = boardSeconds / spandspSeconds;
    state.counters["board_found"] = static_cast<double>(boardFound);
    state.counters["spandsp_found"] = static_cast<double>(spandspFound);
    state.counters["expected"] = static_cast<double>(expected);
    if (boardFound != expected || spandspFound != expected)
        state.SkipWithError(boardFound != expected ? "the board missed part of the signal"
                                                   : "spandsp missed part of the signal");
}

// Digits found in a pass: those that match `expected` position by position,
// 0 unless exactly as many came.
size_t digitsMatching(const std::string &found, const std::string &expected) {
    if (found.size() != expected.size()) return 0;
    return static_cast<size_t>(
        std::inner_product(found.begin(), found.end(), expected.begin(), 0, std::plus<>(), std::equal_to<>()));
}

void BM_Dtmf(benchmark::State &state) {
    const std::vector<int16_t> signal = dtmfSignal();
    BoardDetector board(RYN_VB_BLOCK_DTMF_DETECTOR);
    if (!board.ready() || RynToneDtmfDetectorInit(board.block(), 0, 0) != 0)
        return state.SkipWithError("no DTMF detector on the board");
    std::string digits;
    dtmf_rx_state_t *rx = dtmf_rx_init(nullptr, appendDigits, &digits);
    compare(
        state,
        {[&] { board.feed(signal); }, [&] { return digitsMatching(board.take(RYN_VB_EVENT_DTMF_DIGIT), kDtmfKeys); }},
        {[&] { dtmf_rx(rx, signal.data(), static_cast<int>(signal.size())); },
         [&] { return digitsMatching(std::exchange(digits, {}), kDtmfKeys); }},
        std::size(kDtmfKeys) - 1);
    dtmf_rx_free(rx);
}
BENCHMARK(BM_Dtmf)->Unit(benchmark::kMillisecond);

void BM_Mf(benchmark::State &state) {
    const std::vector<int16_t> signal = mfSignal();
    BoardDetector board(RYN_VB_BLOCK_MF_DETECTOR);
    if (!board.ready() || RynToneMfDetectorInit(board.block(), 0, 0, 0, 0, 0) != 0)
        return state.SkipWithError("no MF detector on the board");
    std::string digits;
    bell_mf_rx_state_t *rx = bell_mf_rx_init(nullptr, appendDigits, &digits);
    compare(state,
            {[&] { board.feed(signal); }, [&] { return digitsMatching(board.take(RYN_VB_EVENT_MF_DIGIT), kMfDigits); }},
            {[&] { bell_mf_rx(rx, signal.data(), static_cast<int>(signal.size())); },
             [&] { return digitsMatching(std::exchange(digits, {}), kMfDigits); }},
            std::size(kMfDigits) - 1);
    bell_mf_rx_free(rx);
}
BENCHMARK(BM_Mf)->Unit(benchmark::kMillisecond);

void BM_FskCallerId(benchmark::State &state) {
    const std::vector<uint8_t> message = callerIdMessage();
    const std::vector<int16_t> signal = fskSignal(message);
    BoardDetector board(RYN_VB_BLOCK_FSK_DETECTOR);
    if (!board.ready() || RynToneFskDetectorInit(board.block(), RYN_VB_FSK_BELL202) != 0)
        return state.SkipWithError("no FSK detector on the board");
    CallerIdBytes bytes{message};
    adsi_rx_state_t *rx = adsi_rx_init(nullptr, ADSI_STANDARD_CLASS, CallerIdBytes::put, &bytes);
    compare(state,
            {[&] { board.feed(signal); }, [&] { return messageBytesIn(board.take(RYN_VB_EVENT_DATA_BYTE), message); }},
            {[&] { adsi_rx(rx, signal.data(), static_cast<int>(signal.size())); },
             [&] { return std::exchange(bytes.bytes, 0); }},
            kFskBursts * message.size());
    adsi_rx_free(rx);
}
BENCHMARK(BM_FskCallerId)->Unit(benchmark::kMillisecond);

// ---- Channel density --------------------------------------------------------------

constexpr size_t kChannels = 256, kFrame = 160, kFramesPerPass = kPassSamples / kFrame;
// Channels start 4 keys (500 ms, 25 frames) apart, in a pause.
constexpr size_t kChannelOffsets = 4, kOffsetFrames = kFramesPerPass / kChannelOffsets;

// The board's DTMF receivers, one a channel, run directly (a DSP holds only
// 64 blocks); `found` counts the digits each reported. The receivers are
// made and run here alone, for a multi-channel bank to take their place.
struct BoardChannels {
    std::vector<std::unique_ptr<vb::signal::DtmfReceiver>> receivers;
    std::vector<vb::signal::Report> reports;
    std::vector<size_t> found = std::vector<size_t>(kChannels);

    BoardChannels() {
        for (size_t channel = 0; channel < kChannels; ++channel)
            receivers.push_back(std::make_unique<vb::signal::DtmfReceiver>(vb::signal::Limits{}));
    }
    void run(size_t channel, std::span<const int16_t> frame) {
        reports.clear();
        receivers[channel]->run(frame, reports);
        found[channel] +=
            static_cast<size_t>(std::count_if(reports.begin(), reports.end(), [](const auto &r) { return r.started; }));
    }
};

struct SpandspChannels {
    std::vector<dtmf_rx_state_t *> receivers;
    std::vector<std::string> digits = std::vector<std::string>(kChannels);
    std::vector<size_t> found = std::vector<size_t>(kChannels);

    SpandspChannels() {
        for (size_t channel = 0; channel < kChannels; ++channel)
            receivers.push_back(dtmf_rx_init(nullptr, appendDigits, &digits[channel]));
    }
    ~SpandspChannels() {
        for (dtmf_rx_state_t *rx : receivers) dtmf_rx_free(rx);
    }
    void run(size_t channel, std::span<const int16_t> frame) {
        dtmf_rx(receivers[channel], frame.data(), static_cast<int>(frame.size()));
        found[channel] += std::exchange(digits[channel], {}).size();
    }
};

// 256 channels of the 16 keys, 20 ms frames channel after channel as a DSP
// receives them; an iteration is 2 s of each. channels_per_core is audio
// seconds per CPU second, summed over the channels.
void BM_DtmfChannels(benchmark::State &state) {
    const std::vector<int16_t> signal = dtmfSignal();
    BoardChannels board;
    SpandspChannels spandsp;
    double boardSeconds = 0, spandspSeconds = 0;
    size_t passes = 0;
    const auto timed = [&](auto &channels, double &seconds) {
        const double start = cpuSeconds();
        for (size_t frame = 0; frame < kFramesPerPass; ++frame)
            for (size_t channel = 0; channel < kChannels; ++channel) {
                const size_t at = (frame + channel % kChannelOffsets * kOffsetFrames) % kFramesPerPass;
                channels.run(channel, std::span(signal).subspan(at * kFrame, kFrame));
            }
        seconds += cpuSeconds() - start;
    };
    for (auto _ : state) {
        if (passes++ % 2 == 0) {
            timed(board, boardSeconds);
            timed(spandsp, spandspSeconds);
        } else {
            timed(spandsp, spandspSeconds);
            timed(board, boardSeconds);
        }
    }
    // The keys per pass of the channel that found fewest: 16 for every one.
    const auto fewest = [&](const std::vector<size_t> &found) {
        return static_cast<double>(*std::min_element(found.begin(), found.end())) / static_cast<double>(passes);
    };
    const double audioSeconds = static_cast<double>(passes * kPassSamples * kChannels) / kRate;
    state.counters["channels_per_core"] = audioSeconds / boardSeconds;
    state.counters["spandsp_channels_per_core"] = audioSeconds / spandspSeconds;
    state.counters["vs_spandsp"] = boardSeconds / spandspSeconds;
    state.counters["board_found"] = fewest(board.found);
    state.counters["spandsp_found"] = fewest(spandsp.found);
    const auto exact = [&](const std::vector<size_t> &found) {
        return std::all_of(found.begin(), found.end(), [&](size_t count) { return count == 16 * passes; });
    };
    if (!exact(board.found) || !exact(spandsp.found))
        state.SkipWithError(!exact(board.found) ? "a board channel missed keys" : "a spandsp channel missed keys");
}
BENCHMARK(BM_DtmfChannels)->Unit(benchmark::kMillisecond);

}  // namespace
