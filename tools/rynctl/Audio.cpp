// Audio in and out of the board's signal-processing blocks: record what a
// generator or dialler plays, or what the SLIC line carries to its phone,
// into an audio file, and play an audio file into a detector, printing what
// it detects. The samples travel through the board's audio attributes (30:
// a block's or line's output, 31: a detector's input).
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <string>

#include "AudioFile.h"
#include "Rynctl.h"

namespace rynctl {
namespace {

constexpr int32_t kOutputSamples = RYN_VB_ATTR_AUDIO_OUT, kInputSamples = RYN_VB_ATTR_AUDIO_IN;
constexpr uint32_t kChunkSamples = 16384;    // 32 KiB per attribute call
constexpr uint32_t kLongestRecording = 600;  // seconds

// Block types of the board's tone family.
enum : int32_t {
    kSineGenerator = RYN_VB_BLOCK_SINE_WAVE_GENERATOR,
    kDtmfDialler = RYN_VB_BLOCK_DTMF_DIALLER,
    kMfDialler = RYN_VB_BLOCK_MF_DIALLER,
    kSilenceDetector = RYN_VB_BLOCK_SILENCE_DETECTOR,
    kDtmfDetector = RYN_VB_BLOCK_DTMF_DETECTOR,
    kFskDetector = RYN_VB_BLOCK_FSK_DETECTOR,
    kDialtoneDetector = RYN_VB_BLOCK_DIAL_TONE_DETECTOR,
    kMfDetector = RYN_VB_BLOCK_MF_DETECTOR,
    kSingleDetector = RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR,
    kCallerIdDetector = RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR,
};
// Events and attributes the detectors report with.
enum : uint32_t {
    kDigit = RYN_VB_EVENT_DTMF_DIGIT,
    kMfDigit = RYN_VB_EVENT_MF_DIGIT,
    kTone = RYN_VB_EVENT_TONE_DETECTED,
    kDataByte = RYN_VB_EVENT_DATA_BYTE,
    kCallerId = RYN_VB_EVENT_CALLER_ID,
};
enum : int32_t { kCallerDate = RYN_VB_ATTR_CID_DATE, kCallerNumber = RYN_VB_ATTR_CID_NUMBER, kCallerName = RYN_VB_ATTR_CID_NAME };

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

// printf into a string of whatever length the text needs.
__attribute__((format(printf, 1, 2))) std::string format(const char *form, ...) {
    va_list args, again;
    va_start(args, form);
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, form, args);
    va_end(args);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, form, again);
    va_end(again);
    return text;
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

bool startsWith(const std::string &text, const char *prefix) { return text.rfind(prefix, 0) == 0; }

constexpr char kCallerIdSource[] = "callerid";

// What is wrong with a SOURCE, checked before anything connects; "" when
// nothing is. The board itself refuses digits it cannot dial.
std::string sourceProblem(const std::string &what) {
    if (what == kCallerIdSource) return "";
    if (startsWith(what, "dtmf:") || startsWith(what, "mf:"))
        return what.back() != ':' ? "" : "\"" + what + "\": give the digits to dial, as " + what + "123";
    if (startsWith(what, "tone:")) {
        const size_t count = frequencies(what.c_str() + 5).size();
        return count >= 1 && count <= 5 ? ""
                                        : "\"" + what + "\": give 1 to 5 frequencies below 4000 Hz, as tone:350+440";
    }
    std::string why = "\"" + what + "\" names no source: expected dtmf:DIGITS, mf:DIGITS, tone:HZ[+HZ...] or callerid";
    const bool colon = what.find(':') != std::string::npos;
    const std::string near =
        colon ? nearest(what.substr(0, what.find(':')), {"dtmf", "mf", "tone"}) : nearest(what, {kCallerIdSource});
    if (!near.empty()) why += " (did you mean '" + near + (colon ? what.substr(what.find(':')) : "") + "'?)";
    return why;
}

// The caller identification the callerid source sends.
struct CallerIdOptions {
    std::string number, name, message = "multiple";
    bool given() const { return !number.empty() || !name.empty() || message != "multiple"; }
};

std::string numberProblem(const std::string &text) {
    return text.size() == 10 && text.find_first_not_of("0123456789") == std::string::npos
               ? ""
               : "expected 10 digits, not \"" + text + "\"";
}

std::string nameProblem(const std::string &text) {
    const bool printable = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
    return text.size() <= 15 && printable ? "" : "expected at most 15 printable ASCII characters";
}

// The SLIC line rung with a caller identification: its number and name,
// the message type, the message given before the ringing starts, so that
// it goes out in the first pause.
bool ringWithCallerId(const CallerIdOptions &o, DeviceHandle &line) {
    const auto slic = findDevice("slic:0");
    if (!slic) return false;
    line = *slic;
    uint32_t state = 0;
    const uint32_t type = o.message == "single" ? RYN_VB_CID_SINGLE_MESSAGE : RYN_VB_CID_MULTIPLE_MESSAGE;
    return check("message type", RynDrvSetAttributeValueUint32_12(line, RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT, type)) &&
           (o.number.empty() || check("phone number", RynSlicSetPhoneNumber(line, o.number.c_str(), &state))) &&
           (o.name.empty() || check("name", RynSlicSetUserName(line, o.name.c_str(), &state))) &&
           check("caller identification", RynSlicSendCallerID(line, &state)) &&
           check("ringing", RynSlicStartRingState(line, &state));
}

// Sets up a generator or dialler block (checked by sourceProblem); false,
// and why printed, when the board refuses it.
bool setUpBlock(const char *what, std::unique_ptr<Block> &block) {
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
    const auto list = frequencies(what + 5);
    std::vector<SineToneParams> tones;
    for (uint32_t hertz : list) tones.push_back({static_cast<double>(hertz), -6.0 - 6.0 * (list.size() > 1), 0.0});
    block = std::make_unique<Block>(kSineGenerator);
    return block->ok() &&
           check("generator set-up",
                 RynToneSineWaveGeneratorInit(block->handle(), 0, tones.data(), static_cast<int32_t>(tones.size()), 0));
}

// Sets up the source a recording names (checked by sourceProblem): the
// block or line to read; false, and why printed, when the board refuses it.
bool setUpSource(const char *what, const CallerIdOptions &callerId, std::unique_ptr<Block> &block,
                 DeviceHandle &handle) {
    if (what == std::string(kCallerIdSource)) return ringWithCallerId(callerId, handle);
    const bool set = setUpBlock(what, block);
    if (set) handle = block->handle();
    return set;
}

struct RecordOptions {
    std::string source, path, encoding;
    uint32_t seconds = 0;  // 0: the source's default
    CallerIdOptions callerId;
};

// Seconds recorded when --seconds is not given: the callerid source's
// recording holds the first ring (2 s), the burst 500 ms after it and the
// start of the pause.
uint32_t defaultSeconds(const std::string &source) { return source == kCallerIdSource ? 4 : 1; }

int record(const RecordOptions &o) {
    std::string error;
    const auto format = audio::outputFormat(o.path, o.encoding, error);
    if (!format) {
        std::fprintf(stderr, "rynctl record: %s\n", error.c_str());
        return kExitUsage;
    }
    if (o.source != kCallerIdSource && o.callerId.given()) {
        std::fprintf(stderr, "rynctl record: --number, --name and --message are for the callerid source\n");
        return kExitUsage;
    }
    const uint32_t seconds = o.seconds != 0 ? o.seconds : defaultSeconds(o.source);
    Session session;
    if (!session.ok()) return kExitRefused;
    std::unique_ptr<Block> block;
    DeviceHandle source = 0;
    if (!setUpSource(o.source.c_str(), o.callerId, block, source)) return kExitRefused;
    std::vector<int16_t> samples(static_cast<size_t>(seconds) * audio::kSampleRate);
    for (size_t done = 0; done < samples.size();) {
        const uint32_t count = static_cast<uint32_t>(std::min<size_t>(kChunkSamples, samples.size() - done));
        uint32_t returned = 0;
        const ResultCode result =
            RynDrvGetAttributeValue_20(source, kOutputSamples, &samples[done], count * 2, &returned);
        if (!check("read samples", result)) return kExitRefused;
        if (returned != count * 2) {
            std::fprintf(stderr, "rynctl: the source gave %u bytes where %u were asked for\n", returned, count * 2);
            return kExitRefused;
        }
        done += count;
    }
    if (!audio::write(o.path, samples, *format, error)) {
        std::fprintf(stderr, "rynctl: %s\n", error.c_str());
        return kExitRefused;
    }
    double energy = 0;
    for (int16_t s : samples) energy += static_cast<double>(s) * s;
    const char *encoding = format->encoding == audio::Encoding::Pcm16  ? "16-bit PCM"
                           : format->encoding == audio::Encoding::Ulaw ? "mu-law"
                                                                       : "A-law";
    std::printf("%s: %zu samples (%u s at 8000 Hz, %s %s) from %s, RMS %.0f\n", o.path.c_str(), samples.size(), seconds,
                format->container == audio::Container::Wav ? "WAV" : "raw", encoding, o.source.c_str(),
                std::sqrt(energy / static_cast<double>(samples.size())));
    return kExitDone;
}

// The detectors of the tone family that need no settings.
struct Detector {
    const char *name;
    int32_t type;
};
constexpr Detector kDetectors[] = {{"dtmf", kDtmfDetector}, {"mf", kMfDetector}, {"dialtone", kDialtoneDetector},
                                   {"silence", kSilenceDetector}};

// What is wrong with a DETECTOR, checked before anything connects; "" when
// nothing is.
std::string detectorProblem(const std::string &what) {
    std::vector<std::string> names = {"fsk", "fsk:v23", "callerid", "callerid:v23", "tone"};
    for (const Detector &d : kDetectors) {
        if (what == d.name) return "";
        names.push_back(d.name);
    }
    if (what == "fsk" || what == "fsk:v23" || what == "callerid" || what == "callerid:v23") return "";
    if (startsWith(what, "tone:")) {
        const size_t count = frequencies(what.c_str() + 5).size();
        return count >= 1 && count <= 6 ? ""
                                        : "\"" + what + "\": give 1 to 6 frequencies below 4000 Hz, as tone:1000,1400";
    }
    std::string why = "\"" + what + "\" names no detector: expected dtmf, mf, dialtone, silence, fsk[:v23], "
                      "callerid[:v23] or tone:HZ[,HZ...]";
    const std::string near = nearest(what, names);
    if (!near.empty()) why += " (did you mean '" + near + (near == "tone" ? ":HZ" : "") + "'?)";
    return why;
}

// Sets up the detector a playback names (checked by detectorProblem).
bool setUpDetector(const char *what, std::unique_ptr<Block> &block) {
    for (const Detector &d : kDetectors) {
        if (std::strcmp(what, d.name) != 0) continue;
        block = std::make_unique<Block>(d.type);
        return block->ok();  // the detectors' defaults
    }
    // FSK at 1200 baud: Bell 202, or V.23 with ":v23".
    const bool v23 = std::strstr(what, ":v23") != nullptr;
    if (startsWith(what, "fsk")) {
        block = std::make_unique<Block>(kFskDetector);
        return block->ok() && check("detector set-up", RynToneFskDetectorInit(block->handle(), v23));
    }
    if (startsWith(what, "callerid")) {
        block = std::make_unique<Block>(kCallerIdDetector);
        return block->ok() && check("detector set-up", RynCstCidDetectorInit(block->handle(), v23, 0));
    }
    const auto list = frequencies(what + 5);
    block = std::make_unique<Block>(kSingleDetector);
    return block->ok() && check("detector set-up", RynToneSingleDetectorInit(block->handle(), 0, list.data(),
                                                                              static_cast<int32_t>(list.size()), 0, 0,
                                                                              0));
}

// One detector event: what, and where in the file it began.
std::string describe(const EventData &record, DeviceHandle block, std::string &detected) {
    char text[256] = {};
    if (RynFailure(RynDrvEventCode2String_16(0, record.word[3], 0, text))) std::snprintf(text, sizeof text, "?");
    const double at = record.word[6] / static_cast<double>(audio::kSampleRate);
    const uint32_t code = record.word[3], value = record.word[5];
    if (code == kDigit || code == kMfDigit) {
        detected += static_cast<char>(value);
        return format("%7.3f s  %-22s '%c'", at, text, static_cast<char>(value));
    }
    if (code == kDataByte) {
        const char shown = value >= 0x20 && value < 0x7F ? static_cast<char>(value) : '.';
        detected += shown;
        return format("%7.3f s  %-22s 0x%02X '%c'", at, text, value & 0xFFu, shown);
    }
    if (code == kCallerId) {
        char date[16] = {}, number[64] = {}, name[64] = {};
        readText(block, kCallerDate, date, sizeof date);
        readText(block, kCallerNumber, number, sizeof number);
        readText(block, kCallerName, name, sizeof name);
        detected += number;
        return format("           %s: type 0x%02X, date %s, number %s, name %s, checksum %s", text, value, date, number,
                      name, record.word[6] != 0 ? "right" : "WRONG");
    }
    if (code == kTone) detected += static_cast<char>('0' + value % 10);
    return format("%7.3f s  %-22s %u", at, text, value);
}

int play(const std::string &path, const std::string &detector) {
    std::vector<int16_t> samples;
    std::string error, conversion;
    if (!audio::read(path, samples, error, conversion)) {
        std::fprintf(stderr, "rynctl: %s\n", error.c_str());
        return kExitRefused;
    }
    if (!conversion.empty()) std::printf("%s: %s\n", path.c_str(), conversion.c_str());
    Session session;
    if (!session.ok()) return kExitRefused;
    std::unique_ptr<Block> block;
    if (!setUpDetector(detector.c_str(), block)) return kExitRefused;
    OsaHandle event = 0;
    DeviceHandle queue = 0;
    RynDrvCreateEvent(&event);
    if (!check("event queue", RynDrvCreateEventQueue(block->handle(), event, &queue))) return kExitRefused;
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
    if (!fed) return kExitRefused;
    std::printf("%zu samples, %u event%s; detected: %s\n", samples.size(), events, events == 1 ? "" : "s",
                detected.empty() ? "nothing" : detected.c_str());
    return events != 0 ? kExitDone : kExitRefused;
}

// A validator of a positional argument by a function saying what is wrong.
CLI::Validator checkedBy(std::string (*problem)(const std::string &)) {
    return CLI::Validator([problem](std::string &text) { return problem(text); }, "");
}

}  // namespace

