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

Functions functions(const std::vector<RecordedRequest> &requests) {
    Functions out;
    for (const auto &r : requests) out.push_back(r.function());
    return out;
}

// The error number of a code raised by the DSP module; 0 for success.
uint32_t dspError(ResultCode code) {
    if (code == 0) return 0;
    EXPECT_EQ(RynResultSourceId(code), 0x6Bu) << std::hex << code;
    return RynResultErrorCode(code);
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
    TempFile v2(wordFile({{".text", 0x7E16, words(300), 0, 1}, {".data", 0x9000, words(5, 0x500)}}).bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, v2.path(), ""), 0u);
    auto sent = driver.requests();
    ASSERT_EQ(functions(sent), (Functions{kHold, kBlock, kBlock, kBlock, kBlock, kStart}));
    expectFields(sent[1], {{16, kDsp}, {20, 0x1004}, {24, 128}, {28, 0x7E16}, {32, 1}, {36, 0x01010100}});
    expectFields(sent[2], {{24, 128}, {28, 0x7E96}, {36, 0x01810180}});
    expectFields(sent[3], {{24, 44}, {28, 0x7F16}, {32, 1}, {36 + 42 * 2, 0x022B022A}, {36 + 44 * 2, 0}});
    expectFields(sent[4], {{24, 5}, {28, 0x9000}, {32, 0}});
    expectFields(sent[5], {{16, kDsp}, {20, 0x7E16}, {24, 0}});  // the first section is ".text"
    EXPECT_EQ(sent[1].input.size(), 292u);

    // Version 1: chunks of 6 words.
    driver.clear();
    TempFile v1(wordFile({{".text", 0x100, words(300)}}, 0xC1).bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, v1.path(), ""), 0u);
    sent = driver.requests();
    ASSERT_EQ(sent.size(), 52u);
    expectFields(sent[50], {{24, 6}, {28, 0x100 + 294}});

    // Byte target: .xref, sections without raw data and those below 0x60 send nothing.
    driver.clear();
    TempFile bytes(wordFile({{".data", 0x5F, std::vector<uint8_t>(10, 1)},
                             {".xref", 0x100, std::vector<uint8_t>(10, 2)},
                             {".bss", 0x200, {}, 64},
                             {".text", 0x60, std::vector<uint8_t>{1, 2, 3}}},
                            0xC2, 0x9C)
                       .bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, bytes.path(), nullptr), 0u);
    sent = driver.requests();
    ASSERT_EQ(functions(sent), (Functions{kHold, kBlock, kStart}));
    expectFields(sent[1], {{20, 0}, {24, 3}, {28, 0x60}, {32, 0}, {36, 0x030201}});  // byte form
    expectFields(sent[2], {{20, 0}});                                                // the first section is not ".text"
}

TEST_F(Loader, EntryAddresses) {
    CoffFile file = wordFile({{".text", 0x7E16, words(2)}});
    const std::string thirty(30, 'L'), twentyNine(29, 'L');
    file.symbols = {{"_c_int00", 0x1111, true}, {"_start", 0x2222}, {"_start", 0x3333}, {"a_long_symbol_name", 0x4444},
                    {twentyNine, 0x5555},       {thirty, 0x6666},   {"9ABC", 0x7777},   {"never", 0xFFFFFFFF}};
    const struct {
        std::string name;
        uint32_t entry;  // 0: unresolved
    } cases[] = {
        {"", 0x7E16},     {"1000h", 0x1000},    {"0X2000", 0x2000}, {"0x7e16", 0x7E16},
        {"12g4H", 0x12},  {"_c_int00", 0x1111}, {"_start", 0x2222}, {"a_long_symbol_name", 0x4444},
        {"9abc", 0x7777}, {"_START", 0},        {"missing", 0},     {"0xFFFFFFFF", 0},
        {"never", 0},     {twentyNine, 0x5555}, {thirty, 0},  // long names end at 29 characters
    };
    for (const auto &c : cases) {
        const Image image = makeImage(true, file, 100, c.name.c_str());
        EXPECT_EQ(image.error, c.entry == 0 ? 13u : 0u) << c.name;
        EXPECT_EQ(image.entry, c.entry == 0 ? 0xEEEE : c.entry) << c.name;  // stored only on success
    }
    // An unresolved entry name starts nothing and cleans up.
    TempFile f(file.bytes());
    EXPECT_EQ(dspError(RynDspRunProgram_12(kDsp, f.path(), "missing")), 13u);
    EXPECT_EQ(functions(driver.requests()), (Functions{kHold, kBlock, kDisable, kCancel}));
}

