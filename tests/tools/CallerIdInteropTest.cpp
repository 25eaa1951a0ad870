// rynctl's recording of the virtual board's SLIC line ringing with a caller
// identification, decoded by spandsp's ADSI receiver: a receiver that shares
// nothing with the board's own. Without spandsp the test is skipped.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/Platform.h"
#include "support/TempFile.h"

#if RYN_SPANDSP
#include <spandsp.h>
#endif

namespace {

TEST(Rynctl, CallerIdRecordingDecodesWithSpandsp) {
#if !RYN_SPANDSP
    GTEST_SKIP() << "built without spandsp";
#else
    const ryn::test::TempFile anchor(std::vector<uint8_t>{});
    const std::string path = std::string(anchor.path()) + "-cid.wav";
    const struct {
        std::string options;
        uint8_t type;
        std::vector<std::string> fields;  // found in the message
    } cases[] = {
        {"--number 5551234567 --name \"Ann Smith\"", 0x80, {"5551234567", "Ann Smith"}},
        {"--number 5559876543 --message single", 0x04, {"5559876543"}},
    };
    for (const auto &c : cases) {
        const auto ran = ryn::test::runCommand(std::string(RYN_TOOL) + " record callerid " + path + " " + c.options);
        ASSERT_EQ(ran.status, 0) << ran.out;
        std::ifstream in(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        ASSERT_EQ(bytes.size(), 44u + 4 * 16000u) << c.options;  // 4 s of 16-bit PCM after the header
        std::vector<int16_t> samples(4 * 8000);
        std::memcpy(samples.data(), bytes.data() + 44, samples.size() * 2);

        // spandsp passes on the messages whose checksum is right, the checksum left out.
        std::vector<std::string> messages;
        adsi_rx_state_t *rx = adsi_rx_init(
            nullptr, ADSI_STANDARD_CLASS,
            [](void *to, const uint8_t *m, int length) {
                static_cast<std::vector<std::string> *>(to)->emplace_back(m, m + length);
            },
            &messages);
        adsi_rx(rx, samples.data(), static_cast<int>(samples.size()));
        adsi_rx_free(rx);
        ASSERT_EQ(messages.size(), 1u) << c.options;
        EXPECT_EQ(uint8_t(messages[0][0]), c.type) << c.options;
        for (const std::string &field : c.fields) EXPECT_NE(messages[0].find(field), std::string::npos) << field;
    }
    std::remove(path.c_str());
#endif
}

}  // namespace
