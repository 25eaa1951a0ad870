#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::ConnectionGuard;
using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

TEST(Connection, ConnectAnnouncesTheLibraryVersion) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    ASSERT_EQ(driver.requestCount(), 1u);
    const auto request = driver.lastRequest();
    EXPECT_EQ(request.code, 0x2221B8u);
    ASSERT_EQ(request.input.size(), 24u);
    EXPECT_EQ(request.outputLength, 12u);
    const std::vector<uint8_t> version(request.input.begin() + 16, request.input.end());
    EXPECT_EQ(version, (std::vector<uint8_t>{2, 0, 12, 0, 1, 0, 0, 0}));
    EXPECT_TRUE(request.buffers.empty());
}

TEST(Connection, SecondConnectFailsAndKeepsTheConnection) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    OsaHandle first = 0;
    ASSERT_EQ(RynDrvGetHandle(&first), 0u);

    const ResultCode again = RynDrvConnectLib();
    EXPECT_EQ(RynResultErrorCode(again), 13u);
    EXPECT_EQ(RynResultSourceId(again), 0x6Au);
    EXPECT_EQ(RynFailure(again), 1);
    EXPECT_EQ(RynResultErrorCode(RynNetConnectLib()), 13u);

    OsaHandle second = 0;
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

TEST(Connection, NoDriverAndReleaseWithoutConnection) {
    const ResultCode connect = RynDrvConnectLib();
    EXPECT_EQ(RynResultErrorCode(connect), 11u);
    EXPECT_EQ(RynResultSourceId(connect), 0x6Au);
    const ResultCode release = RynDrvReleaseLib();
    EXPECT_EQ(RynResultErrorCode(release), 11u);
    EXPECT_EQ(RynFailure(release), 1);

    OsaHandle handle = 12345;
    const ResultCode get = RynDrvGetHandle(&handle);
    EXPECT_EQ(RynResultErrorCode(get), 22u);
    EXPECT_EQ(handle, 12345u);  // untouched
}

TEST(Connection, RequestsAfterReleaseGetNoReply) {
    FakeDriver driver;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    OsaHandle handle = 0;
    ASSERT_EQ(RynDrvGetHandle(&handle), 0u);
    ASSERT_EQ(RynDrvReleaseLib(), 0u);
    EXPECT_FALSE(driver.isOpen());
    EXPECT_EQ(RynResultErrorCode(RynDrvGetHandle(&handle)), 22u);

    ryn::Request<20, 12> request(0x811);
    EXPECT_EQ(request.put<16>(0x10000001).send(), 0xC300AD0Du);
}

// The transport rule for every outcome of the I/O control call.
TEST(Transport, CodesForFailedCallsAndEmptyReplies) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);

    struct Case {
        int ok;
        uint32_t returned;
        ResultCode driverResult;
        ResultCode expected;
    } cases[] = {
        {1, 12, 0xB5000102u, 0xB5000102u},  // the driver's code, unchanged
        {0, 12, 0xB5000102u, 0xC300AA0Du},  // failed call with bytes
        {0, 0, 0xB5000102u, 0xC300AD0Du},   // failed call without bytes: the second code wins
        {1, 0, 0xB5000102u, 0xC300AD0Du},   // successful call without bytes
        {1, 4, 0x00000007u, 0x00000007u},   // a short reply still reads the field
    };
    for (const Case &c : cases) {
        ScriptedReply reply = ryn::test::resultReply(c.driverResult);
        reply.ok = c.ok;
        reply.returned = c.returned;
        driver.script(reply);
        ryn::Request<20, 12> request(0x811);
        EXPECT_EQ(request.put<16>(0x10000001).send(), c.expected) << c.ok << "/" << c.returned;
    }
}

TEST(Transport, ResultAtOtherOffsets) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);

    driver.script(ScriptedReply{}.word(4, 0x80001111u).word(8, 0x12345678u));
    ryn::Request<24, 12> handle(0x870);
    EXPECT_EQ(handle.sendWithResultAt<4>(ryn::kDeviceHandleTransport), 0x80001111u);
    EXPECT_EQ(handle.get<8>(), 0x12345678u);

    // A 16-bit value before the result puts the result at offset 10.
    driver.script(ScriptedReply{}.word(8, 0xAAAA5555u));
    ryn::Request<20, 14> narrow(0x99A);
    EXPECT_EQ(narrow.send(), 0xAAAAu);
    EXPECT_EQ(narrow.get16<8>(), 0x5555u);
}

TEST(Transport, RequestBlocksAndAddressReferences) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    driver.clear();

    uint8_t first[10] = {};
    uint32_t second[3] = {};
    ryn::Request<32, 12> request(0x9A0);
    request.put<16>(0x20000003).putAddress<20>(first, sizeof first).putAddress<24>(second, sizeof second);
    request.putAddress<28>(nullptr, 5);  // no buffer: the field stays 0
    EXPECT_EQ(request.send(), 0u);

    const auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x220000u | (0x9A0u << 2));
    ASSERT_EQ(sent.input.size(), 32u);
    EXPECT_EQ(std::vector<uint8_t>(sent.input.begin(), sent.input.begin() + 16), std::vector<uint8_t>(16, 0));
    EXPECT_EQ(sent.word(16), 0x20000003u);
    ASSERT_EQ(sent.buffers.size(), 2u);
    EXPECT_EQ(sent.buffers[0].address, first);
    EXPECT_EQ(sent.buffers[0].length, 10u);
    EXPECT_EQ(sent.buffers[1].address, second);
    EXPECT_EQ(sent.buffers[1].length, 12u);
    if (sizeof(void *) == 4) {
        EXPECT_EQ(sent.word(20), static_cast<uint32_t>(reinterpret_cast<uintptr_t>(first)));
    } else {
        EXPECT_EQ(sent.word(20), 1u);
        EXPECT_EQ(sent.word(24), 2u);
    }
    EXPECT_EQ(sent.word(28), 0u);
}

}  // namespace
