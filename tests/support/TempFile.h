// A file of the given name in a folder of its own under the test's
// temporary folder, removed with the object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ryn::test {

class TempFile {
public:
    explicit TempFile(const std::vector<uint8_t> &bytes, const std::string &name = "program.out");
    ~TempFile();
    TempFile(const TempFile &) = delete;
    TempFile &operator=(const TempFile &) = delete;
    const char *path() const { return path_.c_str(); }

private:
    std::string folder_;
    std::string path_;
};

}  // namespace ryn::test
