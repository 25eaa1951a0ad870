#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "RynHwDll.h"
#include "dsp/CoffWriter.h"
#include "support/ConnectedTest.h"
#include "support/TempFile.h"

namespace {

using namespace ryn::test;
using Loader = ConnectedTest;
using Words = std::vector<uint16_t>;
using Functions = std::vector<uint32_t>;

constexpr DeviceHandle kDsp = 0x20000011;
constexpr uint32_t kHold = 0x99A, kStart = 0x99B, kBlock = 0x99C, kCancel = 0x99D, kLoadImage = 0x9A0, kDisable = 0x80D;

CoffFile wordFile(std::vector<CoffSection> sections, uint16_t version = 0xC2, uint16_t target = 0x98) {
    return CoffFile{version, target, 28, std::move(sections), {}};
}

Functions functions(const FakeDriver &driver) {
    Functions out;
    for (const auto &r : driver.requests()) out.push_back(r.function());
    return out;
}

// The error number of a code raised by the DSP module; 0 for success.
uint32_t dspError(ResultCode code) {
    if (code == 0) return 0;
    EXPECT_EQ(RynResultSourceId(code), 0x6Bu) << std::hex << code;
    return RynResultErrorCode(code);
}

// Runs a program file of these bytes on the DSP; the error number.
uint32_t run(const std::vector<uint8_t> &bytes, const char *entry = "", const std::string &name = "program.out") {
    TempFile f(bytes, name);
    return dspError(RynDspRunProgram_12(kDsp, f.path(), entry));
}

struct Image {
    uint32_t error;
    Words words;
    uint32_t entry;
};
// A command-stream image, or a record image, of `capacity` words made from `file`.
Image makeImage(bool records, const CoffFile &file, uint32_t capacity, const char *entryName = "") {
    TempFile f(file.bytes());
    Image image{0, Words(capacity + 1, 0xCCCC), 0xEEEE};
    uint32_t used = 0xFFFF;
    uint16_t used16 = 0xFFFF;
    const ResultCode result =
        records ? RynDspCreateProgramImageEx_24(f.path(), entryName, capacity, image.words.data(), &used, &image.entry)
                : RynDspCreateProgramImage_24(f.path(), entryName, static_cast<uint16_t>(capacity), image.words.data(),
                                              &used16, &image.entry);
    EXPECT_EQ(image.words[capacity], 0xCCCC);  // nothing written past the capacity
    image.error = dspError(result);
    image.words.resize(records ? used : used16);
    return image;
}

TEST_F(Loader, DirectLoadsInChunks) {
    // Version 2 word target: 300 words as 128 + 128 + 44 at rising addresses.
    EXPECT_EQ(run(wordFile({{".text", 0x7E16, words(300), 0, 1}, {".data", 0x9000, words(5, 0x500)}}).bytes()), 0u);
    auto sent = driver.requests();
    ASSERT_EQ(functions(driver), (Functions{kHold, kBlock, kBlock, kBlock, kBlock, kStart}));
    EXPECT_EQ(sent[1].input.size(), 292u);
    expectFields(sent[1], {{16, kDsp}, {20, 0x1004}, {24, 128}, {28, 0x7E16}, {32, 1}, {36, 0x01010100}});
    expectFields(sent[2], {{24, 128}, {28, 0x7E96}, {36, 0x01810180}});
    expectFields(sent[3], {{24, 44}, {28, 0x7F16}, {32, 1}, {36 + 42 * 2, 0x022B022A}, {36 + 44 * 2, 0}});
    expectFields(sent[4], {{24, 5}, {28, 0x9000}, {32, 0}});
    expectFields(sent[5], {{16, kDsp}, {20, 0x7E16}, {24, 0}});  // the first section is ".text"

    // Version 1: chunks of 6 words.
    driver.clear();
    EXPECT_EQ(run(wordFile({{".text", 0x100, words(300)}}, 0xC1).bytes()), 0u);
    ASSERT_EQ(driver.requestCount(), 52u);
    expectFields(driver.requests()[50], {{24, 6}, {28, 0x100 + 294}});

    // Byte target: .xref, sections without raw data and those below 0x60 send nothing.
    driver.clear();
    const CoffFile bytes = wordFile({{".data", 0x5F, std::vector<uint8_t>(10, 1)},
                                     {".xref", 0x100, std::vector<uint8_t>(10, 2)},
                                     {".bss", 0x200, {}, 64},
                                     {".text", 0x60, std::vector<uint8_t>{1, 2, 3}}},
                                    0xC2, 0x9C);
    EXPECT_EQ(run(bytes.bytes(), nullptr), 0u);
    sent = driver.requests();
    ASSERT_EQ(functions(driver), (Functions{kHold, kBlock, kStart}));
    expectFields(sent[1], {{20, 0}, {24, 3}, {28, 0x60}, {32, 0}, {36, 0x030201}});  // byte form
    expectFields(sent[2], {{20, 0}});                                                // the first section is not ".text"
}

TEST_F(Loader, EntryAddresses) {
    CoffFile file = wordFile({{".text", 0x7E16, words(2)}});
    const std::string thirty(30, 'L'), twentyNine(29, 'L');
    file.symbols = {{"_c_int00", 0x1111, true}, {"_start", 0x2222}, {"_start", 0x3333}, {"a_long_symbol_name", 0x4444},
                    {twentyNine, 0x5555},       {thirty, 0x6666},   {"9ABC", 0x7777},   {"never", 0xFFFFFFFF}};
    const std::pair<std::string, uint32_t> cases[] = {
        // name, entry (0: unresolved); long names end at 29 characters
        {"", 0x7E16},     {"1000h", 0x1000},    {"0X2000", 0x2000}, {"0x7e16", 0x7E16},
        {"12g4H", 0x12},  {"_c_int00", 0x1111}, {"_start", 0x2222}, {"a_long_symbol_name", 0x4444},
        {"9abc", 0x7777}, {"_START", 0},        {"missing", 0},     {"0xFFFFFFFF", 0},
        {"never", 0},     {twentyNine, 0x5555}, {thirty, 0}};
    for (const auto &[name, entry] : cases) {
        const Image image = makeImage(true, file, 100, name.c_str());
        EXPECT_EQ(std::pair(image.error, image.entry), entry == 0 ? std::pair(13u, 0xEEEEu) : std::pair(0u, entry))
            << name;  // stored only on success
    }
    // An unresolved entry name starts nothing and cleans up.
    EXPECT_EQ(run(file.bytes(), "missing"), 13u);
    EXPECT_EQ(functions(driver), (Functions{kHold, kBlock, kDisable, kCancel}));
}

TEST_F(Loader, Images) {
    // Command streams: one block per chunk; the page decides the set-up pairs.
    const CoffFile file = wordFile({{".text", 0x12345, words(2, 0xA0A0), 0, 0},
                                    {".data", 0x40, words(1, 0xB0B0), 0, 2},
                                    {".c", 0x50, words(1, 0xC0C0), 0, 7}});
    const Words stream = {4, 0x0FFF, 2,      0,      2,      0x2345, 2, 1,      2, 0x1004, 2, 0xA0A0, 2,      0xA0A1,
                          0, 0x0808, 0xFFFF, 0xFFFF, 4,      0x0FFF, 2, 1,      2, 0x1004, 2, 0,      2,      0x40,
                          2, 0xB0B0, 0,      0x0808, 0xFFFF, 0xFFFF, 4, 0x0FFF, 2, 0xC0C0, 0, 0x0808, 0xFFFF, 0xFFFF};
    const uint32_t size = static_cast<uint32_t>(stream.size());
    const Image exact = makeImage(false, file, size), full = makeImage(false, file, size - 1);
    EXPECT_EQ(std::tuple(exact.error, exact.words, exact.entry), std::tuple(0u, stream, 0x12345u));
    // Filled to the last word.
    EXPECT_EQ(std::pair(full.error, full.words), std::pair(29u, Words(stream.begin(), stream.end() - 1)));

    // Records: a 128-word record takes 5 + 4 + 128 words.
    const CoffFile one = wordFile({{".text", 0x12345, words(128)}});
    const Image records = makeImage(true, one, 137), short1 = makeImage(true, one, 136);
    ASSERT_EQ(records.words.size(), 137u);
    EXPECT_EQ(Words(records.words.begin(), records.words.begin() + 9),
              (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 1, 0x0001, 0x2345, 0, 128}));
    EXPECT_EQ(records.words[136], 0x100 + 127);
    EXPECT_EQ(std::pair(short1.error, short1.words.size()), std::pair(29u, size_t{5}));  // the header alone

