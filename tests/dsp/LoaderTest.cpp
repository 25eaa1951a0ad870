#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "RynHwDll.h"
#include "dsp/CoffWriter.h"
#include "support/TempFile.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using Loader = ConnectedTest;
using Words = std::vector<uint16_t>;

constexpr DeviceHandle kDsp = 0x20000011;
constexpr uint32_t kHold = 0x99A, kStart = 0x99B, kBlock = 0x99C, kCancel = 0x99D, kLoadImage = 0x9A0, kDisable = 0x80D;

CoffFile wordFile(std::vector<CoffSection> sections, uint16_t version = 0xC2) {
    CoffFile file;
    file.version = version;
    file.sections = std::move(sections);
    return file;
}

std::vector<uint32_t> functions(const std::vector<RecordedRequest> &requests) {
    std::vector<uint32_t> out;
    for (const auto &r : requests) out.push_back(r.function());
    return out;
}

std::vector<RecordedRequest> blocks(const std::vector<RecordedRequest> &requests) {
    std::vector<RecordedRequest> out;
    for (const auto &r : requests)
        if (r.function() == kBlock) out.push_back(r);
    return out;
}

uint16_t half(const RecordedRequest &r, size_t offset) {
    return static_cast<uint16_t>(r.input[offset] | r.input[offset + 1] << 8);
}

// The error number of a failure raised by the DSP module.
uint32_t dspError(ResultCode code) {
    EXPECT_EQ(RynResultSourceId(code), 0x6Bu) << std::hex << code;
    return RynFailure(code) ? RynResultErrorCode(code) : 0;
}

struct Image {
    ResultCode result;
    Words words;
    uint32_t entry;
};
Image commandStream(const CoffFile &file, uint16_t capacity, const char *entryName = "") {
    TempFile f(file.bytes());
    Image image{0, Words(capacity + 4, 0xCCCC), 0xEEEE};
    uint16_t used = 0xFFFF;
    image.result = RynDspCreateProgramImage_24(f.path(), entryName, capacity, image.words.data(), &used, &image.entry);
    EXPECT_EQ(image.words[capacity], 0xCCCC);  // nothing written past the capacity
    image.words.resize(used);
    return image;
}
Image records(const CoffFile &file, uint32_t capacity, const char *entryName = "") {
    TempFile f(file.bytes());
    Image image{0, Words(capacity + 4, 0xCCCC), 0xEEEE};
    uint32_t used = 0xFFFF;
    image.result =
        RynDspCreateProgramImageEx_24(f.path(), entryName, capacity, image.words.data(), &used, &image.entry);
    EXPECT_EQ(image.words[capacity], 0xCCCC);
    image.words.resize(used);
    return image;
}

TEST_F(Loader, DirectLoadInChunksThenStart) {
    // Version 2, word target: 300 words as 128 + 128 + 44 at rising addresses.
    TempFile v2(wordFile({{".text", 0x7E16, words(300), 0, 1}, {".data", 0x9000, words(5, 0x500), 0, 0}}).bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, v2.path(), ""), 0u);
    auto requests = driver.requests();
    ASSERT_EQ(functions(requests), (std::vector<uint32_t>{kHold, kBlock, kBlock, kBlock, kBlock, kStart}));
    const auto sent = blocks(requests);
    const uint32_t counts[] = {128, 128, 44, 5}, addresses[] = {0x7E16, 0x7E96, 0x7F16, 0x9000}, pages[] = {1, 1, 1, 0};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(sent[i].input.size(), 292u);
        EXPECT_EQ(sent[i].word(20), 0x1004u);
        EXPECT_EQ(sent[i].word(24), counts[i]);
        EXPECT_EQ(sent[i].word(28), addresses[i]);
        EXPECT_EQ(sent[i].word(32), pages[i]);
    }
    EXPECT_EQ(half(sent[1], 36), 0x100 + 128);
    EXPECT_EQ(half(sent[2], 36 + 43 * 2), 0x100 + 299);
    EXPECT_EQ(half(sent[2], 36 + 44 * 2), 0);      // nothing stale after the chunk
    EXPECT_EQ(requests.back().word(20), 0x7E16u);  // the first section's address
    EXPECT_EQ(requests.back().word(24), 0u);

    // Version 1: chunks of 6 words.
    driver.clear();
    TempFile v1(wordFile({{".text", 0x100, words(300)}}, 0xC1).bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, v1.path(), ""), 0u);
    const auto small = blocks(driver.requests());
    ASSERT_EQ(small.size(), 50u);
    EXPECT_EQ(small[49].word(24), 6u);
    EXPECT_EQ(small[49].word(28), 0x100u + 294);
}

