#include <gtest/gtest.h>
#if RYN_AUDIO_LIBRARIES
#include <sndfile.h>
#endif

#include <cmath>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "AudioFile.h"
#include "support/TempFile.h"

namespace {

using namespace rynctl::audio;
using ryn::test::TempFile;

constexpr double kPi = 3.14159265358979323846;
constexpr double kAmplitude = 0.5;  // of full scale
constexpr double kSeconds = 0.5;

// A 1 kHz sine at `rate`; channel c of `channels` at a gain of its own, the
// gains averaging 1 (1.4 and 0.6 in stereo), interleaved.
std::vector<double> sine(int rate, int channels) {
    const auto frames = static_cast<size_t>(kSeconds * rate);
    std::vector<double> out;
    for (size_t i = 0; i < frames; ++i) {
        const double value = kAmplitude * std::sin(2 * kPi * 1000.0 * static_cast<double>(i) / rate);
        for (int c = 0; c < channels; ++c)
            out.push_back(value * (1.0 + 0.4 * (channels - 1 - 2 * c) / std::max(channels - 1, 1)));
    }
    return out;
}

// The 1 kHz part of 8 kHz samples, fitted over whole periods of the middle
// half (away from the rate converter's edges): its amplitude, and the RMS of
// what is left.
std::pair<double, double> measure(const std::vector<int16_t> &samples) {
    const size_t from = samples.size() / 4, count = samples.size() / 2 / 8 * 8;
    double in = 0, quadrature = 0;
    for (size_t i = from; i < from + count; ++i) {
        in += samples[i] * std::cos(2 * kPi * static_cast<double>(i) / 8.0);
        quadrature += samples[i] * std::sin(2 * kPi * static_cast<double>(i) / 8.0);
    }
    const double a = 2 * in / static_cast<double>(count), b = 2 * quadrature / static_cast<double>(count);
    double rest = 0;
    for (size_t i = from; i < from + count; ++i) {
        const double x = samples[i] - a * std::cos(2 * kPi * static_cast<double>(i) / 8.0) -
                         b * std::sin(2 * kPi * static_cast<double>(i) / 8.0);
        rest += x * x;
    }
    return {std::hypot(a, b), std::sqrt(rest / static_cast<double>(count))};
}

#if RYN_AUDIO_LIBRARIES
bool writeWithLibsndfile(const std::string &path, int format, int rate, int channels, const std::vector<double> &data) {
    SF_INFO info{};
    info.format = format;
    info.samplerate = rate;
    info.channels = channels;
    SNDFILE *file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr) return false;
    const auto frames = static_cast<sf_count_t>(data.size() / static_cast<size_t>(channels));
    const bool written = sf_writef_double(file, data.data(), frames) == frames;
    return sf_close(file) == 0 && written;
}
#endif

