// A 1 MiB version 2 program file made into a record image, next to a plain
// read of the same file: the loader should stay within three times the read.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "RynHwDll.h"
#include "dsp/CoffWriter.h"

namespace {

constexpr uint32_t kSections = 8;
constexpr uint32_t kWordsPerSection = 65536;  // 8 × 128 KiB of data

// The program file, written once: eight sections of 64 Ki words.
const std::vector<uint8_t> &programBytes() {
    static const std::vector<uint8_t> bytes = [] {
        ryn::test::CoffFile file;
        for (uint32_t s = 0; s < kSections; ++s) {
            file.sections.push_back({".sect" + std::to_string(s), 0x10000 * s,
                                     ryn::test::words(kWordsPerSection, static_cast<uint16_t>(s)), 0, 0});
        }
        return file.bytes();
    }();
    return bytes;
}

const std::string &programFile() {
    static const std::string path = [] {
        const std::string name = "/tmp/ryn-bench-" + std::to_string(getpid()) + ".out";
        FILE *file = std::fopen(name.c_str(), "wb");
        if (file != nullptr) {
            std::fwrite(programBytes().data(), 1, programBytes().size(), file);
            std::fclose(file);
        }
        std::atexit([] { std::remove(programFile().c_str()); });
        return name;
    }();
    return path;
}

size_t fileSize() { return programBytes().size(); }

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