TEST_F(Loader, SectionsThatSendNothing) {
    CoffFile file;
    file.target = 0x9C;                                             // bytes
    file.sections = {{".data", 0x5F, std::vector<uint8_t>(10, 1)},  // below 0x60
                     {".xref", 0x100, std::vector<uint8_t>(10, 2)},
                     {".bss", 0x200, {}, 64},  // no raw data
                     {".text", 0x60, std::vector<uint8_t>{1, 2, 3}}};
    TempFile f(file.bytes());
    EXPECT_EQ(RynDspRunProgram_12(kDsp, f.path(), nullptr), 0u);
    const auto requests = driver.requests();
    const auto sent = blocks(requests);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].word(20), 0u);  // the byte form sets neither staging value nor page
    EXPECT_EQ(sent[0].word(24), 3u);
    EXPECT_EQ(sent[0].word(28), 0x60u);
    EXPECT_EQ(sent[0].word(32), 0u);
    EXPECT_EQ(sent[0].word(36), 0x030201u);
    EXPECT_EQ(requests.back().word(20), 0u);  // the first section is not ".text"
}

TEST_F(Loader, EntryAddresses) {
    CoffFile file = wordFile({{".text", 0x7E16, words(2)}});
    const std::string thirty(30, 'L'), twentyNine(29, 'L');
    file.symbols = {{"_c_int00", 0x1111, true}, {"_start", 0x2222}, {"_start", 0x3333}, {"a_long_symbol_name", 0x4444},
                    {twentyNine, 0x5555},       {thirty, 0x6666},   {"9ABC", 0x7777},   {"neverMind", 0xFFFFFFFF}};
    const struct {
        const char *name;
        uint32_t entry;  // 0: unresolved
    } cases[] = {
        {"", 0x7E16},     {"1000h", 0x1000},    {"0X2000", 0x2000}, {"0x7e16", 0x7E16},
        {"12g4H", 0x12},  {"_c_int00", 0x1111}, {"_start", 0x2222}, {"a_long_symbol_name", 0x4444},
        {"9abc", 0x7777}, {"_START", 0},        {"missing", 0},     {"0xFFFFFFFF", 0},
        {"neverMind", 0}, {"", 0x7E16},
    };
    for (const auto &c : cases) {
        const Image image = records(file, 100, c.name);
        EXPECT_EQ(image.result == 0 ? image.entry : 0, c.entry) << c.name;
        if (c.entry == 0) {
            EXPECT_EQ(dspError(image.result), 13u) << c.name;
            EXPECT_EQ(image.entry, 0xEEEEu);  // stored only on success
        }
    }
    EXPECT_EQ(records(file, 100, twentyNine.c_str()).entry, 0x5555u);
    EXPECT_EQ(dspError(records(file, 100, thirty.c_str()).result), 13u);  // long names end at 29 characters

    // An unresolved entry name starts nothing and cleans up.
    TempFile f(file.bytes());
    EXPECT_EQ(dspError(RynDspRunProgram_12(kDsp, f.path(), "missing")), 13u);
    EXPECT_EQ(functions(driver.requests()), (std::vector<uint32_t>{kHold, kBlock, kDisable, kCancel}));
    EXPECT_EQ(driver.lastRequest().word(16), kDsp);
}

TEST_F(Loader, CommandStreamImages) {
    // One block per chunk; the page decides the order of the set-up pairs.
    const CoffFile file = wordFile({{".text", 0x12345, words(2, 0xA0), 0, 0},
                                    {".data", 0x40, words(1, 0xB0), 0, 2},
                                    {".cinit", 0x50, words(1, 0xC0), 0, 7}});
    const Words expected = {4, 0x0FFF, 2,      0,      2,      0x2345, 2, 1,      2, 0x1004, 2, 0xA0,   2,      0xA1,
                            0, 0x0808, 0xFFFF, 0xFFFF, 4,      0x0FFF, 2, 1,      2, 0x1004, 2, 0,      2,      0x40,
                            2, 0xB0,   0,      0x0808, 0xFFFF, 0xFFFF, 4, 0x0FFF, 2, 0xC0,   0, 0x0808, 0xFFFF, 0xFFFF};
    const Image exact = commandStream(file, static_cast<uint16_t>(expected.size()));
    EXPECT_EQ(exact.result, 0u);
    EXPECT_EQ(exact.words, expected);
    EXPECT_EQ(exact.entry, 0x12345u);

    const Image full = commandStream(file, static_cast<uint16_t>(expected.size() - 1));
    EXPECT_EQ(dspError(full.result), 29u);
    EXPECT_EQ(full.words, Words(expected.begin(), expected.end() - 1));  // filled to the last word
    EXPECT_EQ(full.entry, 0xEEEEu);

    CoffFile bytes = file;
    bytes.target = 0x9C;
    EXPECT_EQ(dspError(commandStream(bytes, 100).result), 6u);
}

