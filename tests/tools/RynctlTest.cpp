#include <gtest/gtest.h>

#include <cstdio>
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

TEST(Rynctl, DescribesProgramFilesAndWritesTheirImages) {
    CoffFile file;
    file.sections = {{".text", 0x7E16, words(300)}, {".xref", 0x10, words(2)}};
    file.symbols = {{"_c_int00", 0x1234}};
    TempFile program(file.bytes());

    auto [out, code] = rynctl(std::string("coff ") + program.path());
    EXPECT_EQ(code, 0) << out;
    EXPECT_NE(out.find(".text    address 0x00007E16  size        300  page 0  loaded"), std::string::npos) << out;
    EXPECT_NE(out.find(".xref    address 0x00000010  size          2  page 0  not loaded"), std::string::npos) << out;
    EXPECT_NE(out.find("entry     0x00007E16"), std::string::npos) << out;

    // The image file holds exactly what the create call makes.
    const std::string image = std::string(program.path()) + ".img";
    std::tie(out, code) =
        rynctl(std::string("image ") + program.path() + " -o " + image + " --records --entry _c_int00");
    EXPECT_EQ(code, 0) << out;
    EXPECT_NE(out.find("record image of 317 words, entry 0x00001234"), std::string::npos) << out;
    uint16_t expected[317];
    uint32_t used = 0, entry = 0;
    ASSERT_EQ(RynDspCreateProgramImageEx(program.path(), "", 317, expected, &used, &entry), 0u);
    FILE *written = std::fopen(image.c_str(), "rb");
    ASSERT_NE(written, nullptr);
    uint8_t bytes[2 * 317 + 1];
    EXPECT_EQ(std::fread(bytes, 1, sizeof bytes, written), 2u * 317);
    std::fclose(written);
    std::remove(image.c_str());
    EXPECT_EQ(bytes[2 * 316] | bytes[2 * 316 + 1] << 8, expected[316]);
}

TEST(Rynctl, ListsTheBuiltInModules) {
    const auto [out, code] = rynctl("spm list");
    EXPECT_EQ(code, 0);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 28);
    EXPECT_NE(out.find("    13         2  word records (v1)      14034  0x03BB6   HDLC RX\n"), std::string::npos) << out;
}

TEST(Rynctl, ClearMessagesForBadFiles) {
    CoffFile file;
    file.sections = {{".text", 0x100, words(4)}};
    const std::vector<uint8_t> whole = file.bytes();
    TempFile truncated(std::vector<uint8_t>(whole.begin(), whole.end() - 3));
    TempFile v1([&] {
        CoffFile old = file;
        old.version = 0xC1;
        return old.bytes();
    }());
    const struct {
        std::string arguments, message;
    } cases[] = {
        {"coff /no/such/file", "cannot read \"/no/such/file\""},
        {"image /no/such/file -o /dev/null", "cannot open \"/no/such/file\""},
        {std::string("coff ") + truncated.path(), "ends early or points outside itself"},
        {std::string("image ") + v1.path() + " -o /dev/null --records", "record images need one"},
        {std::string("coff ") + v1.path() + " --entry nothing", "is neither a hexadecimal address nor a symbol"},
        {"image", "usage: rynctl image"},
    };
    for (const auto &c : cases) {
        const auto [out, code] = rynctl(c.arguments);
        EXPECT_NE(code, 0) << c.arguments;
        EXPECT_NE(out.find(c.message), std::string::npos) << c.arguments << ": " << out;
    }
    EXPECT_EQ(rynctl("coff --help").second, 0);
}

}  // namespace
