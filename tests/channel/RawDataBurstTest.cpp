#include <gtest/gtest.h>

#include <algorithm>

#include "support/ConnectedTest.h"
#include "support/Platform.h"

namespace {

using namespace ryn::test;
using RawData = ConnectedTest;
using Burst = ConnectedTest;

constexpr DeviceHandle h = 0x20000005;
// A failure of the raw-data (0x6F) or burst (0x68) module, line masked out.
constexpr uint32_t kRaw = 0xB7800000, kBurst = 0xB4000000, kNoLine = 0xFF8000FF;

// Address fields name the caller's own buffer, by reference on 64-bit. An
// 8-bit setting (0xA2, 0xA3) is followed by an unset byte and a 32-bit one.
TEST_F(RawData, RequestsAndRefusals) {
    static uint8_t data[8192];
    const uint32_t ref = sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)) : 1u;
    uint32_t length = 0, value = 0;
    SentRequests sent(driver);
    sent(RynRawDataSenderInit_16(h, 1, 0xA2, 0x44443333), 0x99A, 30, 12, {h, 1, 0x333300A2});
    sent(RynRawDataReceiverInit(h, 1, 0xA2, 0x44443333, 5), 0x99B, 34, 12, {h, 1, 0x333300A2, 0x54444});
    sent(RynRawDataSenderInitEx_20(h, 1, 2, 0xA3, 0x44443333), 0x9A1, 34, 12, {h, 1, 2, 0x333300A3});
    sent(RynRawDataSenderFlush(h), 0x9A0, 20, 12, {h});
    sent(RynRawDataSendData(h, nullptr, 5, 3, 4), 0x99C, 36, 12, {h, 5, 3, 4, 0});  // the driver's to refuse
    sent(RynRawDataSendData_20(h, data, 8191, 3, 4), 0x99C, 36, 12, {h, 8191, 3, 4, ref});
    sent(RynRawDataReadData_20(h, data, 64, &length, &value), 0x99D, 28, 20, {h, 64, ref});
    std::vector<std::pair<const void *, uint32_t>> buffers;  // named by all requests, a null address by none
    for (const RecordedRequest &r : driver.requests())
        for (const RynDriverBuffer &b : r.buffers) buffers.emplace_back(b.address, b.length);
    EXPECT_EQ(buffers, (std::vector<std::pair<const void *, uint32_t>>{{data, 8191}, {data, 64}}));
    const ResultCode refused[] = {RynRawDataSendData_20(h, data, 8192, 0, 0), RynRawDataStartIdlePattern_12(h, 1, 2),
                                  RynRawDataStopIdlePattern(h)};
    EXPECT_EQ(std::tuple(refused[0] & kNoLine, refused[1] & kNoLine, refused[2] & kNoLine, driver.requestCount()),
              std::tuple(kRaw | 9, kRaw | 6, kRaw | 6, 7u));
    // The received length is stored as given, beyond the buffer size too.
    driver.script(ScriptedReply{}.word(8, 9999).word(12, 0x55).word(16, 0xE000000F));
    EXPECT_EQ(RynRawDataReadData_20(h, data, 100, &length, &value), 0xE000000Fu);
    EXPECT_EQ(std::tuple(length, value), std::tuple(9999u, 0x55u));
}

// The data travel in the request (at 28) or in the reply (at 32); the send
// reply's count at 8 is stored whatever the result.
TEST_F(Burst, Requests) {
    uint8_t p[100];
    uint32_t n = 0;
    for (int i = 0; i < 100; ++i) p[i] = static_cast<uint8_t>(i + 1);
    SentRequests sent(driver);
    sent(RynBurstSendData_16(h, 7, p, (n = 100, &n)), 0x99A, 128, 16, {h, 7, 100});
    EXPECT_TRUE(std::equal(p, p + 100, driver.lastRequest().input.begin() + 28));
    sent(RynBurstInitSendBuffer(h, 7, p, (n = 0, &n)), 0x99C, 28, 16, {h, 7, 0});
    sent(RynBurstReadDataEx_24(h, 7, p, (n = 64, &n), nullptr, nullptr), 0x99B, 28, 96, {h, 7, 64});
    sent(RynBurstReadData(h, 8, p, (n = 1, &n)), 0x99B, 28, 33, {h, 8, 1});
    sent(RynBurstReceiveData_16(h, 9, p, (n = 0, &n)), 0x99B, 28, 32, {h, 9, 0});
    driver.script(ScriptedReply{}.word(8, 42).word(12, 0xE000000F));
    EXPECT_EQ((std::pair{RynBurstSendData(h, 7, p, (n = 100, &n)), n}), std::pair(0xE000000Fu, 42u));
}

