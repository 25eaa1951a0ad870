// Program files: the COFF reader on the input in memory, then both image
// builders on the input as a file, each with capacities from none (or less
// than a record image's header) to the largest. Every buffer has exactly its
// capacity, so that a write past it is caught.
#include <cstdlib>
#include <memory>
#include <vector>

#include "FuzzTemp.h"
#include "RynHwDll.h"
#include "dsp/Coff.h"

namespace {

// Entry names: none, a symbol kept in the entry, one in the string table, and
// the two forms of hexadecimal address.
constexpr const char *kEntryNames[] = {"", "_c_int00", "_program_entry", "0x7E16", "1234h"};

void check(bool condition) {
    if (!condition) std::abort();
}

void readInMemory(const uint8_t *data, size_t size) {
    const std::vector<uint8_t> bytes(data, data + size);
    ryn::coff::ProgramFile file;
    if (file.open(bytes) != 0) return;
    const bool valid = file.validate() == 0;
    for (uint32_t i = 0; i < file.sectionCount(); ++i) {
        const auto section = file.section(i);
        check(section.has_value() || !valid);
        if (!section) continue;
        const auto sectionData = file.data(*section);
        if (valid && file.loads(*section))
            check(sectionData && sectionData->size() == uint64_t{section->size} * file.unitBytes());
    }
    (void)file.defaultEntry();
    for (const char *name : kEntryNames) {
        uint32_t address = 0;
        (void)file.resolveEntry(name, address);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    readInMemory(data, size);

    const std::string path = ryn::fuzz::writeTempFile("program.out", data, size);
    for (uint32_t capacity : {0u, 3u, 40u, 1000u, 65535u}) {
        const auto buffer = std::make_unique_for_overwrite<uint16_t[]>(capacity);
        for (const char *name : {kEntryNames[0], kEntryNames[2]}) {
            uint16_t used = 0;
            uint32_t entry = 0;
            RynDspCreateProgramImage_24(path.c_str(), name, static_cast<uint16_t>(capacity), buffer.get(), &used,
                                        &entry);
            check(used <= capacity);
        }
    }
    // Record images: less than the header's 5 words, the header and one
    // short record, and room for any image of sections that do not overlap.
    for (uint32_t capacity : {4u, 5u, 12u, 300u, static_cast<uint32_t>(size) + 4096}) {
        const auto buffer = std::make_unique_for_overwrite<uint16_t[]>(capacity);
        for (const char *name : {kEntryNames[0], kEntryNames[3]}) {
            uint32_t used = 0, entry = 0;
            RynDspCreateProgramImageEx_24(path.c_str(), name, capacity, buffer.get(), &used, &entry);
            check(used <= capacity);
        }
    }
    return 0;
}
