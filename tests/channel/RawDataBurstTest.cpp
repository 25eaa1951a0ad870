#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::Fields;
using ryn::test::ScriptedReply;
using Listed = std::vector<std::pair<const void *, uint32_t>>;

constexpr DeviceHandle h = 0x20000005;
// A failure of the raw-data (0x6F) or burst (0x68) module, line masked out.
constexpr uint32_t kRaw = 0xB7800000, kBurst = 0xB4000000, kNoLine = 0xFF8000FF;
// A 32-bit setting w after an 8-bit one (0xA2, 0xA3) and an unset byte.
constexpr uint32_t w = 0x33333333, kA2 = 0x333300A2, kA3 = 0x333300A3;

class Channel : public ryn::test::ConnectedTest {
protected:
    // Checks that a call succeeded and sent one more request: function,
    // request and reply lengths, fields, and the caller buffers it names.
    ryn::test::RecordedRequest sent(ResultCode result, uint32_t function, size_t in, uint32_t out, Fields fields,
                                    const Listed &listed = {}) {
        const auto r = driver.lastRequest();
        Fields got = fields;
        for (auto &[offset, value] : got) value = r.word(offset);
        Listed buffers;
        for (const RynDriverBuffer &b : r.buffers) buffers.emplace_back(b.address, b.length);
        EXPECT_EQ(std::tuple(result, driver.requestCount(), r.function(), r.input.size(), r.outputLength, got, buffers),
                  std::tuple(0u, ++count, function, in, out, fields, listed));
        return r;
    }
    size_t count = 0;
};
using RawData = Channel;
using Burst = Channel;

// Address fields name the caller's own buffer, by reference on 64-bit.
TEST_F(RawData, RequestsAndRefusals) {
    static uint8_t data[8192];
    const uint32_t ref = sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)) : 1u;
    uint32_t length = 0, value = 0;
    sent(RynRawDataSenderInit_16(h, 1, 0xA2, w), 0x99A, 30, 12, {{16, h}, {20, 1}, {24, kA2}, {26, w}});
    sent(RynRawDataReceiverInit(h, 1, 0xA2, w, 4), 0x99B, 34, 12, {{16, h}, {20, 1}, {24, kA2}, {26, w}, {30, 4}});
    sent(RynRawDataSendData_20(h, data, 8191, 3, 4), 0x99C, 36, 12, {{20, 8191}, {24, 3}, {28, 4}, {32, ref}},
         {{data, 8191}});
    sent(RynRawDataSendData(h, nullptr, 5, 3, 4), 0x99C, 36, 12, {{20, 5}, {32, 0}});  // the driver's to refuse
    sent(RynRawDataReadData_20(h, data, 64, &length, &value), 0x99D, 28, 20, {{20, 64}, {24, ref}}, {{data, 64}});
    sent(RynRawDataSenderFlush(h), 0x9A0, 20, 12, {{16, h}});
    sent(RynRawDataSenderInitEx_20(h, 1, 2, 0xA3, w), 0x9A1, 34, 12, {{16, h}, {20, 1}, {24, 2}, {28, kA3}, {30, w}});
    const std::vector refused{RynRawDataSendData_20(h, data, 8192, 0, 0), RynRawDataStartIdlePattern_12(h, 1, 2),
                              RynRawDataStopIdlePattern(h)};
    for (size_t i = 0; i < refused.size(); ++i) EXPECT_EQ(refused[i] & kNoLine, kRaw | (i == 0 ? 9 : 6)) << i;
    EXPECT_EQ(driver.requestCount(), count);

    // The received length is stored as given, beyond the buffer size too.
    driver.script(ScriptedReply{}.word(8, 9999).word(12, 0x55).word(16, 0xE000000F));
    EXPECT_EQ(RynRawDataReadData_20(h, data, 100, &length, &value), 0xE000000Fu);
    EXPECT_EQ(std::tuple(length, value), std::tuple(9999u, 0x55u));
}

TEST_F(Burst, Requests) {
    std::vector<uint8_t> data(100);
    std::iota(data.begin(), data.end(), uint8_t{1});
    uint8_t *p = data.data();
    uint32_t n = 0;
    const auto with = [&](uint32_t value) { return &(n = value); };
    const auto r = sent(RynBurstSendData_16(h, 7, p, with(100)), 0x99A, 128, 16, {{16, h}, {20, 7}, {24, 100}});
    EXPECT_EQ(std::vector(r.input.begin() + 28, r.input.end()), data);
    sent(RynBurstInitSendBuffer(h, 7, p, with(0)), 0x99C, 28, 16, {{16, h}, {20, 7}, {24, 0}});
    sent(RynBurstReadDataEx_24(h, 7, p, with(64), nullptr, nullptr), 0x99B, 28, 96, {{16, h}, {20, 7}, {24, 64}});
    sent(RynBurstReadData(h, 8, p, with(1)), 0x99B, 28, 33, {{20, 8}, {24, 1}});
    sent(RynBurstReceiveData_16(h, 9, p, with(0)), 0x99B, 28, 32, {{20, 9}, {24, 0}});
    driver.script(ScriptedReply{}.word(8, 42).word(12, 0xE000000F));
    EXPECT_EQ(RynBurstSendData(h, 7, p, with(100)), 0xE000000Fu);
    EXPECT_EQ(n, 42u);
}