    // Byte records: the byte count, reserved in full; two bytes a word, the earlier low.
    const CoffFile bytes = wordFile({{".text", 0x60, std::vector<uint8_t>{1, 2, 3}}}, 0xC2, 0x9C);
    EXPECT_EQ(makeImage(true, bytes, 12).words, (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 3, 0x0201, 3}));
    EXPECT_EQ(makeImage(true, bytes, 11).error, 29u);

    // Each format refuses the other kind of file; the checks come at the first chunk.
    EXPECT_EQ(makeImage(false, bytes, 100).error, 6u);
    EXPECT_EQ(makeImage(true, wordFile({{".text", 0, words(1)}}, 0xC1), 100).error, 17u);
    EXPECT_EQ(makeImage(true, wordFile({{".bss", 0, {}, 9}}, 0xC1), 100).error, 0u);
    uint32_t used = 99, entry = 0;
    uint16_t buffer[4];
    EXPECT_EQ(dspError(RynDspCreateProgramImageEx_24("x", "", 4, buffer, &used, &entry)), 9u);
    EXPECT_EQ(used, 0u);
    EXPECT_EQ(dspError(RynDspCreateProgramImageEx_24("x", "", 5, buffer, &used, nullptr)), 10u);

    // Images are made per call: two threads at once get what each alone would.
    const CoffFile other = wordFile({{".text", 0x200, words(300, 0x2000)}});
    const Image alone = makeImage(true, other, 1000);
    std::thread thread([&] {
        for (int i = 0; i < 20; ++i) EXPECT_EQ(makeImage(true, other, 1000).words, alone.words);
    });
    for (int i = 0; i < 20; ++i) EXPECT_EQ(makeImage(true, one, 137).words, records.words);
    thread.join();
}

