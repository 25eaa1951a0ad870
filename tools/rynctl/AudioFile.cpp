// Audio files through libsndfile, rate conversion through libsamplerate.
// Reading goes through 32-bit float: libsndfile scales 8- and 16-bit PCM and
// G.711 by a power of two, so those samples come back to 16 bits unchanged,
// and wider or float samples are rounded and clipped to 16 bits at the end.
//
// A build without the two libraries (RYN_AUDIO_LIBRARIES 0: where they have
// no build of the target's kind, as for 32-bit Linux or Windows) reads and
// writes here, with no conversion, the files of the board's own format: 8 kHz
// mono WAV files of 16-bit PCM, mu-law or A-law, and raw .ul / .al files;
// anything else is refused with a message saying why.
#include "AudioFile.h"

#if RYN_AUDIO_LIBRARIES
#include <samplerate.h>
#include <sndfile.h>
#else
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "G711.h"
#include "LittleEndian.h"
#endif

#include <algorithm>
#include <cctype>
#include <cmath>
#include <memory>

namespace rynctl::audio {
namespace {

// The file name's extension after its last dot, in lower case; empty when the
// name (not the folder) has none.
std::string extension(const std::string &path) {
    const size_t slash = path.find_last_of('/');
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    std::string result = path.substr(dot + 1);
    for (char &c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::string quoted(const std::string &path) { return "\"" + path + "\""; }

#if RYN_AUDIO_LIBRARIES

constexpr sf_count_t kChunkFrames = 4096;
constexpr int kLowestRate = 1000;
constexpr size_t kReservedSamples = size_t{kSampleRate} * 600;  // ten minutes

struct CloseSndFile {
    void operator()(SNDFILE *file) const { sf_close(file); }
};
using SndFile = std::unique_ptr<SNDFILE, CloseSndFile>;

struct DeleteSrcState {
    void operator()(SRC_STATE *state) const { src_delete(state); }
};

// libsndfile's name of a container or an encoding (an SF_FORMAT_... value),
// for those with no shorter name here.
std::string libraryName(int format) {
    SF_FORMAT_INFO info{};
    info.format = format;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) != 0 || info.name == nullptr)
        return "format " + std::to_string(format);
    return info.name;
}

std::string containerName(int format) {
    switch (format & SF_FORMAT_TYPEMASK) {
        case SF_FORMAT_WAV:
        case SF_FORMAT_WAVEX:
            return "WAV";
        case SF_FORMAT_AIFF:
            return "AIFF";
        case SF_FORMAT_AU:
            return "AU";
        case SF_FORMAT_RAW:
            return "raw";
        case SF_FORMAT_FLAC:
            return "FLAC";
        case SF_FORMAT_OGG:
            return "Ogg";
        case SF_FORMAT_CAF:
            return "CAF";
        case SF_FORMAT_W64:
            return "W64";
        case SF_FORMAT_RF64:
            return "RF64";
        default:
            return libraryName(format & SF_FORMAT_TYPEMASK);
    }
}

std::string encodingName(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return "8-bit";
        case SF_FORMAT_PCM_16:
            return "16-bit";
        case SF_FORMAT_PCM_24:
            return "24-bit";
        case SF_FORMAT_PCM_32:
            return "32-bit";
        case SF_FORMAT_FLOAT:
            return "float";
        case SF_FORMAT_DOUBLE:
            return "double";
        case SF_FORMAT_ULAW:
            return "mu-law";
        case SF_FORMAT_ALAW:
            return "A-law";
        default:
            return libraryName(format & SF_FORMAT_SUBMASK);
    }
}

// "44100 Hz stereo FLAC 24-bit"
std::string describe(const SF_INFO &info) {
    const std::string channels = info.channels == 1   ? "mono"
                                 : info.channels == 2 ? "stereo"
                                                      : std::to_string(info.channels) + "-channel";
    return std::to_string(info.samplerate) + " Hz " + channels + " " + containerName(info.format) + " " +
           encodingName(info.format);
}

// Appends float samples (full scale +-1.0) as 16-bit ones, counting those
// beyond 16 bits, which are clipped.
void appendSamples(const std::vector<float> &from, std::vector<int16_t> &to, size_t &clipped) {
    for (float x : from) {
        const double scaled = std::nearbyint(static_cast<double>(x) * 32768.0);
        if (std::isnan(scaled)) {
            to.push_back(0);
        } else if (scaled > 32767.0 || scaled < -32768.0) {
            to.push_back(scaled > 0 ? int16_t{32767} : int16_t{-32768});
            ++clipped;
        } else {
            to.push_back(static_cast<int16_t>(scaled));
        }
    }
}

// A mono sample-rate converter fed in chunks.
class Resampler {
public:
    explicit Resampler(double ratio) : ratio_(ratio) {
        int error = 0;
        state_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, 1, &error));
        if (!state_) error_ = error != 0 ? src_strerror(error) : "cannot set up";
    }
    // Empty, or what went wrong once something did.
    const std::string &error() const { return error_; }

    // Converts `count` frames, appending the output to `out`; with `last`
    // (which may come with no frames) also what the filter still holds.
    bool process(const float *in, long count, bool last, std::vector<float> &out) {
        if (!error_.empty()) return false;
        static const float nothing = 0.0f;  // libsamplerate wants an input even when there is none
        if (count == 0) in = &nothing;
        float buffer[kChunkFrames];
        for (;;) {
            SRC_DATA data{};
            data.data_in = in;
            data.input_frames = count;
            data.data_out = buffer;
            data.output_frames = kChunkFrames;
            data.end_of_input = last ? 1 : 0;
            data.src_ratio = ratio_;
            if (const int failed = src_process(state_.get(), &data); failed != 0) {
                error_ = src_strerror(failed);
                return false;
            }
            out.insert(out.end(), buffer, buffer + data.output_frames_gen);
            in += data.input_frames_used;
            count -= data.input_frames_used;
            if (count == 0 && (!last || data.output_frames_gen == 0)) return true;
            if (data.input_frames_used == 0 && data.output_frames_gen == 0) {
                error_ = "no progress";  // not expected of libsamplerate, but never loop for ever
                return false;
            }
        }
    }

