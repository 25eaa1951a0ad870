#include "support/TempFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace ryn::test {

TempFile::TempFile(const std::vector<uint8_t> &bytes, const std::string &name) {
    static std::atomic<int> counter{0};
    folder_ = ::testing::TempDir() + "ryn-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    mkdir(folder_.c_str(), 0700);
    path_ = folder_ + "/" + name;
    FILE *file = std::fopen(path_.c_str(), "wb");
    if (file != nullptr) {
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

TempFile::~TempFile() {
    std::remove(path_.c_str());
    rmdir(folder_.c_str());
}

}  // namespace ryn::test
