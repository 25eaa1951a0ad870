#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "RynHwDll.h"
#include "dsp/CoffWriter.h"
#include "support/Goertzel.h"
#include "support/Platform.h"
#include "support/TempFile.h"

namespace {

using namespace ryn::test;

struct Outcome {
    std::string out, err;
    int status;
};

// Runs rynctl with `arguments`: its standard output, its standard error and its exit code.
Outcome run(const std::string &arguments) {
    const TempFile errors(std::vector<uint8_t>{});
    const CommandResult ran = runCommand(std::string(RYN_TOOL) + " " + arguments + " 2>" + errors.path());
    Outcome result{ran.out, "", ran.status};
    std::ifstream in(errors.path());
    result.err.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return result;
}

// Both streams together, for the commands' own tables.
std::pair<std::string, int> rynctl(const std::string &arguments) {
    const Outcome r = run(arguments);
    return {r.out + r.err, r.status};
}

// The command line itself: help and versions on standard output, every
// usage error on standard error with exit code 2, naming what was wrong.
// None of these reaches the board.
TEST(Rynctl, CommandLine) {
    enum Stream { Out, Err };
    const std::tuple<std::string, int, Stream, std::string> cases[] = {
        {"--help", 0, Out, "Exit status: 0 done; 1 the board or driver refused"},
        {"-h", 0, Out, "Usage: rynctl [OPTIONS] COMMAND"},
        {"--version", 0, Out, "RynHwDll library 2.12.1.0"},
        {"spm run -h", 0, Out, "Usage: rynctl spm run [OPTIONS] DEVICE MODULE"},
        {"", 2, Err, "Usage: rynctl [OPTIONS] COMMAND"},
        {"lsit", 2, Err, "rynctl: unknown command 'lsit' (did you mean 'list'?)"},
        {"--verison", 2, Err, "unknown option '--verison' (did you mean '--version'?)"},
        {"spm lsit", 2, Err, "rynctl spm: unknown command 'lsit' (did you mean 'list'?)"},
        {"spm", 2, Err, "a command is required: list or run"},
        {"events hdlc:0 --cout 3", 2, Err, "rynctl events: unknown option '--cout' (did you mean '--count'?)"},
        {"events hdlc:0 --count x", 2, Err, "--count: expected a number (decimal or 0x hexadecimal), not \"x\""},
        {"events hdlc:0 --timeout -5", 2, Err, "--timeout: expected a number"},
        {"events", 2, Err, "DEVICE is required"},
        {"list extra", 2, Err, "rynctl list: unexpected argument 'extra'"},
        {"attr nowhere:3", 2, Err, "\"nowhere:3\" names no device"},
        {"attr hdcl:0", 2, Err, "(did you mean 'hdlc:0'?)"},
        {"attr dsp:0 5 4294967296", 2, Err, "out of the 32-bit range"},
        {"attr dsp:0 --text", 2, Err, "--text requires VALUE"},
        {"record tone:5000 x.wav", 2, Err, "give 1 to 5 frequencies below 4000 Hz"},
        {"record dtmf:1 x.wav --seconds 601", 2, Err, "--seconds: expected a number from 1 to 600"},
        {"record dtmf:1 x.wav --encoding mp3", 2, Err, "--encoding"},
        {"record callerid x.wav --number 555123456", 2, Err, "--number: expected 10 digits, not \"555123456\""},
        {"record calerid x.wav", 2, Err, "(did you mean 'callerid'?)"},
        {"record tone:440 x.wav --name Ann", 2, Err, "--number, --name and --message are for the callerid source"},
        {"play x.wav dtfm", 2, Err, "(did you mean 'dtmf'?)"},
        {"image", 2, Err, "FILE is required"},
        {"result 0xC300AA0D", 0, Out,
         "source   0x86 request transport\nline     170\nerror    13: operation failed\n"
         "meaning  the driver call failed"},
        {"result -2147483639", 0, Out, "code     0x80000009 (2147483657, -2147483639)"},
        {"result 956301569", 0, Out,
         "status (bit 31 clear)\nsource   0x72 the virtual board\nline     1\n"
         "error    1: nothing to read"},
        {"result 0xB580121D", 0, Out, "source   0x6B DSP and loader\nline     18\nerror    29: image buffer full"},
        {"result -0x5", 2, Err, "CODE: expected a 32-bit code"},
        {"result 4294967296", 2, Err, "CODE: expected a 32-bit code"},
    };
    for (const auto &[arguments, code, stream, text] : cases) {
        const Outcome r = run(arguments);
        EXPECT_EQ(r.status, code) << arguments;
        EXPECT_NE((stream == Out ? r.out : r.err).find(text), std::string::npos) << arguments << ": " << r.out << r.err;
        EXPECT_EQ(stream == Out ? r.err : r.out, "") << arguments;
    }
    for (const char *command :
         {"demo", "info", "list", "attr", "events", "load", "record", "play", "spm", "coff", "image", "result"}) {
        for (const char *help : {" -h", " --help"}) {
            const Outcome r = run(command + std::string(help));
            EXPECT_EQ(r.status, 0) << command << help;
            EXPECT_NE(r.out.find("Usage: rynctl " + std::string(command)), std::string::npos) << command << help;
        }
    }
}

TEST(Rynctl, CommandsAndTheirMessages) {
    CoffFile file;
    file.sections = {{".text", 0x7E16, words(300)}, {".xref", 0x10, words(2)}};
    const std::vector<uint8_t> plain = CoffFile{0xC2, 0x98, 28, {{".text", 0x100, words(4)}}, {}}.bytes();
    TempFile truncated(std::vector<uint8_t>(plain.begin(), plain.end() - 3));  // inside the section's data
    file.symbols = {{"_c_int00", 0x1234}};
    TempFile program(file.bytes());
    file.version = 0xC1;
    TempFile v1(file.bytes());
    const std::string p = program.path(), image = p + ".img";
    // Arguments, exit code, a line of the output.
    const std::tuple<std::string, int, std::string> cases[] = {
        {"coff " + p, 0,
         "\n  .text    address 0x00007E16  size        300  page 0  loaded\n"
         "  .xref    address 0x00000010  size          2  page 0  not loaded\n"
         "entry     0x00007E16\n"},
        {"image " + p + " -o " + image + " --records --entry _c_int00", 0,
         "record image of 317 words, entry 0x00001234"},
        {"spm list", 0, "\n    13         2  word records (v1)      14034  0x03BB6   HDLC RX\n"},
        // A relative name: on Windows, rynctl reads "/no" as an option (CLI11's Windows style).
        {"coff no/such/file", 1, "cannot read \"no/such/file\""},
        {"image no/such/file -o /dev/null", 1, "cannot open \"no/such/file\""},
        {"coff " + std::string(truncated.path()), 1, "ends early or points outside itself"},
        {"image " + std::string(v1.path()) + " -o /dev/null --records", 1, "record images need one"},
        {"coff " + std::string(v1.path()) + " --entry nothing", 1, "is neither a hexadecimal address nor a symbol"}};
    for (const auto &[arguments, code, line] : cases) {
        const auto [out, status] = rynctl(arguments);
        EXPECT_EQ(status, code) << arguments;
        EXPECT_NE(out.find(line), std::string::npos) << arguments << ": " << out;
    }
    EXPECT_EQ(std::ranges::count(rynctl("spm list").first, '\n'), 28);  // a heading and 27 modules

    // The image file holds what the create call makes, as 16-bit little-endian words.
    std::ifstream written(image, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(written)), std::istreambuf_iterator<char>());
    std::remove(image.c_str());
    uint16_t expected[318];
    uint32_t used = 0, entry = 0;
    ASSERT_EQ(RynDspCreateProgramImageEx(program.path(), "", 318, expected, &used, &entry), 0u);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char *>(expected), 2 * used));
}

