#include <gtest/gtest.h>

#include <tuple>

#include "RynHwDll.h"
#include "core/Transport.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ConnectionGuard;
using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

TEST(Connection, ConnectAnnouncesTheVersionAndRefusesASecondConnect) {
    FakeDriver driver;
    ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    const auto sent = driver.lastRequest();
    EXPECT_EQ(std::tuple(sent.code, sent.input.size(), sent.outputLength,
                         std::vector(sent.input.begin() + 16, sent.input.end())),
              std::tuple(0x2221B8u, 24u, 12u, std::vector<uint8_t>{2, 0, 12, 0, 1, 0, 0, 0}));
    OsaHandle first = 0, second = 0;
    ASSERT_EQ(RynDrvGetHandle(&first), 0u);
    // Failure, device core, error 13; the refused connects send nothing and keep the connection.
    EXPECT_EQ(std::tuple(RynDrvConnectLib() & 0xFF8000FF, RynNetConnectLib() & 0xFF8000FF),
              std::tuple(0xB500000Du, 0xB500000Du));
    EXPECT_EQ(
        (std::tuple{RynDrvGetHandle(&second), second, driver.requestCount(), RynDrvReleaseLib(), driver.isOpen()}),
        std::tuple(0u, first, 1u, 0u, false));
    // A rejected version leaves the connection open all the same.
    driver.script(ryn::test::resultReply(0xB5001234u));
    EXPECT_EQ((std::tuple{RynDrvConnectLib(), RynDrvGetHandle(&second), driver.isOpen(), RynDrvReleaseLib()}),
              std::tuple(0xB5001234u, 0u, true, 0u));
    FakeDriver net("RYNNET");  // the second driver device
    EXPECT_EQ((std::tuple{RynNetConnectLib(), net.requestCount()}), std::tuple(0u, 1u));
}

TEST(Connection, WithoutADriverAndAfterRelease) {
    OsaHandle handle = 12345;
    // Failure, device core, error 11; the handle is left untouched.
    EXPECT_EQ((std::tuple{RynDrvConnectLib() & 0xFF8000FF, RynResultErrorCode(RynDrvGetHandle(&handle)), handle,
                          RynResultErrorCode(RynDrvReleaseLib())}),
              std::tuple(0xB500000Bu, 22u, 12345u, 11u));
    FakeDriver driver;
    ASSERT_EQ(RynDrvConnectLib() + RynDrvReleaseLib(), 0u);
    ryn::Request<20, 12> request(0x811);
    EXPECT_EQ((std::tuple{driver.isOpen(), RynResultErrorCode(RynDrvGetHandle(&handle)), request.send()}),
              std::tuple(false, 22u, 0xC300AD0Du));
}

using TransportTest = ryn::test::ConnectedTest;

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
        driver.script(ScriptedReply{ok, returned, {{8, driverResult}}, {}});
        ryn::Request<20, 12> request(0x811);
        EXPECT_EQ(request.put<16>(0x10000001).send(), expected) << ok << "/" << returned;
    }
    // The result is the last 32 bits of the reply, even after a 16-bit field.
    driver.script(ScriptedReply{}.word(8, 0xAAAA5555u));
    ryn::Request<20, 14> narrow(0x99A);
    EXPECT_EQ((std::tuple{narrow.send(), narrow.get16<8>()}), std::tuple(0xAAAAu, 0x5555u));
}

// Blocks start zero-filled; an address field names a caller buffer by a
// 1-based reference into the listed buffers (by its address in a 32-bit
// process), and a null address gives 0 and lists nothing.
TEST_F(TransportTest, RequestBlocksAndAddressReferences) {
    uint8_t first[10] = {}, second[12] = {};
    ryn::Request<32, 12> request(0x9A0);
    request.put<16>(0x20000003).putAddress<20>(first, sizeof first).putAddress<24>(second, sizeof second);
    EXPECT_EQ(request.putAddress<28>(nullptr, 5).send(), 0u);

    const auto sent = driver.lastRequest();
    EXPECT_EQ(std::vector<uint8_t>(sent.input.begin(), sent.input.begin() + 16), std::vector<uint8_t>(16, 0));
    const auto reference = [](const void *buffer, uint32_t index) {
        return sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(buffer)) : index;
    };
    EXPECT_EQ(std::tuple(sent.word(16), sent.word(20), sent.word(24), sent.word(28)),
              std::tuple(0x20000003u, reference(first, 1), reference(second, 2), 0u));
    std::vector<std::pair<void *, uint32_t>> listed;
    for (const RynDriverBuffer &buffer : sent.buffers) listed.emplace_back(buffer.address, buffer.length);
    EXPECT_EQ(listed, (std::vector<std::pair<void *, uint32_t>>{{first, 10}, {second, 12}}));
}

}  // namespace