// A read reply's count is checked against the capacity before anything is
// copied or stored; a failed exchange brings nothing (no data, no values),
// whatever the driver left in the block.
TEST_F(Burst, ReplyCountAgainstTheCapacity) {
    // Whether the exchange succeeds and the reply's count of 64 data bytes;
    // the result (line masked out), the length and the bytes copied.
    const std::tuple<int, uint32_t, ResultCode, uint32_t, long> cases[] = {
        {1, 64, 0xE000000F, 64, 64}, {1, 65, kBurst | 5, 64, 0}, {0, 10, RYN_RESULT_CALL_FAILED & kNoLine, 0, 0}};
    for (auto [ok, count, result, length, copied] : cases) {
        ScriptedReply reply = ScriptedReply{}.word(8, count).word(12, 0x55).word(16, 5).word(20, 0x66).word(24, 6);
        reply.ok = ok, reply.put(32, std::vector<uint8_t>(64, 0x77));
        driver.script(reply.word(28, 0xE000000F));
        std::vector<uint8_t> buffer(65, 0xEE);
        uint32_t n = 64;
        uint64_t values[2] = {};
        const ResultCode code = RynBurstReadDataEx(h, 0, buffer.data(), &n, values, values + 1);
        EXPECT_EQ(std::tuple(code & kNoLine, n, std::ranges::count(buffer, 0x77), buffer[64], values[0], values[1]),
                  std::tuple(result, length, copied, 0xEE, copied ? 0x500000055u : 0, copied ? 0x600000066u : 0));
    }
}

// Null pointers, and a length without room for the fixed fields beside it
// in 32 bits, are refused. One byte less passes and asks for a block of
// 2^32 - 1 bytes, which a child limited to 4 GiB of address space (as a
// 32-bit process is by its nature) cannot have: error 7. Nothing is sent.
TEST_F(Burst, NullPointersAndLongestLengths) {
    uint8_t buffer[4] = {};
    uint32_t n = 4, send = 0xFFFFFFE4, read = 0xFFFFFFE0;
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{((codes & kNoLine) ^ kBurst)...}; };
    EXPECT_EQ(
        errors(RynBurstSendData_16(h, 0, nullptr, &n), RynBurstSendData_16(h, 0, buffer, nullptr),
               RynBurstReadDataEx_24(h, 0, nullptr, &n, nullptr, nullptr), RynBurstReadData_16(h, 0, buffer, nullptr),
               RynBurstSendData_16(h, 0, buffer, &send), RynBurstReadData_16(h, 0, buffer, &read)),
        (std::vector<uint32_t>{10, 10, 10, 10, 9, 9}));
    EXPECT_EQ(std::tuple(n, send, read, driver.requestCount()), std::tuple(4u, 0xFFFFFFE4u, 0xFFFFFFE0u, 0u));
#if !defined(__SANITIZE_ADDRESS__)
    constexpr int kNoLimit = 2;
    const auto child = [&] {
        // Opaque to the optimiser, which would otherwise see a copy of the
        // whole length from the 4-byte buffer on the path never taken.
        const volatile uint32_t longestSend = 0xFFFFFFE3, longestRead = 0xFFFFFFDF;
        send = longestSend, read = longestRead;
        if constexpr (sizeof(void *) > 4) {
            if (!limitProcessMemory(uint64_t{1} << 32)) return kNoLimit;
        }
        const ResultCode codes[] = {RynBurstSendData_16(h, 0, buffer, &send), RynBurstReadData_16(h, 0, buffer, &read)};
        return std::tuple(codes[0] & kNoLine, codes[1] & kNoLine, driver.requestCount()) ==
                       std::tuple(kBurst | 7, kBurst | 7, size_t{0})
                   ? 0
                   : 1;
    };
    // A system that cannot hold the child to 4 GiB (wine does not enforce
    // the limit) leaves nothing to check.
    bool limited = true;
    const auto exited = [&limited](int status) {
        limited = !::testing::ExitedWithCode(kNoLimit)(status);
        return !limited || ::testing::ExitedWithCode(0)(status);
    };
    EXPECT_EXIT(std::_Exit(child()), exited, "");
    if (!limited) GTEST_SKIP() << "this system does not limit a process's memory";
#endif
}

}  // namespace
