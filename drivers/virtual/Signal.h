// The signal processing of the board's blocks, at 8000 samples a second in
// 16-bit samples: the sources that generators and diallers play, and the
// receivers that detectors run. Nothing here knows the board: the block
// families (ToneGenerators.cpp, ToneDetectors.cpp and the telephony blocks,
// Cst.h) feed samples in, turn reports into events and play what the
// sources make.
//
// Levels are given as attenuations in dB below the reference, a sine of peak
// amplitude 4096 (the 0 dB tone of the library's sine-wave set-up).
// Frequency coefficients are cos(2 pi f / 8000) in Q15, as the library sends
// them; the word 0x8000 stands for +1.0.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "RynVirtualBoard.h"

namespace vb::signal {

inline constexpr uint32_t kSampleRate = RYN_VB_SAMPLE_RATE;
inline constexpr double kReferencePeak = 4096.0;

// ---- Numbers ----------------------------------------------------------------

uint16_t coefficientOf(double hertz);  // cos(2 pi f / 8000) in Q15, truncated
double cosineOf(uint16_t coefficient);
double frequencyOf(uint16_t coefficient);  // the frequency a coefficient stands for
double peakOf(double attenuationDb);       // the peak amplitude of a level below the reference
// The telephony blocks give their levels in dB below full scale (a sine of
// peak 32767) instead: the peak amplitude of such a level.
inline constexpr double kFullScale = 32767.0;
double fullScalePeakOf(double attenuationDb);
uint64_t samplesOf(uint64_t milliseconds);

// ---- Measures ---------------------------------------------------------------

// The sum of the squared samples.
double energy(std::span<const int16_t> samples);
// The power of the samples at a frequency (Goertzel): the squared magnitude
// of their Fourier transform there, N² a² / 4 for a sine of peak a filling
// all N samples on the frequency.
double powerAt(std::span<const int16_t> samples, double hertz);

// ---- Sources ----------------------------------------------------------------

class Source {
public:
    virtual ~Source() = default;
    virtual int16_t next() = 0;
};

// The recursive oscillator y(n) = 2c y(n-1) - y(n-2) in integer arithmetic:
// c in Q15 (32768 is 1.0), products rounded, results saturated to 16 bits.
// It plays its two starting samples first.
class Oscillator {
public:
    Oscillator(uint16_t coefficient, uint16_t first, uint16_t second);
    static Oscillator tone(double hertz, double peak);  // a sine of that peak from phase 0
    int16_t next();
    void restart();

private:
    int32_t coefficient_;
    int16_t first_, second_;
    int16_t older_, newer_;
};

// Up to five oscillators summed, on for `onSamples` then off for
// `offSamples` (restarting from the starting samples), repeated or once.
// `onSamples` 0 plays without end.
class ToneBurst : public Source {
public:
    ToneBurst(std::vector<Oscillator> oscillators, uint64_t onSamples, uint64_t offSamples, bool repeat);
    int16_t next() override;

private:
    std::vector<Oscillator> oscillators_;
    uint64_t on_, off_, position_ = 0;
    bool repeat_;
};

class Constant : public Source {
public:
    explicit Constant(int16_t value) : value_(value) {}
    int16_t next() override { return value_; }

private:
    int16_t value_;
};

// Effects: white noise, a square wave or a rising ramp (sawtooth).
enum class Effect : uint32_t {
    Silence = RYN_VB_EFFECT_SILENCE,
    Noise = RYN_VB_EFFECT_NOISE,
    Square = RYN_VB_EFFECT_SQUARE,
    Ramp = RYN_VB_EFFECT_RAMP,
};
inline constexpr uint32_t kEffectCount = RYN_VB_EFFECT_RAMP + 1;

class EffectSource : public Source {
public:
    EffectSource(Effect effect, int16_t peak, uint32_t hertz);
    int16_t next() override;

private:
    Effect effect_;
    int32_t peak_;
    uint32_t phase_ = 0, step_;
    uint32_t noise_ = 0x2545F491u;
};

// Recorded samples, then silence.
class Playback : public Source {
public:
    explicit Playback(std::vector<int16_t> samples) : samples_(std::move(samples)) {}
    int16_t next() override { return position_ < samples_.size() ? samples_[position_++] : 0; }

private:
    std::vector<int16_t> samples_;
    size_t position_ = 0;
};

// ---- Digits -----------------------------------------------------------------

struct Pair {
    double low, high;  // Hz
};
// The tone pair of a dial character, none for a character the signalling
// does not have. DTMF: 0-9 * # A-D (a-d). MF (R1): 0-9, KP as * or K, ST as
// # or S, ST' ST'' ST''' as A B C.
std::optional<Pair> dtmfPair(uint8_t character);
std::optional<Pair> mfPair(uint8_t character);
// The DTMF frequencies come in two groups of four: row r with column c is
// the digit of DtmfReceiver's symbol 4 r + c.
inline constexpr size_t kDtmfGroup = 4;

struct DialTiming {
    uint64_t toneSamples, pauseSamples;
    uint64_t firstToneSamples;  // the first digit's tone (MF KP), 0: as the others
    double lowPeak, highPeak;
};
// Each digit's pair for its tone time, then the pause, digit after digit.
std::vector<int16_t> dial(std::span<const Pair> digits, const DialTiming &timing);

// Sequence entries: a sample value in the low 16 bits, held for the number
// of samples in the high 16 bits (0: `hold`), the whole played `repeats` times.
uint64_t sequenceLength(std::span<const uint32_t> entries, uint32_t hold, uint32_t repeats);
std::vector<int16_t> sequence(std::span<const uint32_t> entries, uint32_t hold, uint32_t repeats);

// ---- Receivers --------------------------------------------------------------

// What a receiver reports: a symbol (digit or tone index) that began, or
// one that ended, with its first sample (counted from the receiver's start)
// and, when it ended, its length in samples.
struct Report {
    bool started;
    int symbol;
    uint64_t firstSample;
    uint64_t length;
};

// Durations and limits of a receiver.
struct Limits {
    uint32_t toneMs = 40;       // shortest symbol reported
    uint32_t pauseMs = 40;      // shortest gap that ends a symbol
    double minimumDb = 30;      // each tone at least this far below the reference
    double normalTwistDb = 8;   // the lower-frequency tone at most this much louder
    double reverseTwistDb = 4;  // the higher-frequency tone at most this much louder
};

// One analysis window of samples (defined with the receivers).
class Window;
struct Filter;

// A Goertzel filter at a coefficient, with two guard filters 5% below and
// above its frequency: a tone counts as on the filter's frequency when the
// filter sees more of it than either guard, that is within about 2.5%. The
// tone's amplitude is then the largest a comb of filters 0.5% apart around
// the frequency sees, so that a tone off the frequency is not taken for a
// weaker one.
inline constexpr int kCombSteps = 5;
struct Filter {
    double cosine, below, above;
    double comb[2 * kCombSteps + 1];
    static Filter of(uint16_t coefficient);
};

// The centre and guard filters of a receiver over a window: the window's
// samples correlated with the Hamming-weighted cosine and sine of each
// frequency, in single precision, four samples at a time. The result is the
// Goertzel filter's: the peak amplitude of the window's component at that
// frequency.
class FilterBank {
public:
    FilterBank(std::span<const Filter> filters, std::span<const double> weights);
    // Amplitudes of the centre filters over a window's samples `x` (as
    // floats, readable up to the window's length padded to eights).
    void run(const float *x, std::span<double> centres) const;
    // The amplitudes two filters' guards see in the window: below, above.
    void guards(const float *x, const size_t (&filters)[2], double (&guards)[2][2]) const;

private:
    // Table i: the centre filters' first, then each filter's guards, below
    // and above; a table is a cosine then a sine, each padded_ floats.
    float *table(size_t i) { return &tables_[i * 2 * padded_]; }
    const float *table(size_t i) const { return &tables_[i * 2 * padded_]; }
    void amplitudes(const float *x, size_t first, size_t count, double *out) const;

