// The board's module called directly, as the library calls it, for what the
// library's own checks would hide (it trims a reply length to its block), and
// the board's handle serials, through the function that hands them out.
#include <algorithm>
#include <string>
#include <unordered_set>

#include "virtual/Serials.h"  // the board's, from drivers/
#include "RynUserDriver.h"
#include "virtual/VirtualBoard.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace vt {
namespace {

// A connection of its own to ryn-drivers/ryndrv beside the test program
// (which runs in the library's folder).
class BoardModule {
public:
    BoardModule() {
        using Entry = const RynUserDriver *(*)();
        Entry entry = nullptr;
#ifdef _WIN32
        char path[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        std::string file = path;
        module_ = LoadLibraryA(file.substr(0, file.find_last_of("\\/") + 1).append("ryn-drivers\\ryndrv.dll").c_str());
        if (module_ != nullptr)  // through void (*)(), the function type every other converts from
            entry = reinterpret_cast<Entry>(reinterpret_cast<void (*)()>(GetProcAddress(module_, "RynUserDriverEntry")));
#else
        char path[4096] = {};
        std::string file(path, static_cast<size_t>(std::max<ssize_t>(readlink("/proc/self/exe", path, sizeof path - 1), 0)));
        module_ = dlopen(file.substr(0, file.rfind('/') + 1).append("ryn-drivers/ryndrv.so").c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module_ != nullptr) entry = reinterpret_cast<Entry>(dlsym(module_, "RynUserDriverEntry"));
#endif
        driver_ = entry != nullptr ? entry() : nullptr;
        device_ = driver_ != nullptr ? driver_->open("RYNDRV") : nullptr;
    }
    ~BoardModule() {
        if (device_ != nullptr) driver_->close(device_);
#ifdef _WIN32
        if (module_ != nullptr) FreeLibrary(module_);
#else
        if (module_ != nullptr) dlclose(module_);
#endif
    }
    bool open() const { return device_ != nullptr; }
    // Sends `request` with a reply block of `length` bytes (of `reply`); the byte count the board reports.
    uint32_t send(uint32_t function, std::vector<uint8_t> request, std::vector<uint8_t> &reply, uint32_t length) {
        const RynDriverRequest r{0x220000u | (function << 2), request.data(), static_cast<uint32_t>(request.size()),
                                 reply.data(), length, nullptr, 0};
        uint32_t returned = 0;
        EXPECT_NE(driver_->control(device_, &r, &returned), 0);
        return returned;
    }

private:
#ifdef _WIN32
    HMODULE module_ = nullptr;
#else
    void *module_ = nullptr;
#endif
    const RynUserDriver *driver_ = nullptr;
    void *device_ = nullptr;
};

// An attribute read reports no more than it wrote (header and value) and
// never more than its reply block: one too small for the value area is refused.
TEST(VirtualBoardModule, AttributeRepliesStayInsideWhatWasWritten) {
    BoardModule board;
    ASSERT_TRUE(board.open());
    const uint32_t size = sizeof RYN_VB_DRIVER_VERSION_TEXT;  // with its terminator
    const auto read = [&](uint32_t capacity, std::vector<uint8_t> &reply, uint32_t length) {
        std::vector<uint8_t> request(28);
        const uint32_t fields[] = {0, RYN_VB_ATTR_DRIVER_VERSION, capacity};
        std::memcpy(request.data() + 16, fields, sizeof fields);
        return board.send(0x818, request, reply, length);
    };
    std::vector<uint8_t> reply(64);
    EXPECT_EQ(read(size, reply, size + 17), 16 + size);
    EXPECT_STREQ(reinterpret_cast<const char *>(reply.data() + 16), RYN_VB_DRIVER_VERSION_TEXT);
    EXPECT_EQ(read(0, reply, 16), 16u);  // no room for even the spare byte
    uint32_t code = 0;
    std::memcpy(&code, reply.data() + 8, 4);
    EXPECT_EQ(errorOf(code), 12u);
    EXPECT_EQ(read(0xFFFFFFF0u, reply, 16), 16u);
    EXPECT_EQ(read(4, reply, 21), 16u);  // a value larger than the caller's buffer: nothing of it written
}

// Serials count up to the top of their 28 bits and on from 1 (never 0), past those in use.
TEST(VirtualBoardModule, HandleSerialsWrapPastThoseInUse) {
    const std::unordered_set<uint32_t> used{1, 2, 5};
    uint32_t next = vb::kSerialMask - 1;
    std::vector<uint32_t> given;
    for (int i = 0; i < 5; ++i) given.push_back(vb::allocateSerial(next, used));
    EXPECT_EQ(given, (std::vector<uint32_t>{vb::kSerialMask - 1, vb::kSerialMask, 3, 4, 6}));
}

}  // namespace
}  // namespace vt
