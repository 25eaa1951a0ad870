// Program files of the DSP tool chain: TI COFF object files, versions 1 and
// 2, little-endian. The reader works on the file's bytes in memory and never
// reads outside them; it does no I/O, so tools can use it as well.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "ByteReader.h"

namespace ryn::coff {

// Error numbers of files that cannot be loaded.
inline constexpr uint8_t kMalformed = 5;     // ends early, points outside itself, no optional header
inline constexpr uint8_t kUnresolved = 13;   // entry name not found
inline constexpr uint8_t kUnsupported = 17;  // version or target ID

inline constexpr uint16_t kVersion1 = 0x00C1;
inline constexpr uint16_t kVersion2 = 0x00C2;
inline constexpr uint16_t kTargetWord = 0x0098;  // TMS320C54x: 16-bit words
inline constexpr uint16_t kTargetByte = 0x009C;  // TMS320C55x: bytes
inline constexpr uint32_t kLowestByteTargetAddress = 0x60;
inline constexpr uint32_t kNoAddress = 0xFFFFFFFF;

struct FileHeader {
    static constexpr uint32_t kSize = 22;
    uint16_t versionId;
    uint16_t sectionCount;
    uint32_t symbolTableOffset;
    uint32_t symbolCount;
    uint16_t optionalHeaderSize;
    uint16_t targetId;
};

struct Section {
    char name[9];  // at most 8 characters, terminated
    uint32_t physicalAddress;
    uint32_t size;  // in load units; 0 for a section without raw data
    uint32_t rawDataOffset;
    uint16_t page;

    bool named(std::string_view text) const { return text == name; }
};

class ProgramFile {
public:
    // Reads the file header and checks the optional header, the version and
    // the target: 0, or kMalformed / kUnsupported.
    uint8_t open(std::span<const uint8_t> bytes);

    const FileHeader &header() const { return header_; }
    int version() const { return header_.versionId == kVersion1 ? 1 : 2; }
    bool byteTarget() const { return byteTarget_; }
    uint32_t unitBytes() const { return byteTarget_ ? 1 : 2; }
    // Load units per chunk: 6 words for version 1, 128 units for version 2.
    uint32_t chunkUnits() const { return version() == 1 ? 6 : 128; }
    uint32_t sectionCount() const { return header_.sectionCount; }

    // Section header `index` (0-based), or nothing when it lies outside the file.
    std::optional<Section> section(uint32_t index) const;
    // Whether a section's data goes to the DSP: a size above 0 (signed), not
    // ".xref", and for the byte target an address of 0x60 or more.
    bool loads(const Section &section) const;
    // The raw data of a section, or nothing when it lies outside the file.
    std::optional<std::span<const uint8_t>> data(const Section &section) const;
    // The entry address without an entry name: the first section's address
    // when that section is ".text" and has data, else 0.
    uint32_t defaultEntry() const;
    // Checks that every section header and the data of every loaded section
    // lie inside the file: 0 or kMalformed.
    uint8_t validate() const;

    // The entry address for `name` (a hexadecimal number "0x..."/"...h", or
    // a symbol): 0 with the address, kUnresolved, or kMalformed when the
    // symbol table or a long name in the string table lies outside the file.
    uint8_t resolveEntry(std::string_view name, uint32_t &address) const;

private:
    std::optional<uint32_t> findSymbol(std::string_view name, uint8_t &error) const;

    ByteReader file_{{}};
    FileHeader header_{};
    bool byteTarget_ = false;
    uint32_t sectionHeaderSize_ = 0;
};

}  // namespace ryn::coff