TEST_F(Loader, RunImage) {
    const Words records = makeImage(true, wordFile({{".text", 0x12345, words(128)}}), 137).words;
    const Words bytes = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 3, 0x0201, 3};
    Words big = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 257};
    big.resize(9 + 129);
    const uint16_t stream[4] = {4, 0x0FFF, 2, 0};
    const Functions shipped = {kHold, kBlock, kStart}, refused = {kHold, kDisable, kCancel};
    const std::tuple<const uint16_t *, uint16_t, uint32_t, Functions, Fields> cases[] = {
        // image, length, error, functions, fields of the second request
        {records.data(), 137, 0, shipped, {{20, 0}, {24, 128}, {28, 0x12345}, {32, 10}, {288, 0x017F017E}}},
        {records.data(), 136, 12, refused, {}},  // records past the length
        {records.data(), 7, 12, refused, {}},
        {big.data(), 138, 12, refused, {}},           // more than 256 bytes
        {records.data(), 5, 0, {kHold, kStart}, {}},  // a header alone ships nothing
        {bytes.data(), 11, 0, shipped, {{24, 3}, {28, 0x60}, {32, 0}, {36, 0x030201}}},
        {stream, 4, 0, {kHold, kLoadImage, kStart}, {}}};
    for (const auto &[image, length, error, calls, fields] : cases) {
        driver.clear();
        EXPECT_EQ(dspError(RynDspRunImage_16(kDsp, image, length, 0x4321)), error) << length;
        EXPECT_EQ(functions(driver), calls) << length;
        if (!fields.empty()) expectFields(driver.requests()[1], fields);
        if (error == 0) expectFields(driver.lastRequest(), {{20, 0x4321}, {24, 0}});  // the start
    }
    // A command stream goes by address (a reference to the caller's image),
    // the length in words in 16 bits.
    const RecordedRequest load = driver.requests()[1];
    EXPECT_EQ(std::tuple(load.input.size(), load.input[24] | load.input[25] << 8, load.buffers.size()),
              std::tuple(26u, 4, 1u));
    EXPECT_EQ(load.word(20), sizeof(void *) == 8 ? 1u : static_cast<uint32_t>(reinterpret_cast<uintptr_t>(stream)));
}