Command recordCommand(CLI::App &rynctl) {
    auto o = std::make_shared<RecordOptions>();
    CLI::App *app =
        rynctl.add_subcommand("record", "record a generator or dialler block, or the SLIC line, into an audio file");
    app->footer(
        "Sets up a generator block on DSP 0 (or rings the SLIC line) and writes N seconds of what it plays\n"
        "(8 kHz, mono) to FILE: 16-bit PCM WAV, or G.711 with --encoding or a .ul (mu-law) or .al (A-law)\n"
        "name, which are raw G.711 files. --encoding ulaw or alaw with any other name writes a G.711 WAV file.\n"
        "SOURCE is:\n"
        "  dtmf:DIGITS      a DTMF dialler dialling DIGITS (0-9 * # A-D), then silence\n"
        "  mf:DIGITS        an MF dialler dialling DIGITS (0-9, K for KP, S for ST), then silence\n"
        "  tone:HZ[+HZ...]  the sine-wave generator with up to five tones\n"
        "  callerid         the SLIC line rung with a caller identification: the first ring (2 s of 20 Hz),\n"
        "                   then 500 ms later the message as Bell 202 FSK, then the pause; --number,\n"
        "                   --name and --message say what it sends (a number or name not given is sent\n"
        "                   as unavailable, 'O')\n"
        "N is 1 by default, 4 for callerid (the ring, the burst and the start of the pause).");
    app->add_option("SOURCE", o->source, "what plays: dtmf:DIGITS, mf:DIGITS, tone:HZ[+HZ...] or callerid")
        ->required()
        ->check(checkedBy(sourceProblem));
    app->add_option("FILE", o->path, "the audio file to write")->required();
    addNumber(*app, "--seconds", o->seconds, "seconds to record (default 1, callerid 4)", 1, kLongestRecording);
    app->add_option("--encoding", o->encoding, "pcm16, ulaw or alaw (default: by FILE's extension)")
        ->check(CLI::IsMember({"pcm16", "ulaw", "alaw"}))
        ->type_name("ENC");
    app->add_option("--number", o->callerId.number, "callerid: the caller's number, 10 digits")
        ->check(checkedBy(numberProblem))
        ->type_name("DIGITS");
    app->add_option("--name", o->callerId.name, "callerid: the caller's name, up to 15 characters")
        ->check(checkedBy(nameProblem))
        ->type_name("TEXT");
    app->add_option("--message", o->callerId.message, "callerid: single or multiple (default) data message")
        ->check(CLI::IsMember({"single", "multiple"}))
        ->type_name("TYPE");
    return {app, [o] { return record(*o); }};
}

