// File facts that the C runtime's streams do not tell.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

namespace ryn::osa {

// The size of the regular file open as `file`; nothing for a directory, a
// device or a stream whose size cannot be known.
std::optional<uint64_t> regularFileSize(FILE *file);

}  // namespace ryn::osa