private:
    std::unique_ptr<SRC_STATE, DeleteSrcState> state_;
    double ratio_;
    std::string error_;
};

#else  // no libsndfile: the board's own formats, read and written here

constexpr const char *kWithoutLibraries =
    "this rynctl was built without libsndfile: only 8 kHz mono 16-bit WAV, G.711 WAV and raw .ul/.al files";

// WAV format tags.
constexpr uint16_t kTagPcm = 1, kTagAlaw = 6, kTagUlaw = 7;

// WAV fields are little-endian.
void put16(std::string &to, uint16_t value) {
    uint8_t bytes[2];
    wire::le::store16(bytes, value);
    to.append(reinterpret_cast<const char *>(bytes), sizeof bytes);
}
void put32(std::string &to, uint32_t value) {
    uint8_t bytes[4];
    wire::le::store32(bytes, value);
    to.append(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

#endif

}  // namespace

std::optional<OutputFormat> outputFormat(const std::string &path, const std::string &encoding, std::string &error) {
    std::optional<Encoding> given;
    if (encoding == "pcm16") {
        given = Encoding::Pcm16;
    } else if (encoding == "ulaw") {
        given = Encoding::Ulaw;
    } else if (encoding == "alaw") {
        given = Encoding::Alaw;
    } else if (!encoding.empty()) {
        error = "unknown encoding \"" + encoding + "\" (pcm16, ulaw or alaw)";
        return std::nullopt;
    }
    // .ul and .al name raw G.711 files; everything else is a WAV file.
    const std::string ext = extension(path);
    if (ext == "ul" || ext == "al") {
        const Encoding named = ext == "ul" ? Encoding::Ulaw : Encoding::Alaw;
        if (given && *given != named) {
            error = quoted(path) + " names a raw " + (ext == "ul" ? "mu-law" : "A-law") + " file, not " + encoding;
            return std::nullopt;
        }
        return OutputFormat{Container::Raw, named};
    }
    return OutputFormat{Container::Wav, given.value_or(Encoding::Pcm16)};
}

#if RYN_AUDIO_LIBRARIES

bool write(const std::string &path, const std::vector<int16_t> &samples, OutputFormat format, std::string &error) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(kSampleRate);
    info.channels = 1;
    const int encoding = format.encoding == Encoding::Ulaw   ? SF_FORMAT_ULAW
                         : format.encoding == Encoding::Alaw ? SF_FORMAT_ALAW
                                                             : SF_FORMAT_PCM_16;
    // Raw 16-bit samples are little-endian, as in a WAV file.
    info.format = format.container == Container::Wav ? SF_FORMAT_WAV | encoding
                  : encoding == SF_FORMAT_PCM_16     ? SF_FORMAT_RAW | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE
                                                     : SF_FORMAT_RAW | encoding;
    SndFile file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file) {
        error = "cannot write " + quoted(path) + ": " + sf_strerror(nullptr);
        return false;
    }
    const auto count = static_cast<sf_count_t>(samples.size());
    if (sf_write_short(file.get(), samples.data(), count) != count) {
        error = "cannot write " + quoted(path) + ": " + sf_strerror(file.get());
        return false;
    }
    // Closing writes the header's sizes, and can fail like any write.
    const int closed = sf_close(file.release());
    if (closed != 0) {
        error = "cannot write " + quoted(path) + ": " + sf_error_number(closed);
        return false;
    }
    return true;
}

