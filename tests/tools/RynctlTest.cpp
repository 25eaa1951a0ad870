#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "RynHwDll.h"
#include "dsp/CoffWriter.h"
#include "support/TempFile.h"

namespace {

using namespace ryn::test;

// Runs rynctl with `arguments`; its standard output and error, and its exit code.
std::pair<std::string, int> rynctl(const std::string &arguments) {
    FILE *pipe = popen((std::string(RYN_TOOL) + " " + arguments + " 2>&1").c_str(), "r");
    std::string out;
    char buffer[256];
    while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr) out += buffer;
    const int status = pipe != nullptr ? pclose(pipe) : -1;
    return {out, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
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
        {"coff --help", 0, "usage: rynctl coff"},
        {"coff /no/such/file", 1, "cannot read \"/no/such/file\""},
        {"image /no/such/file -o /dev/null", 1, "cannot open \"/no/such/file\""},
        {"coff " + std::string(truncated.path()), 1, "ends early or points outside itself"},
        {"image " + std::string(v1.path()) + " -o /dev/null --records", 1, "record images need one"},
        {"coff " + std::string(v1.path()) + " --entry nothing", 1, "is neither a hexadecimal address nor a symbol"},
        {"image", 2, "usage: rynctl image"}};
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

}  // namespace
