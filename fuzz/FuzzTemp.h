// The harnesses' files: a folder of the process's own under $TMPDIR (or
// /tmp), made on first use and removed with everything in it when the
// process exits; scripts/fuzz.sh points TMPDIR at a scratch folder it
// removes itself, for runs that end in a crash.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace ryn::fuzz {

inline const char *tempFolder() {
    // A plain array, so that it outlives the exit handler that removes the folder.
    static char folder[4096];
    if (folder[0] == '\0') {
        const char *base = std::getenv("TMPDIR");
        std::snprintf(folder, sizeof folder, "%s/ryn-fuzz-XXXXXX", base != nullptr && *base != '\0' ? base : "/tmp");
        if (mkdtemp(folder) == nullptr) {
            std::perror("mkdtemp");
            std::abort();
        }
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
        });
    }
    return folder;
}

// Writes the bytes to the file `name` of the folder; its path. The old file
// is removed first: a file truncated and written again is flushed to disk
// when it is closed (ext4), which would take most of a run's time.
inline std::string writeTempFile(const char *name, const uint8_t *data, size_t size) {
    std::string path = std::string(tempFolder()) + "/" + name;
    std::remove(path.c_str());
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
        std::perror(path.c_str());
        std::abort();
    }
    return path;
}

}  // namespace ryn::fuzz
