// The program-image formats of wire/DspImage.h: what the writer makes the
// readers give back, and the cut-off or corrupt images they refuse.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "DspImage.h"
#include "LittleEndian.h"

namespace {

using namespace wire::dsp_image;
using Words = std::vector<uint16_t>;

struct BlockData {
    uint16_t page, address;
    Words words;
};

Words stream(const std::vector<BlockData> &blocks) {
    Words out(1000);
    ImageWriter writer(out);
    for (const BlockData &b : blocks) {
        writer.openBlock(b.page, b.address, static_cast<uint32_t>(b.words.size()));
        for (uint16_t w : b.words) writer.blockWord(w);
        writer.closeBlock();
    }
    out.resize(writer.used());
    return out;
}

struct RecordData {
    uint32_t address;
    Words units;  // words, or one byte each
};

Words records(uint16_t version, const std::vector<RecordData> &list) {
    Words out(1000);
    ImageWriter writer(out);
    writer.recordHeader(version);
    for (const RecordData &r : list) {
        const auto count = static_cast<uint32_t>(r.units.size());
        writer.recordFields(r.address, count);
        const std::span<uint16_t> data = writer.take(static_cast<uint32_t>(recordWords(version == 2, count)));
        for (uint32_t i = 0; i < count; ++i) {
            if (version == 1)
                data[i] = r.units[i];
            else
                data[i / 2] = static_cast<uint16_t>(data[i / 2] | r.units[i] << (i % 2 * 8));
        }
    }
    out.resize(writer.used());
    return out;
}

TEST(DspImage, StreamsReadBackAsWritten) {
    const std::vector<BlockData> cases[] = {
        {{0, 0x7E16, {1, 2, 3}}},
        {{0, 0x100, Words(128, 0xABCD)}, {1, 0x80, {0xFFFF}}, {2, 0x40, {7, 8}}},  // page 2 is data memory
        {{0, 0xFF80, Words(128, 5)}},                                              // ends at the last address
    };
    for (const auto &blocks : cases) {
        const Words image = stream(blocks);
        StreamReader reader(image);
        for (const BlockData &b : blocks) {
            ASSERT_FALSE(reader.done());
            const std::optional<Block> block = reader.next();
            ASSERT_TRUE(block) << reader.position();
            EXPECT_EQ(std::tuple(block->page, block->address, block->count),
                      std::tuple(uint16_t(b.page == 0 ? 0 : 1), b.address, uint32_t(b.words.size())));
            for (uint32_t i = 0; i < block->count; ++i) EXPECT_EQ(block->word(i), b.words[i]);
        }
        EXPECT_TRUE(reader.done());
    }
}

TEST(DspImage, RecordsReadBackAsWritten) {
    const std::pair<uint16_t, std::vector<RecordData>> cases[] = {
        {1, {{0x12345, {1, 2, 3}}, {0x20000, Words(128, 0x7777)}}},
        {2, {{0x60, {0x11, 0x22, 0x33}}, {0xFFFFFF, Words(256, 0xAB)}}},  // an odd count, then a full one
        {1, {}},                                                          // the header alone
    };
    for (const auto &[version, list] : cases) {
        const Words image = records(version, list);
        std::optional<RecordReader> reader = RecordReader::open(image);
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->bytes(), version == 2);
        for (const RecordData &r : list) {
            const std::optional<Record> record = reader->next();
            ASSERT_TRUE(record);
            EXPECT_EQ(std::pair(record->address, record->count), std::pair(r.address, uint32_t(r.units.size())));
            for (uint32_t i = 0; i < record->count; ++i) EXPECT_EQ(record->unit(i), r.units[i]) << i;
        }
        EXPECT_TRUE(reader->done());
    }
}

