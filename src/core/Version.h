// The library's own version, as announced to the driver and reported as
// attributes of the library pseudo-handle.
#pragma once

#include <cstdint>

namespace ryn {

// Four 16-bit words, least significant byte first: 2, 12, 1, 0.
inline constexpr uint8_t kLibraryVersion[8] = {2, 0, 12, 0, 1, 0, 0, 0};
inline constexpr char kLibraryVersionText[] = "2.12.1.0";
inline constexpr char kLibraryModuleName[] = "RynHwDll.dll";

}  // namespace ryn