Command playCommand(CLI::App &rynctl) {
    struct Options {
        std::string path, detector;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("play", "feed an audio file to a detector block");
    app->footer(
        "Sets up a detector block on DSP 0, feeds it the samples of FILE and prints each event it reports,\n"
        "with the time in the file where the signal began, then what it detected. FILE is any audio file\n"
        "libsndfile reads (WAV, AIFF, AU, FLAC, ...) or a raw .ul / .al G.711 file; a file that is not\n"
        "8 kHz mono 16-bit is converted, and a line on standard output, before the events, says how.\n"
        "DETECTOR is:\n"
        "  dtmf             DTMF digits\n"
        "  mf               MF (R1) digits; KP shows as *, ST as #\n"
        "  dialtone         dial tone (350+440 Hz, or 425 Hz)\n"
        "  silence          silence and its end\n"
        "  tone:HZ[,HZ...]  single tones at up to six frequencies (index 0 first)\n"
        "  fsk[:v23]        FSK bytes at 1200 baud, Bell 202 or V.23\n"
        "  callerid[:v23]   caller identification messages (FSK, Bell 202 or V.23)\n"
        "Exits 0 when something was detected, 1 when nothing was.");
    app->add_option("FILE", o->path, "the audio file to play")->required();
    app->add_option("DETECTOR", o->detector, "what listens (see below)")->required()->check(checkedBy(detectorProblem));
    return {app, [o] { return play(o->path, o->detector); }};
}

}  // namespace rynctl