TEST(DspImage, CutOffAndCorruptImagesAreRefused) {
    using Change = std::function<void(Words &)>;
    const Words block = stream({{0, 0x200, {1, 2}}});
    const std::pair<const char *, Change> streams[] = {
        {"cut off", [](Words &w) { w.pop_back(); }},
        {"opening", [](Words &w) { w[1] = 0x0FFE; }},
        {"set-up tag", [](Words &w) { w[6] = 3; }},
        {"page", [](Words &w) { w[3] = 2; }},
        {"staging", [](Words &w) { w[9] = 0x1005; }},
        {"data tag", [](Words &w) { w[12] = 0; }},
        {"closing", [](Words &w) { w[w.size() - 3] = 0x0809; }},
        {"past the address space", [](Words &w) { w[5] = 0xFFFF; }},
        {"129 words",
         [](Words &w) {
             w = stream({{0, 0, Words(129, 1)}});
         }},
    };
    for (const auto &[what, change] : streams) {
        Words image = block;
        change(image);
        EXPECT_FALSE(StreamReader(image).next()) << what;
    }

    const Words one = records(1, {{0x100, {1, 2}}});
    const std::pair<const char *, Change> recordImages[] = {
        {"data cut off", [](Words &w) { w.pop_back(); }},
        {"fields cut off", [](Words &w) { w.resize(8); }},
        {"129 words",
         [](Words &w) {
             w = records(1, {{0, Words(129, 1)}});
         }},
        {"257 bytes",
         [](Words &w) {
             w = records(2, {{0, Words(257, 1)}});
         }},
    };
    for (const auto &[what, change] : recordImages) {
        Words image = one;
        change(image);
        std::optional<RecordReader> reader = RecordReader::open(image);
        ASSERT_TRUE(reader) << what;
        EXPECT_FALSE(reader->next()) << what;
    }
    // No record header: a command stream, or nothing at all.
    for (const auto &[at, word] : std::initializer_list<std::pair<size_t, uint16_t>>{{0, 0x54AA}, {3, 0}, {4, 3}}) {
        Words image = one;
        image[at] = word;
        EXPECT_FALSE(RecordReader::open(image)) << at;
    }
    EXPECT_FALSE(RecordReader::open(Words(one.begin(), one.begin() + 4)));
}

TEST(DspImage, WriterStopsAtItsCapacity) {
    Words buffer(8, 0xCCCC);
    ImageWriter writer(std::span<uint16_t>(buffer).first(7));
    EXPECT_TRUE(writer.recordHeader(1));
    EXPECT_FALSE(writer.recordFields(0x10000, 1));
    EXPECT_EQ(std::pair(writer.used(), writer.refused()), std::pair(7u, true));
    EXPECT_EQ(buffer, (Words{0x54AB, 0x6D2E, 0x1010, 0x1C1C, 1, 1, 0, 0xCCCC}));
}

TEST(LittleEndian, ReadsOutsideGiveZeroAndWritesOutsideAreDropped) {
    std::vector<uint8_t> bytes = {1, 2, 3, 4, 5, 6};
    const wire::le::Reader reader(bytes);
    const std::pair<uint64_t, uint32_t> reads[] = {{2, 0x06050403}, {3, 0}, {UINT64_MAX - 1, 0}};
    for (const auto &[offset, value] : reads) EXPECT_EQ(reader.u32(offset), value) << offset;
    EXPECT_EQ(std::pair(reader.u16(4), reader.u16(5)), std::pair(uint16_t{0x0605}, uint16_t{0}));
    EXPECT_FALSE(reader.bytes(5, 2));
    EXPECT_EQ(reader.upTo(4, 9).size(), 2u);

    wire::le::Writer writer(bytes);
    EXPECT_TRUE(writer.u32(2, 0xAABBCCDD));
    EXPECT_FALSE(writer.u32(3, 0x11111111));
    EXPECT_FALSE(writer.u16(UINT64_MAX, 0x2222));
    EXPECT_EQ(bytes, (std::vector<uint8_t>{1, 2, 0xDD, 0xCC, 0xBB, 0xAA}));
}

}  // namespace