TEST_F(Loader, RecordImages) {
    const CoffFile file = wordFile({{".text", 0x12345, words(128)}});
    const Image exact = records(file, 137);
    ASSERT_EQ(exact.result, 0u);
    ASSERT_EQ(exact.words.size(), 137u);
    EXPECT_EQ(Words(exact.words.begin(), exact.words.begin() + 9),
              (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 1, 0x0001, 0x2345, 0, 128}));
    EXPECT_EQ(exact.words[136], 0x100 + 127);

    const Image full = records(file, 136);
    EXPECT_EQ(dspError(full.result), 29u);
    EXPECT_EQ(full.words.size(), 5u);  // the header, nothing of the record
    uint32_t used = 99;
    uint16_t buffer[4];
    EXPECT_EQ(dspError(RynDspCreateProgramImageEx_24("x", "", 4, buffer, &used, nullptr)), 10u);
    uint32_t entry = 0;
    EXPECT_EQ(dspError(RynDspCreateProgramImageEx_24("x", "", 4, buffer, &used, &entry)), 9u);
    EXPECT_EQ(used, 0u);
    EXPECT_EQ(dspError(records(wordFile({{".text", 0, words(1)}}, 0xC1), 100).result), 17u);
    EXPECT_EQ(records(wordFile({{".text", 0, words(1)}}, 0xC1), 100).words.size(), 0u);

    // Byte records: count in bytes, two bytes a word, the earlier one low.
    CoffFile bytes;
    bytes.target = 0x9C;
    bytes.sections = {{".text", 0x60, std::vector<uint8_t>{1, 2, 3}}};
    EXPECT_EQ(records(bytes, 12).words, (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 3, 0x0201, 0x0003}));
    EXPECT_EQ(dspError(records(bytes, 11).result), 29u);  // the byte count is reserved in full
}

TEST_F(Loader, RunImage) {
    const Image image = records(wordFile({{".text", 0x12345, words(128)}}), 137);
    ASSERT_EQ(image.words.size(), 137u);
    EXPECT_EQ(RynDspRunImage_16(kDsp, image.words.data(), 137, 0x4321), 0u);
    auto requests = driver.requests();
    ASSERT_EQ(functions(requests), (std::vector<uint32_t>{kHold, kBlock, kStart}));
    EXPECT_EQ(requests[1].word(20), 0u);
    EXPECT_EQ(requests[1].word(24), 128u);
    EXPECT_EQ(requests[1].word(28), 0x12345u);
    EXPECT_EQ(requests[1].word(32), 10u);
    EXPECT_EQ(half(requests[1], 36 + 254), 0x100 + 127);
    EXPECT_EQ(requests[2].word(20), 0x4321u);
    EXPECT_EQ(requests[2].word(24), 0u);

    // Records that do not end at the length, or carry more than 256 bytes.
    Words big = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 257};
    big.resize(9 + 129);
    const struct {
        const uint16_t *words;
        uint16_t length;
    } refused[] = {{image.words.data(), 136}, {image.words.data(), 138 - 1 - 130}, {big.data(), 138}};
    for (const auto &r : refused) {
        driver.clear();
        EXPECT_EQ(dspError(RynDspRunImage_16(kDsp, r.words, r.length, 0)), 12u);
        EXPECT_EQ(functions(driver.requests()), (std::vector<uint32_t>{kHold, kDisable, kCancel}));
    }
    driver.clear();
    EXPECT_EQ(RynDspRunImage_16(kDsp, image.words.data(), 5, 0), 0u);  // a header alone ships nothing
    EXPECT_EQ(functions(driver.requests()), (std::vector<uint32_t>{kHold, kStart}));

    // Byte records go out in the byte form.
    driver.clear();
    const Words byteImage = {0x54AB, 0x6D2E, 0x1010, 0x1C1C, 2, 0, 0x60, 0, 3, 0x0201, 0x0003};
    EXPECT_EQ(RynDspRunImage_16(kDsp, byteImage.data(), 11, 0), 0u);
    EXPECT_EQ(driver.requests()[1].word(24), 3u);
    EXPECT_EQ(driver.requests()[1].word(32), 0u);
    EXPECT_EQ(driver.requests()[1].word(36), 0x030201u);

    // Anything else is a command stream, carried by address.
    driver.clear();
    const Words stream = {4, 0x0FFF, 2, 0};
    EXPECT_EQ(RynDspRunImage_16(kDsp, stream.data(), 4, 0), 0u);
    const RecordedRequest load = driver.requests()[1];
    EXPECT_EQ(load.function(), kLoadImage);
    EXPECT_EQ(load.input.size(), 26u);
    EXPECT_EQ(half(load, 24), 4u);
    ASSERT_EQ(load.buffers.size(), 1u);
    EXPECT_EQ(load.buffers[0].address, stream.data());
    EXPECT_EQ(load.buffers[0].length, 8u);
    EXPECT_EQ(load.word(20),
              sizeof(void *) == 8 ? 1u : static_cast<uint32_t>(reinterpret_cast<uintptr_t>(stream.data())));
}

