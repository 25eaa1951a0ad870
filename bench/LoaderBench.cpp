// A 1 MiB version 2 program file made into a record image, next to a plain
// read of the same file: the loader should stay within three times the read.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "RynHwDll.h"

namespace {

constexpr uint32_t kSections = 8;
constexpr uint32_t kWordsPerSection = 65536;  // 8 × 128 KiB of data

void put16(std::vector<uint8_t> &out, size_t at, uint32_t value) {
    out[at] = static_cast<uint8_t>(value);
    out[at + 1] = static_cast<uint8_t>(value >> 8);
}
void put32(std::vector<uint8_t> &out, size_t at, uint32_t value) {
    put16(out, at, value & 0xFFFF);
    put16(out, at + 2, value >> 16);
}

// Writes the program file once: file header, optional header, section
// headers, then each section's words.
const std::string &programFile() {
    static const std::string path = [] {
        const std::string name = "/tmp/ryn-bench-" + std::to_string(getpid()) + ".out";
        const size_t dataStart = 22 + 28 + 48 * kSections;
        std::vector<uint8_t> bytes(dataStart + size_t{kSections} * kWordsPerSection * 2);
        put16(bytes, 0, 0xC2);
        put16(bytes, 2, kSections);
        put16(bytes, 16, 28);
        put16(bytes, 20, 0x98);
        for (uint32_t s = 0; s < kSections; ++s) {
            const size_t header = 22 + 28 + 48 * s;
            const size_t data = dataStart + size_t{s} * kWordsPerSection * 2;
            std::snprintf(reinterpret_cast<char *>(&bytes[header]), 8, ".sect%u", s);
            put32(bytes, header + 8, 0x10000 * s);
            put32(bytes, header + 16, kWordsPerSection);
            put32(bytes, header + 20, static_cast<uint32_t>(data));
            for (uint32_t w = 0; w < kWordsPerSection; ++w) put16(bytes, data + 2 * w, w * 7 + s);
        }
        FILE *file = std::fopen(name.c_str(), "wb");
        if (file != nullptr) {
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        }
        std::atexit([] { std::remove(programFile().c_str()); });
        return name;
    }();
    return path;
}

size_t fileSize() { return 22 + 28 + 48 * kSections + size_t{kSections} * kWordsPerSection * 2; }

void BM_ReadProgramFile(benchmark::State &state) {
    std::vector<uint8_t> buffer(fileSize());
    for (auto _ : state) {
        FILE *file = std::fopen(programFile().c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(buffer.data(), 1, buffer.size(), file));
        std::fclose(file);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize()));
}

void BM_CreateRecordImage(benchmark::State &state) {
    std::vector<uint16_t> image(fileSize());
    for (auto _ : state) {
        uint32_t used = 0, entry = 0;
        const ResultCode result = RynDspCreateProgramImageEx_24(
            programFile().c_str(), "", static_cast<uint32_t>(image.size()), image.data(), &used, &entry);
        if (result != 0) state.SkipWithError("the image was not made");
        benchmark::DoNotOptimize(image.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize()));
}

}  // namespace

BENCHMARK(BM_ReadProgramFile)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CreateRecordImage)->Unit(benchmark::kMicrosecond);
