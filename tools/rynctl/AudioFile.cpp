// Audio files through libsndfile, rate conversion through libsamplerate.
// Reading goes through 32-bit float: libsndfile scales 8- and 16-bit PCM and
// G.711 by a power of two, so those samples come back to 16 bits unchanged,
// and wider or float samples are rounded and clipped to 16 bits at the end.
#include "AudioFile.h"

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <memory>

namespace rynctl::audio {
namespace {

constexpr sf_count_t kChunkFrames = 4096;

struct CloseSndFile {
    void operator()(SNDFILE *file) const { sf_close(file); }
};
using SndFile = std::unique_ptr<SNDFILE, CloseSndFile>;

struct DeleteSrcState {
    void operator()(SRC_STATE *state) const { src_delete(state); }
};

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
    case SF_FORMAT_WAVEX: return "WAV";
    case SF_FORMAT_AIFF: return "AIFF";
    case SF_FORMAT_AU: return "AU";
    case SF_FORMAT_RAW: return "raw";
    case SF_FORMAT_FLAC: return "FLAC";
    case SF_FORMAT_OGG: return "Ogg";
    case SF_FORMAT_CAF: return "CAF";
    case SF_FORMAT_W64: return "W64";
    case SF_FORMAT_RF64: return "RF64";
    default: return libraryName(format & SF_FORMAT_TYPEMASK);
    }
}

std::string encodingName(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8: return "8-bit";
    case SF_FORMAT_PCM_16: return "16-bit";
    case SF_FORMAT_PCM_24: return "24-bit";
    case SF_FORMAT_PCM_32: return "32-bit";
    case SF_FORMAT_FLOAT: return "float";
    case SF_FORMAT_DOUBLE: return "double";
    case SF_FORMAT_ULAW: return "mu-law";
    case SF_FORMAT_ALAW: return "A-law";
    default: return libraryName(format & SF_FORMAT_SUBMASK);
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
    if (info.frames > 0 && info.frames < SF_COUNT_MAX)
        samples.reserve(static_cast<size_t>(static_cast<double>(info.frames) * ratio) + 16);

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

}  // namespace rynctl::audio
