// The built-in signal-processing modules: program images chosen by module
// identifier and DSP type.
#pragma once

#include <cstdint>
#include <span>

namespace ryn::spm {

enum class Form : uint8_t { CommandStream, Records1, Records2 };

struct Module {
    uint32_t module;
    uint32_t dspType;
    Form form;
    std::span<const uint16_t> image;
    uint32_t entry;
    const char *text;  // a text the image carries, or ""
};

// Every module image, in the order of the module table.
std::span<const Module> modules();

// The image of `module` for DSP type `dspType`, or null.
const Module *find(uint32_t module, uint32_t dspType);

}  // namespace ryn::spm
