// Builds small TI COFF program files for the loader tests: a file header,
// a 28-byte optional header, the section headers, the raw data, the symbol
// table and the string table, in that order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ryn::test {

struct CoffSection {
    std::string name;
    uint32_t address = 0;
    std::vector<uint8_t> data;  // raw data; none: raw-data offset 0
    uint32_t units = 0;         // the size field; 0: taken from the data
    uint16_t page = 0;
};

struct CoffSymbol {
    std::string name;  // more than 8 characters go to the string table
    uint32_t value = 0;
    bool auxiliary = false;  // followed by one auxiliary entry
};

struct CoffFile {
    uint16_t version = 0xC2;
    uint16_t target = 0x98;
    uint16_t optionalHeaderSize = 28;
    std::vector<CoffSection> sections;
    std::vector<CoffSymbol> symbols;

    bool byteTarget() const { return version == 0xC2 && target == 0x9C; }
    std::vector<uint8_t> bytes() const;
};

// `count` 16-bit words first, first + 1, ... as little-endian bytes.
std::vector<uint8_t> words(uint32_t count, uint16_t first = 0x100);

}  // namespace ryn::test