bool read(const std::string &path, std::vector<int16_t> &samples, std::string &error, std::string &conversion) {
    samples.clear();
    conversion.clear();
    // Raw G.711 files have no header to say what they are.
    SF_INFO info{};
    const std::string ext = extension(path);
    if (ext == "ul" || ext == "al") {
        info.format = SF_FORMAT_RAW | (ext == "ul" ? SF_FORMAT_ULAW : SF_FORMAT_ALAW);
        info.samplerate = static_cast<int>(kSampleRate);
        info.channels = 1;
    }
    SndFile file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file) {
        error = "cannot read " + quoted(path) + ": " + sf_strerror(nullptr);
        return false;
    }
    if (info.channels < 1 || info.samplerate < 1) {
        error = quoted(path) + " has no channels or no sample rate";
        return false;
    }
    // Below 1 kHz a file holds no audio a telephone line carries, and the
    // conversion would multiply it many times over (up to 256x).
    if (info.samplerate < kLowestRate) {
        error = quoted(path) + ": " + std::to_string(info.samplerate) + " Hz is below the lowest rate read, " +
                std::to_string(kLowestRate) + " Hz";
        return false;
    }
    const double ratio = static_cast<double>(kSampleRate) / info.samplerate;
    std::unique_ptr<Resampler> resampler;
    if (info.samplerate != static_cast<int>(kSampleRate)) {
        if (!src_is_valid_ratio(ratio)) {
            error = quoted(path) + ": cannot convert " + std::to_string(info.samplerate) + " Hz to 8000 Hz";
            return false;
        }
        resampler = std::make_unique<Resampler>(ratio);
        if (!resampler->error().empty()) {
            error = quoted(path) + ": rate conversion failed: " + resampler->error();
            return false;
        }
    }
    // The header's frame count is a hint, not a promise (a few bytes of FLAC
    // may claim any length): room for at most kReservedSamples up front.
    if (info.frames > 0 && info.frames < SF_COUNT_MAX)
        samples.reserve(static_cast<size_t>(
            std::min(static_cast<double>(info.frames) * ratio + 16, static_cast<double>(kReservedSamples))));

    // Frames in chunks, each averaged to mono and converted.
    const auto channels = static_cast<size_t>(info.channels);
    std::vector<float> frames(static_cast<size_t>(kChunkFrames) * channels), mono, converted;
    size_t clipped = 0;
    for (bool last = false; !last;) {
        const sf_count_t count = sf_readf_float(file.get(), frames.data(), kChunkFrames);
        last = count <= 0;
        mono.assign(static_cast<size_t>(std::max<sf_count_t>(count, 0)), 0.0f);
        for (size_t i = 0; i < mono.size(); ++i) {
            float sum = 0;
            for (size_t c = 0; c < channels; ++c) sum += frames[i * channels + c];
            mono[i] = sum / static_cast<float>(channels);
        }
        if (!resampler) {
            appendSamples(mono, samples, clipped);
            continue;
        }
        converted.clear();
        if (!resampler->process(mono.data(), static_cast<long>(mono.size()), last, converted)) {
            error = quoted(path) + ": rate conversion failed: " + resampler->error();
            samples.clear();
            return false;
        }
        appendSamples(converted, samples, clipped);
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR) {
        error = "cannot read " + quoted(path) + ": " + sf_strerror(file.get());
        samples.clear();
        return false;
    }
    if (resampler || info.channels != 1 || (info.format & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16) {
        conversion = "converted " + describe(info) + " to 8000 Hz mono 16-bit";
        if (clipped != 0) conversion += " (" + std::to_string(clipped) + " samples clipped)";
    }
    return true;
}

#else  // no libsndfile