    size_t padded_;  // the window's length, padded to eights
    std::vector<float> tables_;
    double scale_;  // 2 / the sum of the weights
    // The correlation, with the widest vectors the processor has.
    void (*correlate_)(const float *x, const float *const *tables, size_t count, size_t padded, double *re, double *im);
};

// A receiver looks at windows of `windowLength` samples (102..1024), one
// every half window, each weighted with a Hamming window. A window holds a
// tone (or pair) when each tone is on its filter's frequency, at or above
// the minimum level, within the twist limits, carries at least 70% of the
// window's power, and fills the window (the power of its two halves within
// a ratio of 0.6). A symbol is reported once it has held every window that
// a signal of the tone time always fills, and it ends once as many windows
// of a pause time are quiet or hold another symbol.
//
// The centre filters run on every window that is not quiet; the guards and
// the comb only for the tones a symbol could be made of, and only when the
// centre filters leave the checks open.
class Receiver {
public:
    Receiver(uint32_t windowLength, const Limits &limits);
    virtual ~Receiver() = default;
    void run(std::span<const int16_t> samples, std::vector<Report> &reports);
    int active() const { return active_; }  // the symbol being reported, -1 for none

protected:
    static constexpr int kNone = -1;
    // The symbol of a window, kNone for none; `pause` when the window may
    // end the current symbol.
    virtual int classify(const Window &window, bool &pause) = 0;