// An 8 kHz 16-bit WAV file of `samples`, the same in each of `channels`.
void writeWav(const std::string &path, const std::vector<int16_t> &samples, uint16_t channels = 1) {
    const auto le = [](uint32_t v, int n) { return std::string(reinterpret_cast<const char *>(&v), n); };
    const uint32_t data = static_cast<uint32_t>(samples.size() * 2 * channels);
    std::ofstream out(path, std::ios::binary);
    out << "RIFF" << le(36 + data, 4) << "WAVEfmt " << le(16, 4) << le(1, 2) << le(channels, 2) << le(8000, 4)
        << le(16000 * channels, 4) << le(2 * channels, 2) << le(16, 2) << "data" << le(data, 4);
    for (const int16_t sample : samples)
        for (uint16_t c = 0; c < channels; ++c) out.write(reinterpret_cast<const char *>(&sample), 2);
}

using ryn::test::power;

// The board commands run against the virtual board beside the tool, each
// command with a board of its own.
TEST(Rynctl, OnTheVirtualBoard) {
    TempFile program(CoffFile{0xC2, 0x98, 28, {{".text", 0x7E16, words(64)}}, {}}.bytes());
    const std::string dir = std::string(program.path()) + "-", recorded = dir + "dial.wav", made = dir + "made.wav";
    // The test's own DTMF: '0' (941 + 1336 Hz) then '#' (941 + 1477 Hz), 60 ms each, 60 ms apart.
    std::vector<int16_t> tones;
    for (const double high : {1336.0, 1477.0}) {
        for (int n = 0; n < 480; ++n)
            tones.push_back(static_cast<int16_t>(
                2000 * (std::sin(2 * M_PI * 941 * n / 8000) + std::sin(2 * M_PI * high * n / 8000))));
        tones.insert(tones.end(), 480, 0);
    }
    writeWav(made, tones);
    writeWav(dir + "stereo.wav", tones, 2);
    const std::tuple<std::string, int, std::string> cases[] = {
        {"demo", 0, "everything came back as sent"},
        {"list", 0, "0x10000005  dsp:1     type 3    DSP 1"},
        {"attr dsp:0 5 77", 0, "  5  settable  77 (0x4D)"},
        {"attr 0 13", 0, "\"1.01.47.0\""},
        {"attr hdlc:9", 1, "the board has no device \"hdlc:9\" (failure, source "},
        {"events hdlc:1 --count 1", 0, "Device enabled"},
        {"load dsp:0 " + std::string(program.path()), 0, " 33  read-only 0 (0x0)"},  // built-in module 0's entry
        {"record dtmf:1234# " + recorded + " --seconds 1", 0, "8000 samples"},
        {"play " + recorded + " dtmf", 0, "detected: 1234#"},
        {"play " + made + " dtmf", 0, "detected: 0#"},
#if RYN_AUDIO_LIBRARIES
        {"play " + dir + "stereo.wav dtmf", 0, "stereo.wav: converted 8000 Hz stereo WAV 16-bit to 8000 Hz mono"},
#else
        {"play " + dir + "stereo.wav dtmf", 1, "this rynctl was built without libsndfile: only 8 kHz mono 16-bit WAV"},
#endif
        {"record dtmf:1234# " + dir + "dial.ul", 0, "(1 s at 8000 Hz, raw mu-law)"},
        {"play " + dir + "dial.ul dtmf", 0, "detected: 1234#"},
        {"record callerid " + dir + "cid.wav --number 5551234567 --name Ann", 0, "32000 samples (4 s at 8000 Hz"},
        {"play " + dir + "cid.wav callerid", 0, "number 5551234567, name Ann, checksum right"},
        {"play " + made + " mf", 1, "detected: nothing"},
        {"attr hdlc:0 5 -1", 0, "  5  settable  4294967295 (0xFFFFFFFF)"},
        {"attr dsp:0 5 12 --text", 1, "(failure, source 0x72 the virtual board, line "},
        {"attr dsp:0 5 12 --text", 1, ", error 9: argument out of range)"},
    };
    for (const auto &[arguments, code, line] : cases) {
        const auto [out, status] = rynctl(arguments);
        EXPECT_EQ(status, code) << arguments;
        EXPECT_NE(out.find(line), std::string::npos) << arguments << ": " << out;
    }
    // The recording decoded here: '1' is 697 + 1209 Hz, above every other DTMF frequency.
    std::ifstream in(recorded, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_EQ(bytes.size(), 44u + 16000u);
    std::vector<int16_t> dialled(8000);
    std::memcpy(dialled.data(), bytes.data() + 44, 16000);
    const double low = power(dialled, 0, 400, 697), high = power(dialled, 0, 400, 1209);
    for (const double other : {770.0, 852.0, 941.0, 1336.0, 1477.0, 1633.0}) {
        EXPECT_GT(low, 20 * power(dialled, 0, 400, other)) << other;
        EXPECT_GT(high, 20 * power(dialled, 0, 400, other)) << other;
    }
    for (const auto &file : {recorded, made, dir + "stereo.wav", dir + "dial.ul", dir + "cid.wav"})
        std::remove(file.c_str());
}

}  // namespace