TEST_F(Loader, CleanUpOrder) {
    TempFile f(wordFile({{".text", 0x100, words(200)}}).bytes());
    const struct {
        std::vector<ScriptedReply> replies;
        std::vector<uint32_t> functions;
    } cases[] = {
        {{resultReply(0xE0000001)}, {kHold}},
        {{resultReply(0), resultReply(0), resultReply(0xE0000002)}, {kHold, kBlock, kBlock, kDisable, kCancel}},
        {{resultReply(0), resultReply(0), resultReply(0), resultReply(0xE0000003)},
         {kHold, kBlock, kBlock, kStart, kDisable}},
    };
    for (const auto &c : cases) {
        driver.clear();
        for (const auto &reply : c.replies) driver.script(reply);
        const ResultCode result = RynDspRunProgram_12(kDsp, f.path(), "");
        EXPECT_EQ(result, c.replies.back().words[0].second);
        EXPECT_EQ(functions(driver.requests()), c.functions);
    }
    // A failed command-stream load cleans up alike.
    driver.clear();
    driver.script(resultReply(0));
    driver.script(resultReply(0xE0000004));
    const uint16_t stream[2] = {4, 0x0FFF};
    EXPECT_EQ(RynDspRunImage_16(kDsp, stream, 2, 0), 0xE0000004u);
    EXPECT_EQ(functions(driver.requests()), (std::vector<uint32_t>{kHold, kLoadImage, kDisable, kCancel}));
}

TEST_F(Loader, ModuleFlagFromTheBaseName) {
    const std::vector<uint8_t> bytes = wordFile({{".text", 0x100, words(1)}}).bytes();
    for (const auto &[name, flag] : std::vector<std::pair<std::string, uint32_t>>{
             {"RynSpm1.out", 1}, {"rynspm1", 1}, {"RYNSPM1.x.y", 0}, {"rynspm12.out", 0}, {"spm1.out", 0}}) {
        TempFile f(bytes, name);
        driver.clear();
        EXPECT_EQ(RynDspRunProgram_12(kDsp, f.path(), ""), 0u);
        EXPECT_EQ(driver.lastRequest().word(24), flag) << name;
    }
}

TEST_F(Loader, MalformedFilesAreRefused) {
    CoffFile file = wordFile({{".text", 0x100, words(4)}, {".data", 0x200, words(4)}});
    file.symbols = {{"_start", 0x1234}, {"a_long_symbol_name", 0x5678}};
    const std::vector<uint8_t> whole = file.bytes();
    // Cut inside the file header, the optional header, the second section
    // header, the second section's data, the symbol table and the string table.
    const size_t sectionTable = 50, data = sectionTable + 96, symbols = data + 16;
    for (size_t cut : {size_t{10}, size_t{40}, sectionTable + 60, data + 12, symbols + 5, symbols + 36 + 4}) {
        TempFile f(std::vector<uint8_t>(whole.begin(), whole.begin() + cut));
        driver.clear();
        EXPECT_EQ(dspError(RynDspRunProgram_12(kDsp, f.path(), "_start")), 5u) << cut;
        const auto sent = functions(driver.requests());
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
        const Image image = commandStream(variant, 200);
        EXPECT_EQ(h.error == 0 ? image.result : dspError(image.result), h.error) << h.version;
    }
    EXPECT_EQ(dspError(commandStream(file, 0).result), 29u);
    uint16_t used = 5;
    uint32_t entry = 0;
    EXPECT_EQ(dspError(RynDspCreateProgramImage_24("/no/such/file", "", 0, nullptr, &used, &entry)), 13u);
    EXPECT_EQ(dspError(RynDspCreateProgramImage_24(nullptr, "", 0, nullptr, &used, &entry)), 13u);
    EXPECT_EQ(dspError(RynDspCreateProgramImage_24(::testing::TempDir().c_str(), "", 0, nullptr, &used, &entry)), 13u);
    EXPECT_EQ(used, 0u);
}

TEST_F(Loader, ConcurrentImageCreation) {
    const CoffFile a = wordFile({{".text", 0x100, words(300, 0x1000)}});
    const CoffFile b = wordFile({{".text", 0x200, words(300, 0x2000)}});
    const Image expectedA = records(a, 1000), expectedB = records(b, 1000);
    std::thread other([&] {
        for (int i = 0; i < 20; ++i) EXPECT_EQ(records(b, 1000).words, expectedB.words);
    });
    for (int i = 0; i < 20; ++i) EXPECT_EQ(records(a, 1000).words, expectedA.words);
    other.join();
}

}  // namespace