    // Sets the filters (once, in the constructor of the receiver).
    void setFilters(std::vector<Filter> filters);
    // Runs the centre filters over a window; the checks refine the filters
    // they look at.
    void measure(const Window &window);
    bool validSingle(const Window &window, int filter);
    bool validPair(const Window &window, int lowFilter, int highFilter);  // by frequency
    bool quiet(const Window &window) const;  // below the power of one tone at the minimum level

    std::vector<double> amplitudes_;  // of the filters, in the window measured last

private:
    // Whether a tone of these centre amplitudes could still pass the level
    // and purity checks once refined (b < 0: a single tone).
    bool possible(const Window &window, double a, double b) const;
    // Whether a filter's frequency is the tone's (its guards see less);
    // `other`'s guards are run with it.
    bool centred(const Window &window, int filter, int other = -1);
    // The comb's amplitude of a filter over the window measured last.
    void refine(const Window &window, int filter);
    bool present(int filter) const;
    bool pure(const Window &window, double tonePower) const;

    std::vector<Filter> filters_;
    std::unique_ptr<FilterBank> bank_;
    double refineGain_ = 1;                          // the most the comb raises an amplitude
    std::vector<bool> centred_, checked_, refined_;  // of the window measured last
    void debounce(int symbol, bool pause, uint64_t first, std::vector<Report> &reports);

    uint32_t length_, hop_;  // windows overlap by half
    Limits limits_;
    uint32_t toneWindows_, pauseWindows_;
    std::vector<double> weights_;
    std::vector<double> weighted_;       // and weighted, for the comb
    double floorPeak_;                   // the minimum level's peak
    double normalTwist_, reverseTwist_;  // the limits as amplitude ratios
    std::vector<float> pending_;         // samples, then zeros; those before start_ are used up
    size_t start_ = 0;
    uint64_t consumed_ = 0;
    int candidate_ = kNone, active_ = kNone;
    uint32_t run_ = 0, gap_ = 0;
    uint64_t runFirst_ = 0, activeFirst_ = 0, activeEnd_ = 0;
};

// DTMF: one tone of each group; symbols 0-15 index "123A456B789C*0#D".
class DtmfReceiver : public Receiver {
public:
    explicit DtmfReceiver(const Limits &limits);
    static uint8_t character(int symbol);

private:
    int classify(const Window &window, bool &pause) override;
};

// MF (R1): two of 700, 900, 1100, 1300, 1500, 1700 Hz; symbols index the
// characters of mfPair in "1234567890*#ABC".
class MfReceiver : public Receiver {
public:
    explicit MfReceiver(const Limits &limits);
    static uint8_t character(int symbol);

private:
    int classify(const Window &window, bool &pause) override;
};

// Tones given by coefficients, taken in order: `sizes` says how many
// filters (1 or 2, sounding together) make each tone; the symbol is the
// tone's index.
class ToneReceiver : public Receiver {
public:
    ToneReceiver(std::span<const uint16_t> coefficients, std::span<const uint8_t> sizes, uint32_t windowLength,
                 const Limits &limits);
    // A window long enough to tell the closest two of the frequencies apart.
    static uint32_t windowFor(std::span<const uint16_t> coefficients);

private:
    int classify(const Window &window, bool &pause) override;
    std::vector<uint8_t> sizes_;
};

// Silence: the signal's power below the limit (Limits::minimumDb) for the
// tone time; a single loud window ends it. The symbol is 0.
class SilenceReceiver : public Receiver {
public:
    explicit SilenceReceiver(const Limits &limits);

private:
    int classify(const Window &window, bool &pause) override;
};

// Window lengths: DTMF (12.75 ms, also the shortest window), MF (20 ms, to
// part tones only 200 Hz apart).
inline constexpr uint32_t kDigitWindow = 102;
inline constexpr uint32_t kMfWindow = 160;

}  // namespace vb::signal
