#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using Hdlc = ryn::test::ConnectedTest;
using Listed = std::vector<std::pair<const void *, uint32_t>>;
constexpr DeviceHandle h = 0x40000021;

// Refused lengths (and a null SS7 header) send nothing; each accepted call
// sends one request: function, reply length, every 32-bit word of the
// request (the reserved header unset) and the caller buffers it names (by
// reference on 64-bit). Null out pointers are skipped.
TEST_F(Hdlc, Requests) {
    static uint8_t data[8191];
    const uint8_t header[4] = {0xA1, 0xA2, 0xA3, 0xA4};
    for (ResultCode code :
         {RynHdlcSendData_20(h, data, 8192, 0, 0), RynHdlcSendData(h, data, 0xFFFFFFFF, 0, 0),
          RynHdlcSS7SendData_24(h, data, 8192, nullptr, 0, 0), RynHdlcStartRepeatData_20(h, data, 10, 0, 0)})
        EXPECT_EQ(code & 0xFF8000FFu, 0xB6000009u) << std::hex << code;  // failure, HDLC module, error 9
    EXPECT_EQ(RynHdlcSS7SendData_24(h, data, 0, nullptr, 0, 0) & 0xFF8000FFu, 0xB600000Au);
    const uint32_t ref = sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)) : 1u;
    size_t count = 0;
    const auto sent = [&](ResultCode result, uint32_t function, uint32_t out, std::vector<uint32_t> fields,
                          const Listed &listed = {}) {
        const ryn::test::RecordedRequest r = driver.lastRequest();
        fields.insert(fields.begin(), 4, 0u);
        std::vector<uint32_t> words(fields.size());
        Listed buffers;
        for (size_t i = 0; i < words.size(); ++i) words[i] = r.word(4 * i);
        for (const RynDriverBuffer &b : r.buffers) buffers.emplace_back(b.address, b.length);
        EXPECT_EQ(
            std::tuple(result, driver.requestCount(), r.function(), r.input.size(), r.outputLength, words, buffers),
            std::tuple(0u, ++count, function, 4 * fields.size(), out, fields, listed));
    };
    sent(RynHdlcSenderInit_28(h, 1, 2, 3, 4, 5, 6), 0x99A, 12, {h, 1, 2, 3, 4, 5, 6});
    sent(RynHdlcReceiverInit(h, 1, 2, 3, 4, 5, 6, 7), 0x99B, 12, {h, 1, 2, 3, 4, 5, 6, 7});
    sent(RynHdlcSendData_20(h, data, 8191, 3, 4), 0x99C, 12, {h, 8191, 3, 4, ref}, {{data, 8191}});
    sent(RynHdlcSendData(h, data, 0, 3, 4), 0x99C, 12, {h, 0, 3, 4, ref}, {{data, 0}});
    sent(RynHdlcReadData_28(h, data, 99, nullptr, nullptr, nullptr, nullptr), 0x99D, 32, {h, 99, ref}, {{data, 99}});
    sent(RynHdlcSS7GetReceiveStatus_20(h, nullptr, nullptr, nullptr, nullptr), 0x9A0, 28, {h});
    sent(RynHdlcSS7SetFilter_8(h, 0x55), 0x9A1, 12, {h, 0x55});
    sent(RynHdlcSS7GetFilter_8(h, nullptr), 0x9A2, 16, {h});
    // Three header bytes at 24..26, byte 27 unset.
    sent(RynHdlcSS7SendData_24(h, data, 8191, header, 4, 5), 0x9A3, 12, {h, 8191, 0xA3A2A1, 4, 5, ref}, {{data, 8191}});
    sent(RynHdlcStartRepeatData_20(h, data, 9, 3, 4), 0x9A4, 12, {h, 9, 3, 4, ref}, {{data, 9}});
    sent(RynHdlcStopRepeatData_4(h), 0x9A5, 12, {h});
    sent(RynHdlcReadDataEx_24(h, 1, 2, 3, 4, nullptr), 0x9A6, 16, {h, 1, 2, 3, 4});
    sent(RynHdlcSenderFlush(h), 0x9A7, 12, {h});
}

// One reply for every reader, cut to each reply's length: the result is its
// last word and the out values are copied whatever the result.
TEST_F(Hdlc, RepliesCopiedOut) {
    uint32_t v[8] = {};
    uint64_t wide = 0;
    uint8_t header[4] = {0, 0, 0, 0xEE};
    const auto reply = ryn::test::ScriptedReply{}.word(8, 1).word(12, 2).word(16, 3).word(20, 0x44332211);
    for (int i = 0; i < 4; ++i)
        driver.script(ryn::test::ScriptedReply(reply).word(24, 0x88776655).word(28, 0xE000000F));
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
