#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "RynHwDll.h"
#include "core/Compat.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

// A reply to the driver-version attribute read: result 0, the text at 16.
ScriptedReply versionReply(const std::string &text) {
    ScriptedReply reply;
    reply.word(8, 0).word(12, static_cast<uint32_t>(text.size() + 1));
    reply.bytes.emplace_back(16, std::vector<uint8_t>(text.begin(), text.end()));
    return reply;
}

class LoadStep : public ::testing::Test {
protected:
    void TearDown() override { ryn::setDriverVersionLevel(0); }
};

TEST_F(LoadStep, ReadsTheDriverVersionAndReleases) {
    FakeDriver driver;
    driver.script(ScriptedReply{});  // the version announcement
    driver.script(versionReply("1.01.00-P37"));
    ryn::runLoadStep();
    EXPECT_EQ(ryn::driverVersionLevel(), 10137u);
    EXPECT_FALSE(driver.isOpen());

    const auto requests = driver.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].function(), 0x86Eu);
    EXPECT_EQ(requests[1].function(), 0x818u);
    EXPECT_EQ(requests[1].word(16), 0u);   // the driver pseudo-handle
    EXPECT_EQ(requests[1].word(20), 13u);  // the driver version attribute
    EXPECT_EQ(requests[1].word(24), 80u);
    EXPECT_EQ(requests[1].outputLength, 97u);
}

TEST_F(LoadStep, NoDriverOrNoAnswerGivesLevelZero) {
    ryn::setDriverVersionLevel(10130);
    ryn::runLoadStep();
    EXPECT_EQ(ryn::driverVersionLevel(), 0u);

    FakeDriver driver;
    driver.script(ScriptedReply{});
    driver.script(ryn::test::failedCall(0));
    ryn::runLoadStep();
    EXPECT_EQ(ryn::driverVersionLevel(), 0u);
    EXPECT_FALSE(driver.isOpen());
}

}  // namespace