std::vector<uint8_t> bytesOf(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(AudioFile, ReadsEachFormatAsAn8kHzMonoSine) {
    struct Case {
        const char *name;
        int sfFormat;         // written by libsndfile in this format, or 0: by write() as `written`
        OutputFormat written;
        int rate, channels;
        const char *conversion;
    };
    const std::string to = " to 8000 Hz mono 16-bit";
    const Case cases[] = {
        {"pcm16.wav", 0, {Container::Wav, Encoding::Pcm16}, 8000, 1, ""},
        {"ulaw.wav", 0, {Container::Wav, Encoding::Ulaw}, 8000, 1, "8000 Hz mono WAV mu-law"},
        {"alaw.WAV", 0, {Container::Wav, Encoding::Alaw}, 8000, 1, "8000 Hz mono WAV A-law"},
        {"tone.ul", 0, {Container::Raw, Encoding::Ulaw}, 8000, 1, "8000 Hz mono raw mu-law"},
        {"tone.al", 0, {Container::Raw, Encoding::Alaw}, 8000, 1, "8000 Hz mono raw A-law"},
#if RYN_AUDIO_LIBRARIES
        {"u8.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, {}, 8000, 1, "8000 Hz mono WAV 8-bit"},
        {"stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, {}, 8000, 2, "8000 Hz stereo WAV 16-bit"},
        {"three.au", SF_FORMAT_AU | SF_FORMAT_ULAW, {}, 8000, 3, "8000 Hz 3-channel AU mu-law"},
        {"float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {}, 22050, 1, "22050 Hz mono WAV float"},
        {"cd.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, {}, 44100, 2, "44100 Hz stereo FLAC 24-bit"},
        {"studio.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, {}, 48000, 1, "48000 Hz mono AIFF 16-bit"},
        {"low.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_S8, {}, 6000, 1, "6000 Hz mono AIFF 8-bit"},
#endif
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        TempFile file({}, c.name);
        std::vector<int16_t> board;  // what write() was given
        std::string error, conversion;
        if (c.sfFormat != 0) {
#if RYN_AUDIO_LIBRARIES
            ASSERT_TRUE(writeWithLibsndfile(file.path(), c.sfFormat, c.rate, c.channels, sine(c.rate, c.channels)));
#endif
        } else {
            for (double x : sine(8000, 1)) board.push_back(static_cast<int16_t>(std::lrint(x * 32767)));
            ASSERT_TRUE(write(file.path(), board, c.written, error)) << error;
            const std::vector<uint8_t> bytes = bytesOf(file.path());
            const bool ulaw = c.written.encoding == Encoding::Ulaw, alaw = c.written.encoding == Encoding::Alaw;
            if (c.written.container == Container::Wav) {
                // Format tag 1, 7 or 6, one channel, 8000 Hz.
                ASSERT_GE(bytes.size(), 44u);
                EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 20, bytes.begin() + 26),
                          (std::vector<uint8_t>{uint8_t(ulaw ? 7 : alaw ? 6 : 1), 0, 1, 0, 0x40, 0x1F}));
            } else {
                // One byte a sample, the first (silence) 0xFF in mu-law, 0xD5 in A-law.
                ASSERT_EQ(bytes.size(), board.size());
                EXPECT_EQ(bytes[0], ulaw ? 0xFF : 0xD5);
            }
        }
        std::vector<int16_t> samples;
        ASSERT_TRUE(read(file.path(), samples, error, conversion)) << error;
        EXPECT_EQ(conversion, *c.conversion == 0 ? "" : "converted " + std::string(c.conversion) + to);
        EXPECT_NEAR(static_cast<double>(samples.size()), kSeconds * 8000, 2);
        const auto [amplitude, rest] = measure(samples);
        EXPECT_NEAR(amplitude, kAmplitude * 32768, kAmplitude * 32768 * 0.02);
        EXPECT_LT(rest, kAmplitude * 32768 * 0.03);
        if (c.sfFormat == 0 && c.written.encoding == Encoding::Pcm16) {
            EXPECT_EQ(samples, board);  // 16-bit PCM comes back unchanged
        }
    }
}

TEST(AudioFile, ClipsFloatSamplesTo16Bits) {
#if !RYN_AUDIO_LIBRARIES
    GTEST_SKIP() << "rynctl built without libsndfile reads only 8 kHz mono 16-bit and G.711 files";
#else
    TempFile file({}, "loud.wav");
    ASSERT_TRUE(writeWithLibsndfile(file.path(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 8000, 1, {0.5, 1.5, -1.5, -1.0}));
    std::vector<int16_t> samples;
    std::string error, conversion;
    ASSERT_TRUE(read(file.path(), samples, error, conversion)) << error;
    EXPECT_EQ(samples, (std::vector<int16_t>{16384, 32767, -32768, -32768}));
    EXPECT_EQ(conversion, "converted 8000 Hz mono WAV float to 8000 Hz mono 16-bit (2 samples clipped)");
#endif
}

// Headers that promise more than a file holds: a 42-byte FLAC whose stream
// information claims 2^36 samples is read as the nothing it holds (no
// allocation of the promised length), and a 32 Hz file is refused rather than
// multiplied 250 times over.
TEST(AudioFile, HeadersThatPromiseTooMuch) {
#if !RYN_AUDIO_LIBRARIES
    GTEST_SKIP() << "rynctl built without libsndfile reads only 8 kHz mono 16-bit and G.711 files";
#else
    std::vector<uint8_t> flac = {'f', 'L', 'a', 'C', 0x80, 0x00, 0x00, 0x22, 0x10, 0x00, 0x10, 0x00, 0x00, 0x00,
                                 0x00, 0x00, 0x00, 0x00, 0x01, 0xF4, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    flac.resize(42, 0);
    TempFile claims(flac, "claims.flac");
    std::vector<int16_t> samples;
    std::string error, conversion;
    read(claims.path(), samples, error, conversion);  // whatever it says, it returns
    EXPECT_LT(samples.capacity(), size_t{8000} * 601);
    TempFile slow({}, "slow.wav");
    ASSERT_TRUE(writeWithLibsndfile(slow.path(), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32, 1, {0.5, -0.5}));
    EXPECT_FALSE(read(slow.path(), samples, error, conversion));
    EXPECT_NE(error.find("32 Hz is below the lowest rate read, 1000 Hz"), std::string::npos) << error;
#endif
}

TEST(AudioFile, OutputFormatFollowsTheEncodingAndTheExtension) {
    const auto W = Container::Wav, R = Container::Raw;
    const auto P = Encoding::Pcm16, U = Encoding::Ulaw, A = Encoding::Alaw;
    // Path, encoding, the format (or the part of the error when none).
    const std::tuple<std::string, std::string, std::optional<OutputFormat>, std::string> cases[] = {
        {"a.wav", "", OutputFormat{W, P}, ""},
        {"a.ul", "", OutputFormat{R, U}, ""},
        {"a.AL", "", OutputFormat{R, A}, ""},
        {"a.raw", "", OutputFormat{W, P}, ""},
        {"calls.ul/a", "", OutputFormat{W, P}, ""},
        {"a.wav", "pcm16", OutputFormat{W, P}, ""},
        {"a.wav", "ulaw", OutputFormat{W, U}, ""},
        {"a.wav", "alaw", OutputFormat{W, A}, ""},
        {"a.al", "alaw", OutputFormat{R, A}, ""},
        {"a.ul", "pcm16", std::nullopt, "names a raw mu-law file, not pcm16"},
        {"a.al", "ulaw", std::nullopt, "names a raw A-law file, not ulaw"},
        {"a.wav", "gsm", std::nullopt, "unknown encoding \"gsm\""},
    };
    for (const auto &[path, encoding, expected, message] : cases) {
        SCOPED_TRACE(path + " " + encoding);
        std::string error;
        const auto format = outputFormat(path, encoding, error);
        ASSERT_EQ(format.has_value(), expected.has_value()) << error;
        if (format) {
            EXPECT_EQ(format->container, expected->container);
            EXPECT_EQ(format->encoding, expected->encoding);
        } else {
            EXPECT_NE(error.find(message), std::string::npos) << error;
        }
    }
}

TEST(AudioFile, SaysWhyAFileCannotBeRead) {
    TempFile text(std::vector<uint8_t>(200, 'x'), "notes.wav");
    const std::string missing = std::string(text.path()) + ".gone.ul";
    // Path, part of libsndfile's message (or of the message of a build without it).
    const std::pair<std::string, std::string> cases[] = {
        {text.path(), RYN_AUDIO_LIBRARIES ? "Format not recognised" : "not a WAV file; this rynctl was built without"},
        {missing, "No such file"},
    };
    for (const auto &[path, message] : cases) {
        std::vector<int16_t> samples{1};
        std::string error, conversion;
        EXPECT_FALSE(read(path, samples, error, conversion));
        EXPECT_TRUE(samples.empty());
        EXPECT_NE(error.find("\"" + path + "\""), std::string::npos) << error;
        EXPECT_NE(error.find(message), std::string::npos) << error;
    }
}

}  // namespace