bool write(const std::string &path, const std::vector<int16_t> &samples, OutputFormat format, std::string &error) {
    std::string data;
    for (const int16_t sample : samples) {
        if (format.encoding == Encoding::Ulaw)
            data += static_cast<char>(wire::g711::ulawFromLinear(sample));
        else if (format.encoding == Encoding::Alaw)
            data += static_cast<char>(wire::g711::alawFromLinear(sample));
        else
            put16(data, static_cast<uint16_t>(sample));
    }
    std::string header;
    if (format.container == Container::Wav) {
        // As libsndfile writes them: G.711 with an 18-byte format chunk and a
        // fact chunk of the sample count.
        const bool pcm = format.encoding == Encoding::Pcm16;
        const uint32_t width = pcm ? 2 : 1, formatLength = pcm ? 16 : 18;
        header = "RIFF";
        put32(header, static_cast<uint32_t>(4 + 8 + formatLength + (pcm ? 0 : 12) + 8 + data.size()));
        header += "WAVEfmt ";
        put32(header, formatLength);
        put16(header, pcm ? kTagPcm : format.encoding == Encoding::Ulaw ? kTagUlaw : kTagAlaw);
        put16(header, 1);
        put32(header, kSampleRate);
        put32(header, kSampleRate * width);
        put16(header, width);
        put16(header, 8 * width);
        if (!pcm) {
            put16(header, 0);
            header += "fact";
            put32(header, 4);
            put32(header, static_cast<uint32_t>(samples.size()));
        }
        header += "data";
        put32(header, static_cast<uint32_t>(data.size()));
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (out) out << header << data << std::flush;
    if (!out) {
        error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool read(const std::string &path, std::vector<int16_t> &samples, std::string &error, std::string &conversion) {
    samples.clear();
    conversion.clear();
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot read " + quoted(path) + ": " + std::strerror(errno);
        return false;
    }
    const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::string ext = extension(path);
    if (ext == "ul" || ext == "al") {
        for (const uint8_t code : bytes)
            samples.push_back(ext == "ul" ? wire::g711::linearFromUlaw(code) : wire::g711::linearFromAlaw(code));
        conversion =
            std::string("converted 8000 Hz mono raw ") + (ext == "ul" ? "mu-law" : "A-law") + " to 8000 Hz mono 16-bit";
        return true;
    }
    // RIFF WAVE: chunks of a 4-byte name and a 32-bit length, padded to even
    // lengths; the format chunk before the data chunk.
    const auto refuse = [&](const std::string &what) {
        error = "cannot read " + quoted(path) + ": " + what + "; " + kWithoutLibraries;
        return false;
    };
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 || std::memcmp(bytes.data() + 8, "WAVE", 4) != 0)
        return refuse("not a WAV file");
    const wire::le::Reader file(bytes);
    uint32_t tag = 0, channels = 0, rate = 0, bits = 0;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const uint32_t length = file.u32(at + 4);
        const size_t start = at + 8, count = std::min<size_t>(length, bytes.size() - start);
        if (std::memcmp(bytes.data() + at, "fmt ", 4) == 0 && count >= 16) {
            tag = file.u16(start), channels = file.u16(start + 2), rate = file.u32(start + 4);
            bits = file.u16(start + 14);
        } else if (std::memcmp(bytes.data() + at, "data", 4) == 0) {
            const bool pcm = tag == kTagPcm && bits == 16, g711 = (tag == kTagUlaw || tag == kTagAlaw) && bits == 8;
            if (channels != 1 || rate != kSampleRate || !(pcm || g711)) {
                const std::string kind = tag == kTagPcm    ? std::to_string(bits) + "-bit"
                                         : tag == kTagUlaw ? "mu-law"
                                         : tag == kTagAlaw ? "A-law"
                                                           : "format tag " + std::to_string(tag);
                return refuse(std::to_string(rate) + " Hz " + std::to_string(channels) + "-channel WAV " + kind);
            }
            for (size_t i = start; i + (pcm ? 1 : 0) < start + count; i += pcm ? 2 : 1)
                samples.push_back(pcm               ? static_cast<int16_t>(file.u16(i))
                                  : tag == kTagUlaw ? wire::g711::linearFromUlaw(bytes[i])
                                                    : wire::g711::linearFromAlaw(bytes[i]));
            if (!pcm)
                conversion = std::string("converted 8000 Hz mono WAV ") + (tag == kTagUlaw ? "mu-law" : "A-law") +
                             " to 8000 Hz mono 16-bit";
            return true;
        }
        at = start + length + (length & 1);
        if (at < start) break;  // a length that wraps
    }
    return refuse("a WAV file with no format or no data");
}

#endif

}  // namespace rynctl::audio