TEST_F(Loader, Images) {
    // Command streams: one block per chunk; the page decides the set-up pairs.
    const CoffFile file = wordFile({{".text", 0x12345, words(2, 0xA0), 0, 0},
                                    {".data", 0x40, words(1, 0xB0), 0, 2},
                                    {".c", 0x50, words(1, 0xC0), 0, 7}});
    const Words stream = {4, 0x0FFF, 2,      0,      2,      0x2345, 2, 1,      2, 0x1004, 2, 0xA0,   2,      0xA1,
                          0, 0x0808, 0xFFFF, 0xFFFF, 4,      0x0FFF, 2, 1,      2, 0x1004, 2, 0,      2,      0x40,
                          2, 0xB0,   0,      0x0808, 0xFFFF, 0xFFFF, 4, 0x0FFF, 2, 0xC0,   0, 0x0808, 0xFFFF, 0xFFFF};
    const uint32_t size = static_cast<uint32_t>(stream.size());
    const Image exact = makeImage(false, file, size);
    EXPECT_EQ(exact.error, 0u);
    EXPECT_EQ(exact.words, stream);
    EXPECT_EQ(exact.entry, 0x12345u);
    const Image full = makeImage(false, file, size - 1);
    EXPECT_EQ(full.error, 29u);
    EXPECT_EQ(full.words, Words(stream.begin(), stream.end() - 1));  // filled to the last word

    // Records: a 128-word record takes 5 + 4 + 128 words.
    const CoffFile one = wordFile({{".text", 0x12345, words(128)}});
    const Image records = makeImage(true, one, 137);
    ASSERT_EQ(records.words.size(), 137u);
    EXPECT_EQ(Words(records.words.begin(), records.words.begin() + 9),
              (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 1, 0x0001, 0x2345, 0, 128}));
    EXPECT_EQ(records.words[136], 0x100 + 127);
    EXPECT_EQ(makeImage(true, one, 136).error, 29u);
    EXPECT_EQ(makeImage(true, one, 136).words.size(), 5u);  // the header, nothing of the record

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
    const Image records = makeImage(true, wordFile({{".text", 0x12345, words(128)}}), 137);
    EXPECT_EQ(RynDspRunImage_16(kDsp, records.words.data(), 137, 0x4321), 0u);
    auto sent = driver.requests();
    ASSERT_EQ(functions(sent), (Functions{kHold, kBlock, kStart}));
    expectFields(sent[1], {{20, 0}, {24, 128}, {28, 0x12345}, {32, 10}, {36 + 252, 0x017F017E}});
    expectFields(sent[2], {{20, 0x4321}, {24, 0}});

    const Words bytes = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 3, 0x0201, 3};
    Words big = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 257};
    big.resize(9 + 129);
    const uint16_t stream[4] = {4, 0x0FFF, 2, 0};
    const struct {
        const uint16_t *image;
        uint16_t length;
        uint32_t error;
        Functions functions;
        Fields fields;  // of the second request
    } cases[] = {
        {records.words.data(), 136, 12, {kHold, kDisable, kCancel}, {}},  // records past the length
        {records.words.data(), 7, 12, {kHold, kDisable, kCancel}, {}},
        {big.data(), 138, 12, {kHold, kDisable, kCancel}, {}},  // more than 256 bytes
        {records.words.data(), 5, 0, {kHold, kStart}, {}},      // a header alone ships nothing
        {bytes.data(), 11, 0, {kHold, kBlock, kStart}, {{24, 3}, {28, 0x60}, {32, 0}, {36, 0x030201}}},
        {stream, 4, 0, {kHold, kLoadImage, kStart}, {}},
    };
    for (const auto &c : cases) {
        driver.clear();
        EXPECT_EQ(dspError(RynDspRunImage_16(kDsp, c.image, c.length, 0)), c.error) << c.length;
        sent = driver.requests();
        EXPECT_EQ(functions(sent), c.functions) << c.length;
        if (!c.fields.empty()) expectFields(sent[1], c.fields);
    }
    // A command stream goes by address: a buffer reference to the caller's image.
    const RecordedRequest load = sent[1];
    EXPECT_EQ(load.input.size(), 26u);
    EXPECT_EQ(load.input[24] | load.input[25] << 8, 4);  // the length in words, 16 bits
    ASSERT_EQ(load.buffers.size(), 1u);
    EXPECT_EQ(load.buffers[0].address, stream);
    EXPECT_EQ(load.buffers[0].length, 8u);
    EXPECT_EQ(load.word(20), sizeof(void *) == 8 ? 1u : static_cast<uint32_t>(reinterpret_cast<uintptr_t>(stream)));
}