TEST_F(Loader, CleanUpOrderAndModuleFlag) {
    TempFile f(wordFile({{".text", 0x100, words(200)}}).bytes());
    const uint16_t stream[2] = {4, 0x0FFF};
    const std::tuple<bool, std::vector<ResultCode>, Functions> cases[] = {
        // an image or a file; the replies, the last one failed; the requests
        {false, {0xE0000001}, {kHold}},
        {false, {0, 0, 0xE0000002}, {kHold, kBlock, kBlock, kDisable, kCancel}},
        {false, {0, 0, 0, 0xE0000003}, {kHold, kBlock, kBlock, kStart, kDisable}},
        {true, {0, 0xE0000004}, {kHold, kLoadImage, kDisable, kCancel}}};
    for (const auto &[image, replies, calls] : cases) {
        driver.clear();
        for (ResultCode reply : replies) driver.script(resultReply(reply));
        EXPECT_EQ(image ? RynDspRunImage_16(kDsp, stream, 2, 0) : RynDspRunProgram_12(kDsp, f.path(), ""),
                  replies.back());
        EXPECT_EQ(functions(driver), calls);
    }
    // Module flag 1 for a file named rynspm1, whatever the case, folder and extension.
    const std::vector<uint8_t> program = wordFile({{".text", 0x100, words(1)}}).bytes();
    for (const auto &[name, flag] : std::initializer_list<std::pair<std::string, uint32_t>>{
             {"RynSpm1.out", 1}, {"rynspm1", 1}, {"RYNSPM1.x.y", 0}, {"rynspm12.out", 0}, {"spm1.out", 0}}) {
        EXPECT_EQ(run(program, "", name), 0u);
        EXPECT_EQ(driver.lastRequest().word(24), flag) << name;
    }
}

TEST_F(Loader, MalformedFilesAreRefused) {
    CoffFile file = wordFile({{".text", 0x100, words(4)}, {".data", 0x200, words(4)}});
    file.symbols = {{"_start", 0x1234}, {"a_long_symbol_name", 0x5678}};
    const std::vector<uint8_t> whole = file.bytes();
    // Cut inside the file header, the optional header, the second section
    // header, the second section's data, the symbol table and the string table.
    const size_t sections = 50, data = sections + 96, symbols = data + 16;
    for (size_t cut : {size_t{10}, size_t{40}, sections + 60, data + 12, symbols + 5, symbols + 36 + 4}) {
        driver.clear();
        EXPECT_EQ(run(std::vector<uint8_t>(whole.begin(), whole.begin() + cut), "_start"), 5u) << cut;
        const Functions sent = functions(driver);
        EXPECT_EQ(std::pair(std::count(sent.begin(), sent.end(), kStart), sent.back()),
                  std::pair(std::ptrdiff_t{0}, kCancel))
            << cut;
    }
    // Version, target, optional header size; the error.
    const std::tuple<uint16_t, uint16_t, uint16_t, uint32_t> headers[] = {
        {0xC0, 0x98, 28, 17}, {0xC2, 0x99, 28, 17}, {0xC2, 0x98, 0, 5}, {0xC1, 0x12, 28, 0}};
    for (const auto &[version, target, optional, error] : headers) {
        CoffFile variant = file;
        variant.version = version, variant.target = target, variant.optionalHeaderSize = optional;
        EXPECT_EQ(makeImage(false, variant, 200).error, error) << version;
    }
    uint16_t used = 5;
    uint32_t entry = 0;
    for (const char *name : {"/no/such/file", static_cast<const char *>(nullptr), "/tmp"}) {
        EXPECT_EQ(dspError(RynDspCreateProgramImage_24(name, "", 0, nullptr, &used, &entry)), 13u);
        EXPECT_EQ(used, 0u);
    }
}

}  // namespace
