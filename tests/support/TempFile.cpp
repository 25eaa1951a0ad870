#include "support/TempFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>

namespace ryn::test {

TempFile::TempFile(const std::vector<uint8_t> &bytes, const std::string &name) {
    static std::atomic<int> counter{0};
    folder_ = ::testing::TempDir() + "ryn-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    std::error_code ignored;
    std::filesystem::create_directory(folder_, ignored);
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, ignored);
    path_ = folder_ + "/" + name;
    FILE *file = std::fopen(path_.c_str(), "wb");
    if (file != nullptr) {
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

TempFile::~TempFile() {
    std::remove(path_.c_str());
    std::error_code ignored;
    std::filesystem::remove(folder_, ignored);
}

}  // namespace ryn::test