TEST_F(Loader, CleanUpOrderAndModuleFlag) {
    TempFile f(wordFile({{".text", 0x100, words(200)}}).bytes());
    const uint16_t stream[2] = {4, 0x0FFF};
    const struct {
        bool image;
        std::vector<ResultCode> replies;  // the last one fails
        Functions functions;
    } cases[] = {
        {false, {0xE0000001}, {kHold}},
        {false, {0, 0, 0xE0000002}, {kHold, kBlock, kBlock, kDisable, kCancel}},
        {false, {0, 0, 0, 0xE0000003}, {kHold, kBlock, kBlock, kStart, kDisable}},
        {true, {0, 0xE0000004}, {kHold, kLoadImage, kDisable, kCancel}},
    };
    for (const auto &c : cases) {
        driver.clear();
        for (ResultCode reply : c.replies) driver.script(resultReply(reply));
        EXPECT_EQ(c.image ? RynDspRunImage_16(kDsp, stream, 2, 0) : RynDspRunProgram_12(kDsp, f.path(), ""),
                  c.replies.back());
        EXPECT_EQ(functions(driver.requests()), c.functions);
    }

    const std::vector<uint8_t> program = wordFile({{".text", 0x100, words(1)}}).bytes();
    for (const auto &[name, flag] : std::vector<std::pair<std::string, uint32_t>>{
             {"RynSpm1.out", 1}, {"rynspm1", 1}, {"RYNSPM1.x.y", 0}, {"rynspm12.out", 0}, {"spm1.out", 0}}) {
        TempFile named(program, name);
        EXPECT_EQ(RynDspRunProgram_12(kDsp, named.path(), ""), 0u);
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
        TempFile f(std::vector<uint8_t>(whole.begin(), whole.begin() + cut));
        driver.clear();
        EXPECT_EQ(dspError(RynDspRunProgram_12(kDsp, f.path(), "_start")), 5u) << cut;
        const Functions sent = functions(driver.requests());
        EXPECT_EQ(std::count(sent.begin(), sent.end(), kStart), 0) << cut;
        EXPECT_EQ(sent.back(), kCancel) << cut;
    }

    const struct {
        uint16_t version, target, optional;
        uint32_t error;
    } headers[] = {{0xC0, 0x98, 28, 17}, {0xC2, 0x99, 28, 17}, {0xC2, 0x98, 0, 5}, {0xC1, 0x12, 28, 0}};
    for (const auto &h : headers) {
        CoffFile variant = file;
        variant.version = h.version;
        variant.target = h.target;
        variant.optionalHeaderSize = h.optional;
        EXPECT_EQ(makeImage(false, variant, 200).error, h.error) << h.version;
    }
    uint16_t used = 5;
    uint32_t entry = 0;
    for (const char *name : {"/no/such/file", static_cast<const char *>(nullptr), "/tmp"}) {
        EXPECT_EQ(dspError(RynDspCreateProgramImage_24(name, "", 0, nullptr, &used, &entry)), 13u);
        EXPECT_EQ(used, 0u);
    }
}

}  // namespace
