// Audio in and out of the board's signal-processing blocks: record what a
// generator or dialler plays into a WAV file, and play a WAV file into a
// detector, printing what it detects. The samples travel through the board's
// audio attributes (30: a block's output, 31: a detector's input).
#include <cmath>
#include <cstring>
#include <string>

#include "Rynctl.h"
#include "Wav.h"

namespace rynctl {
namespace {

constexpr int32_t kOutputSamples = 30, kInputSamples = 31;
constexpr uint32_t kChunkSamples = 16384;  // 32 KiB per attribute call
constexpr uint32_t kLongestRecording = 600;  // seconds

// Block types of the board's tone family.
enum : int32_t {
    kSineGenerator = 103, kDtmfDialler = 105, kMfDialler = 106,
    kSilenceDetector = 110, kDtmfDetector = 111, kFskDetector = 112, kDialtoneDetector = 113, kMfDetector = 114,
    kSingleDetector = 116, kCallerIdDetector = 128,
};
// Events and attributes the detectors report with.
enum : uint32_t { kDigit = 0x0500, kMfDigit = 0x0501, kTone = 0x0502, kDataByte = 0x0508, kCallerId = 0x0509 };
enum : int32_t { kCallerDate = 41, kCallerNumber = 42, kCallerName = 43 };

// A block created on DSP 0 for one command, closed with it.
class Block {
public:
    explicit Block(int32_t type) {
        if (const auto dsp = findDevice("dsp:0")) result_ = RynDrvCreateLogicalDevice(*dsp, type, 0, 0, &handle_);
        if (RynFailure(result_)) printResult("create block", result_);
    }
    ~Block() {
        if (ok()) RynDrvClose(handle_);
    }
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    bool ok() const { return handle_ != 0 && RynSuccess(result_); }
    DeviceHandle handle() const { return handle_; }

private:
    DeviceHandle handle_ = 0;
    ResultCode result_ = 0x80000000u;
};

bool check(const char *what, ResultCode result) {
    if (RynFailure(result)) printResult(what, result);
    return RynSuccess(result);
}

// "350+440" or "1000,1200": frequencies in Hz.
std::vector<uint32_t> frequencies(const char *text) {
    std::vector<uint32_t> list;
    std::string item;
    for (const char *p = text;; ++p) {
        if (*p == '+' || *p == ',' || *p == '\0') {
            const auto value = parseNumber(item.c_str());
            if (!value || *value >= 4000) return {};
            list.push_back(*value);
            item.clear();
            if (*p == '\0') break;
        } else {
            item += *p;
        }
    }
    return list;
}

bool startsWith(const char *text, const char *prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

// Sets up the source a recording names; false (and why printed) when it cannot.
bool setUpSource(const char *what, std::unique_ptr<Block> &block) {
    if (startsWith(what, "dtmf:") || startsWith(what, "mf:")) {
        const bool dtmf = what[0] == 'd';
        const char *digits = std::strchr(what, ':') + 1;
        block = std::make_unique<Block>(dtmf ? kDtmfDialler : kMfDialler);
        if (!block->ok()) return false;
        const int32_t count = static_cast<int32_t>(std::strlen(digits));
        // Default timings; each tone 6 dB below the reference.
        return dtmf ? check("dialler set-up", RynToneDtmfDiallerInit(block->handle(), 0, 0, 6, 0)) &&
                          check("dial", RynToneDtmfDial(block->handle(), digits, count, 0, 0))
                    : check("dialler set-up", RynToneMfDiallerInit(block->handle(), 0, 0, 0, 6, 0)) &&
                          check("dial", RynToneMfDial(block->handle(), digits, count, 0, 0));
    }
    if (startsWith(what, "tone:")) {
        const auto list = frequencies(what + 5);
        if (list.empty() || list.size() > 5) {
            std::fprintf(stderr, "rynctl: \"%s\": give 1 to 5 frequencies below 4000 Hz, as tone:350+440\n", what);
            return false;
        }
        std::vector<SineToneParams> tones;
        for (uint32_t hertz : list) tones.push_back({static_cast<double>(hertz), -6.0 - 6.0 * (list.size() > 1), 0.0});
        block = std::make_unique<Block>(kSineGenerator);
        return block->ok() && check("generator set-up", RynToneSineWaveGeneratorInit(block->handle(), 0, tones.data(),
                                                                                      static_cast<int32_t>(tones.size()), 0));
    }
    std::fprintf(stderr, "rynctl: \"%s\" names no source (dtmf:DIGITS, mf:DIGITS or tone:HZ[+HZ...])\n", what);
    return false;
}

int recordUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl record SOURCE FILE.wav [--seconds N]\n"
                 "Sets up a generator block on DSP 0 and writes N seconds (default 1) of what it plays to\n"
                 "FILE.wav (8 kHz, mono, 16-bit). SOURCE is:\n"
                 "  dtmf:DIGITS      a DTMF dialler dialling DIGITS (0-9 * # A-D), then silence\n"
                 "  mf:DIGITS        an MF dialler dialling DIGITS (0-9, K for KP, S for ST), then silence\n"
                 "  tone:HZ[+HZ...]  the sine-wave generator with up to five tones\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

int record(int argc, char **argv) {
    const char *what = nullptr, *path = nullptr;
    uint32_t seconds = 1;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return recordUsage(stdout);
        if (std::strcmp(argv[i], "--seconds") == 0 && i + 1 < argc) {
            const auto value = parseNumber(argv[++i]);
            if (!value || *value == 0 || *value > kLongestRecording) return recordUsage(stderr);
            seconds = *value;
        } else if (argv[i][0] != '-' && what == nullptr) {
            what = argv[i];
        } else if (argv[i][0] != '-' && path == nullptr) {
            path = argv[i];
        } else {
            return recordUsage(stderr);
        }
    }
    if (path == nullptr) return recordUsage(stderr);
    Session session;
    if (!session.ok()) return 1;
    std::unique_ptr<Block> block;
    if (!setUpSource(what, block)) return 1;
    std::vector<int16_t> samples(static_cast<size_t>(seconds) * wav::kSampleRate);
    for (size_t done = 0; done < samples.size();) {
        const uint32_t count = static_cast<uint32_t>(std::min<size_t>(kChunkSamples, samples.size() - done));
        uint32_t returned = 0;
        const ResultCode result = RynDrvGetAttributeValue_20(block->handle(), kOutputSamples, &samples[done],
                                                             count * 2, &returned);
        if (!check("read samples", result)) return 1;
        if (returned != count * 2) {
            std::fprintf(stderr, "rynctl: the block gave %u bytes where %u were asked for\n", returned, count * 2);
            return 1;
        }
        done += count;
    }
    if (!wav::write(path, samples)) {
        std::fprintf(stderr, "rynctl: cannot write \"%s\"\n", path);
        return 1;
    }
    double energy = 0;
    for (int16_t s : samples) energy += static_cast<double>(s) * s;
    std::printf("%s: %zu samples (%u s at 8000 Hz) from %s, RMS %.0f\n", path, samples.size(), seconds, what,
                std::sqrt(energy / static_cast<double>(samples.size())));
    return 0;
}

namespace {

// Sets up the detector a playback names.
bool setUpDetector(const char *what, std::unique_ptr<Block> &block) {
    const struct {
        const char *name;
        int32_t type;
    } kDetectors[] = {{"dtmf", kDtmfDetector}, {"mf", kMfDetector}, {"dialtone", kDialtoneDetector},
                      {"silence", kSilenceDetector}};
    for (const auto &d : kDetectors) {
        if (std::strcmp(what, d.name) != 0) continue;
        block = std::make_unique<Block>(d.type);
        return block->ok();  // the detectors' defaults
    }
    // FSK at 1200 baud: Bell 202, or V.23 with ":v23".
    const bool v23 = std::strstr(what, ":v23") != nullptr;
    if (std::strcmp(what, "fsk") == 0 || std::strcmp(what, "fsk:v23") == 0) {
        block = std::make_unique<Block>(kFskDetector);
        return block->ok() && check("detector set-up", RynToneFskDetectorInit(block->handle(), v23));
    }
    if (std::strcmp(what, "callerid") == 0 || std::strcmp(what, "callerid:v23") == 0) {
        block = std::make_unique<Block>(kCallerIdDetector);
        return block->ok() && check("detector set-up", RynCstCidDetectorInit(block->handle(), v23, 0));
    }
    if (startsWith(what, "tone:")) {
        const auto list = frequencies(what + 5);
        if (list.empty() || list.size() > 6) {
            std::fprintf(stderr, "rynctl: \"%s\": give 1 to 6 frequencies below 4000 Hz, as tone:1000,1400\n", what);
            return false;
        }
        block = std::make_unique<Block>(kSingleDetector);
        return block->ok() && check("detector set-up", RynToneSingleDetectorInit(block->handle(), 0, list.data(),
                                                                                  static_cast<int32_t>(list.size()),
                                                                                  0, 0, 0));
    }
    std::fprintf(stderr,
                 "rynctl: \"%s\" names no detector (dtmf, mf, dialtone, silence, fsk[:v23], callerid[:v23] or "
                 "tone:HZ[,HZ...])\n",
                 what);
    return false;
}

// One detector event: what, and where in the file it began.
std::string describe(const EventData &record, DeviceHandle block, std::string &detected) {
    char text[256] = {};
    if (RynFailure(RynDrvEventCode2String_16(0, record.word[3], 0, text))) std::snprintf(text, sizeof text, "?");
    const double at = record.word[6] / static_cast<double>(wav::kSampleRate);
    char line[320];
    const uint32_t code = record.word[3], value = record.word[5];
    if (code == kDigit || code == kMfDigit) {
        detected += static_cast<char>(value);
        std::snprintf(line, sizeof line, "%7.3f s  %-22s '%c'", at, text, static_cast<char>(value));
    } else if (code == kDataByte) {
        const char shown = value >= 0x20 && value < 0x7F ? static_cast<char>(value) : '.';
        detected += shown;
        std::snprintf(line, sizeof line, "%7.3f s  %-22s 0x%02X '%c'", at, text, value & 0xFFu, shown);
    } else if (code == kCallerId) {
        char date[16] = {}, number[64] = {}, name[64] = {};
        readText(block, kCallerDate, date, sizeof date);
        readText(block, kCallerNumber, number, sizeof number);
        readText(block, kCallerName, name, sizeof name);
        detected += number;
        std::snprintf(line, sizeof line, "           %s: type 0x%02X, date %s, number %s, name %s, checksum %s", text,
                      value, date, number, name, record.word[6] != 0 ? "right" : "WRONG");
    } else {
        std::snprintf(line, sizeof line, "%7.3f s  %-22s %u", at, text, value);
        if (code == kTone) detected += static_cast<char>('0' + value % 10);
    }
    return line;
}

int playUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl play FILE.wav DETECTOR\n"
                 "Sets up a detector block on DSP 0, feeds it the samples of FILE.wav (8 kHz, mono, 16-bit\n"
                 "PCM; other formats are refused) and prints each event it reports, with the time in the file\n"
                 "where the signal began, then what it detected. DETECTOR is:\n"
                 "  dtmf             DTMF digits\n"
                 "  mf               MF (R1) digits; KP shows as *, ST as #\n"
                 "  dialtone         dial tone (350+440 Hz, or 425 Hz)\n"
                 "  silence          silence and its end\n"
                 "  tone:HZ[,HZ...]  single tones at up to six frequencies (index 0 first)\n"
                 "  fsk[:v23]        FSK bytes at 1200 baud, Bell 202 or V.23\n"
                 "  callerid[:v23]   caller identification messages (FSK, Bell 202 or V.23)\n"
                 "Exits 0 when something was detected, 1 when nothing was.\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

int play(int argc, char **argv) {
    if (argc == 1 && std::strcmp(argv[0], "--help") == 0) return playUsage(stdout);
    if (argc != 2) return playUsage(stderr);
    std::vector<int16_t> samples;
    std::string error;
    if (!wav::read(argv[0], samples, error)) {
        std::fprintf(stderr, "rynctl: %s\n", error.c_str());
        return 1;
    }
    Session session;
    if (!session.ok()) return 1;
    std::unique_ptr<Block> block;
    if (!setUpDetector(argv[1], block)) return 1;
    OsaHandle event = 0;
    DeviceHandle queue = 0;
    RynDrvCreateEvent(&event);
    if (!check("event queue", RynDrvCreateEventQueue(block->handle(), event, &queue))) return 1;
    std::string detected;
    uint32_t events = 0;
    bool fed = true;
    for (size_t done = 0; done < samples.size() && fed;) {
        const uint32_t count = static_cast<uint32_t>(std::min<size_t>(kChunkSamples, samples.size() - done));
        fed = check("feed samples", RynDrvSetAttributeValue_16(block->handle(), kInputSamples, &samples[done], count * 2));
        done += count;
        EventData record{};
        while (RynDrvGetEventData(queue, &record) == 0) {
            std::printf("%s\n", describe(record, block->handle(), detected).c_str());
            ++events;
        }
    }
    RynDrvClose(queue);
    RynDrvCloseEvent(event);
    if (!fed) return 1;
    std::printf("%zu samples, %u event%s; detected: %s\n", samples.size(), events, events == 1 ? "" : "s",
                detected.empty() ? "nothing" : detected.c_str());
    return events != 0 ? 0 : 1;
}

}  // namespace rynctl