TEST_F(Burst, ReplyCountAgainstTheCapacity) {
    const ScriptedReply full = ScriptedReply{}.word(12, 0x55).word(20, 0x66).word(28, 0xE000000F);
    // Reply and its count of 64 data bytes; result, length, bytes copied, values.
    const std::tuple<ScriptedReply, uint32_t, ResultCode, uint32_t, long, uint64_t, uint64_t> cases[] = {
        {full, 64, 0xE000000F, 64, 64, 0x55, 0x66},
        {full, 65, kBurst | 5, 64, 0, 0, 0},  // nothing copied or stored
        // A failed exchange brings nothing, whatever the driver left in the block.
        {ryn::test::failedCall(96), 10, RYN_RESULT_CALL_FAILED, 0, 0, 0, 0},
        {ryn::test::failedCall(0), 10, RYN_RESULT_NO_REPLY, 0, 0, 0, 0},
    };
    for (auto [reply, count, result, length, copied, value5, value6] : cases) {
        std::vector<uint8_t> buffer(65, 0xEE);
        reply.word(8, count).bytes.emplace_back(32, std::vector<uint8_t>(64, 0x77));
        driver.script(reply);
        uint32_t n = 64;
        uint64_t got5 = 0, got6 = 0;
        const ResultCode code = RynBurstReadDataEx(h, 0, buffer.data(), &n, &got5, &got6);
        EXPECT_EQ(std::tuple(code & kNoLine, n, std::count(buffer.begin(), buffer.end(), 0x77), buffer[64], got5, got6),
                  std::tuple(result & kNoLine, length, copied, 0xEE, value5, value6));
    }
}

// A length without room for the fixed fields beside it in 32 bits is refused.
TEST_F(Burst, NullPointersAndHugeLengthsSendNothing) {
    uint8_t buffer[4] = {};
    uint32_t n = 4, send = 0xFFFFFFE4, read = 0xFFFFFFE0;
    for (ResultCode code : {RynBurstSendData_16(h, 0, nullptr, &n), RynBurstSendData_16(h, 0, buffer, nullptr),
                            RynBurstInitSendBuffer_16(h, 0, nullptr, &n), RynBurstReadData_16(h, 0, buffer, nullptr),
                            RynBurstReadDataEx_24(h, 0, nullptr, &n, nullptr, nullptr)})
        EXPECT_EQ(code & kNoLine, kBurst | 10);
    EXPECT_EQ(RynBurstSendData_16(h, 0, buffer, &send) & kNoLine, kBurst | 9);
    EXPECT_EQ(RynBurstReadData_16(h, 0, buffer, &read) & kNoLine, kBurst | 9);
    EXPECT_EQ(std::tuple(n, send, read, driver.requestCount()), std::tuple(4u, 0xFFFFFFE4u, 0xFFFFFFE0u, 0u));
}

#if !defined(__SANITIZE_ADDRESS__)
// One byte less passes and asks for a block of 2^32 - 1 bytes, which a child
// limited to 1 GiB more address space cannot have: error 7, nothing sent.
int longestLengthsInALimitedChild(const ryn::test::FakeDriver &driver) {
    long pages = 0;
    std::FILE *statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr || std::fscanf(statm, "%ld", &pages) != 1) return 2;
    const rlim_t limit = static_cast<rlim_t>(pages) * sysconf(_SC_PAGESIZE) + (rlim_t{1} << 30);
    const rlimit space{limit, limit};
    uint8_t buffer[4] = {};
    uint32_t send = 0xFFFFFFE3, read = 0xFFFFFFDF;
    if (setrlimit(RLIMIT_AS, &space) != 0) return 3;
    const ResultCode sent = RynBurstSendData_16(h, 0, buffer, &send), got = RynBurstReadData_16(h, 0, buffer, &read);
    return (sent & kNoLine) == (kBurst | 7) && (got & kNoLine) == (kBurst | 7) && driver.requestCount() == 0 ? 0 : 1;
}

TEST_F(Burst, LongestLengthsReachTheAllocation) {
    EXPECT_EXIT(std::_Exit(longestLengthsInALimitedChild(driver)), ::testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
