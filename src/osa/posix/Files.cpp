// File facts on Linux, from fstat.
#include <sys/stat.h>

#include "osa/Files.h"

namespace ryn::osa {

std::optional<uint64_t> regularFileSize(FILE *file) {
    struct stat facts {};
    if (file == nullptr || fstat(fileno(file), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    return static_cast<uint64_t>(facts.st_size);
}

}  // namespace ryn::osa
