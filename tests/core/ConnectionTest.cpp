#include <gtest/gtest.h>

#include <tuple>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::ConnectionGuard;
using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

TEST(Connection, ConnectAnnouncesTheVersionAndRefusesASecondConnect) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    const auto request = driver.lastRequest();
    EXPECT_EQ(std::tuple(request.code, request.input.size(), request.outputLength), std::tuple(0x2221B8u, 24u, 12u));
    EXPECT_EQ(std::vector<uint8_t>(request.input.begin() + 16, request.input.end()),
              (std::vector<uint8_t>{2, 0, 12, 0, 1, 0, 0, 0}));

    OsaHandle first = 0, second = 0;
    ASSERT_EQ(RynDrvGetHandle(&first), 0u);
    EXPECT_EQ(RynDrvConnectLib() & 0xFF8000FF, 0xB500000Du);  // failure, device core, error 13
    EXPECT_EQ(RynNetConnectLib() & 0xFF8000FF, 0xB500000Du);
    ASSERT_EQ(RynDrvGetHandle(&second), 0u);
    EXPECT_EQ(first, second);
    EXPECT_EQ(driver.requestCount(), 1u);  // the refused connects sent nothing
}

TEST(Connection, RejectedVersionKeepsTheConnectionOpen) {
    FakeDriver driver;
    ConnectionGuard guard;
    driver.script(ryn::test::resultReply(0xB5001234u));
    EXPECT_EQ(RynDrvConnectLib(), 0xB5001234u);
    OsaHandle handle = 0;
    EXPECT_EQ(RynDrvGetHandle(&handle), 0u);
    EXPECT_TRUE(driver.isOpen());
    EXPECT_EQ(RynDrvReleaseLib(), 0u);
    EXPECT_FALSE(driver.isOpen());

    FakeDriver net("RYNNET");  // the second driver device
    EXPECT_EQ(RynNetConnectLib(), 0u);
    EXPECT_EQ(net.requestCount(), 1u);
}

TEST(Connection, WithoutADriverAndAfterRelease) {
    EXPECT_EQ(RynDrvConnectLib() & 0xFF8000FF, 0xB500000Bu);  // failure, device core, error 11
    OsaHandle handle = 12345;
    EXPECT_EQ(RynResultErrorCode(RynDrvGetHandle(&handle)), 22u);
    EXPECT_EQ(handle, 12345u);  // untouched

    FakeDriver driver;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    ASSERT_EQ(RynDrvReleaseLib(), 0u);
    EXPECT_FALSE(driver.isOpen());
    EXPECT_EQ(RynResultErrorCode(RynDrvGetHandle(&handle)), 22u);
    ryn::Request<20, 12> request(0x811);
    EXPECT_EQ(request.put<16>(0x10000001).send(), 0xC300AD0Du);
}

class TransportTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RynDrvConnectLib(), 0u);
        driver.clear();
    }
    FakeDriver driver;
    ConnectionGuard guard;
};

// The result for every outcome of the I/O control call: ok, bytes returned,
// the driver's result, the result seen.
TEST_F(TransportTest, CodesForFailedCallsAndEmptyReplies) {
    const std::tuple<int, uint32_t, ResultCode, ResultCode> cases[] = {
        {1, 12, 0xB5000102u, 0xB5000102u},  // the driver's code, unchanged
        {0, 12, 0xB5000102u, 0xC300AA0Du},  // failed call with bytes
        {0, 0, 0xB5000102u, 0xC300AD0Du},   // failed call without bytes: the second code wins
        {1, 0, 0xB5000102u, 0xC300AD0Du},   // successful call without bytes
        {1, 4, 0x00000007u, 0x00000007u},   // a short reply still reads the field
    };
    for (const auto &[ok, returned, driverResult, expected] : cases) {
        ScriptedReply reply = ryn::test::resultReply(driverResult);
        reply.ok = ok;
        reply.returned = returned;
        driver.script(reply);
        ryn::Request<20, 12> request(0x811);
        EXPECT_EQ(request.put<16>(0x10000001).send(), expected) << ok << "/" << returned;
    }
    // The result is the last 32 bits of the reply, even after a 16-bit field.
    driver.script(ScriptedReply{}.word(8, 0xAAAA5555u));
    ryn::Request<20, 14> narrow(0x99A);
    EXPECT_EQ(narrow.send(), 0xAAAAu);
    EXPECT_EQ(narrow.get16<8>(), 0x5555u);
}

// Blocks start zero-filled; an address field names a caller buffer by a
// 1-based reference into the listed buffers (by its address in a 32-bit
// process), and a null address gives 0 and lists nothing.
TEST_F(TransportTest, RequestBlocksAndAddressReferences) {
    uint8_t first[10] = {};
    uint32_t second[3] = {};
    ryn::Request<32, 12> request(0x9A0);
    request.put<16>(0x20000003).putAddress<20>(first, sizeof first).putAddress<24>(second, sizeof second);
    EXPECT_EQ(request.putAddress<28>(nullptr, 5).send(), 0u);

    const auto sent = driver.lastRequest();
    EXPECT_EQ(std::tuple(sent.code, sent.input.size()), std::tuple(0x220000u | (0x9A0u << 2), 32u));
    EXPECT_EQ(std::vector<uint8_t>(sent.input.begin(), sent.input.begin() + 16), std::vector<uint8_t>(16, 0));
    const auto reference = [](const void *buffer, uint32_t index) {
        return sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(buffer)) : index;
    };
    EXPECT_EQ(std::tuple(sent.word(16), sent.word(20), sent.word(24), sent.word(28)),
              std::tuple(0x20000003u, reference(first, 1), reference(second, 2), 0u));
    ASSERT_EQ(sent.buffers.size(), 2u);
    EXPECT_EQ(std::tuple(sent.buffers[0].address, sent.buffers[0].length), std::tuple(first, 10u));
    EXPECT_EQ(std::tuple(sent.buffers[1].address, sent.buffers[1].length), std::tuple(second, 12u));
}

}  // namespace
