#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using Hdlc = ConnectedTest;
constexpr DeviceHandle h = 0x40000021;

// Refused lengths (checked before the SS7 header) and a null SS7 header send
// nothing; each accepted call sends one request, naming the caller's buffer
// by address (by reference on 64-bit). Null out pointers are skipped.
TEST_F(Hdlc, Requests) {
    static uint8_t data[8191];
    const uint8_t header[4] = {0xA1, 0xA2, 0xA3, 0xA4};
    const uint32_t ref = sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)) : 1u;
    SentRequests sent(driver);
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{((codes & 0xFF8000FFu) ^ 0xB6000000u)...}; };
    EXPECT_EQ(errors(RynHdlcSendData_20(h, data, 8192, 0, 0), RynHdlcSendData(h, data, 0xFFFFFFFF, 0, 0),
                     RynHdlcSS7SendData_24(h, data, 8192, nullptr, 0, 0), RynHdlcStartRepeatData_20(h, data, 10, 0, 0),
                     RynHdlcSS7SendData_24(h, data, 0, nullptr, 0, 0)),
              (std::vector<uint32_t>{9, 9, 9, 9, 10}));  // failure, HDLC module, error 9 or 10
    sent(RynHdlcSenderInit_28(h, 1, 2, 3, 4, 5, 6), 0x99A, 44, 12, {h, 1, 2, 3, 4, 5, 6});
    sent(RynHdlcReceiverInit(h, 1, 2, 3, 4, 5, 6, 7), 0x99B, 48, 12, {h, 1, 2, 3, 4, 5, 6, 7});
    sent(RynHdlcSendData_20(h, data, 8191, 3, 4), 0x99C, 36, 12, {h, 8191, 3, 4, ref});
    sent(RynHdlcReadData_28(h, data, 99, nullptr, nullptr, nullptr, nullptr), 0x99D, 28, 32, {h, 99, ref});
    sent(RynHdlcSS7GetReceiveStatus_20(h, nullptr, nullptr, nullptr, nullptr), 0x9A0, 20, 28, {h});
    sent(RynHdlcSS7SetFilter_8(h, 0x55), 0x9A1, 24, 12, {h, 0x55});
    sent(RynHdlcSS7GetFilter_8(h, nullptr), 0x9A2, 20, 16, {h});
    // Three header bytes at 24..26, byte 27 unset.
    sent(RynHdlcSS7SendData_24(h, data, 8191, header, 4, 5), 0x9A3, 40, 12, {h, 8191, 0xA3A2A1, 4, 5, ref});
    sent(RynHdlcStartRepeatData_20(h, data, 9, 3, 4), 0x9A4, 36, 12, {h, 9, 3, 4, ref});
    sent(RynHdlcStopRepeatData_4(h), 0x9A5, 20, 12, {h});
    sent(RynHdlcReadDataEx_24(h, 1, 2, 3, 4, nullptr), 0x9A6, 36, 16, {h, 1, 2, 3, 4});
    sent(RynHdlcSenderFlush(h), 0x9A7, 20, 12, {h});
    std::vector<std::pair<const void *, uint32_t>> buffers;  // named by all requests, in order
    for (const RecordedRequest &r : driver.requests())
        for (const RynDriverBuffer &b : r.buffers) buffers.emplace_back(b.address, b.length);
    EXPECT_EQ(buffers, (decltype(buffers){{data, 8191}, {data, 99}, {data, 8191}, {data, 9}}));
}

// One reply for every reader, cut to each reply's length: the result is its
// last word and the out values are copied whatever the result.
TEST_F(Hdlc, RepliesCopiedOut) {
    uint32_t v[8] = {};
    uint64_t wide = 0;
    uint8_t header[4] = {0, 0, 0, 0xEE};
    const auto reply = ScriptedReply{}.word(8, 1).word(12, 2).word(16, 3).word(20, 0x44332211).word(24, 0x88776655);
    for (int i = 0; i < 4; ++i) driver.script(ScriptedReply(reply).word(28, 0xE000000F));
    EXPECT_EQ(std::tuple(RynHdlcReadData_28(h, nullptr, 0, &v[0], &v[1], &v[2], &wide),
                         RynHdlcSS7GetReceiveStatus_20(h, &v[3], &v[4], &v[5], header), RynHdlcSS7GetFilter_8(h, &v[6]),
                         RynHdlcReadDataEx_24(h, 0, 0, 0, 0, &v[7])),
              std::tuple(0xE000000Fu, 0x88776655u, 2u, 2u));
    EXPECT_EQ(std::tuple(std::vector(v, v + 8), wide, std::vector(header, header + 4)),
              std::tuple(std::vector<uint32_t>{1, 2, 3, 1, 2, 3, 1, 1}, 0x8877665544332211u,
                         std::vector<uint8_t>{0x11, 0x22, 0x33, 0xEE}));
    ryn::setDriverVersionLevel(10130);  // the undecorated entry points reduce codes for this driver
    EXPECT_EQ(RynHdlcStartRepeatData(h, nullptr, 10, 0, 0), 0x80000009u);
}

}  // namespace
