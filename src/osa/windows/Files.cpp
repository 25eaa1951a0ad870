// File facts on Windows, from the C runtime's 64-bit fstat.
#include <sys/stat.h>
#include <sys/types.h>

#include "osa/Files.h"

namespace ryn::osa {

std::optional<uint64_t> regularFileSize(FILE *file) {
    struct _stat64 facts {};
    if (file == nullptr || _fstat64(_fileno(file), &facts) != 0 || (facts.st_mode & _S_IFMT) != _S_IFREG) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(facts.st_size);
}

}  // namespace ryn::osa
