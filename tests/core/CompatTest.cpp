#include <gtest/gtest.h>

#include "core/Compat.h"

namespace {

using namespace ryn;

template <class T>
struct Case {
    uint32_t level;
    T in, out;
};

// Every table crosses each level boundary of its translation; level 0 (no
// driver version known) leaves everything alone.
class Level : public ::testing::Test {
protected:
    void TearDown() override { setDriverVersionLevel(0); }

    template <class T, size_t N>
    static void expectTranslations(T (*translate)(T), const Case<T> (&cases)[N]) {
        for (const Case<T> &c : cases) {
            setDriverVersionLevel(c.level);
            EXPECT_EQ(translate(c.in), c.out) << "level " << c.level << ", " << c.in;
        }
    }
};

TEST_F(Level, ResultCodesReducedOnlyFrom10120To10139) {
    const Case<ResultCode> cases[] = {{0, 0xB5008D0B, 0xB5008D0B},
                                      {10119, 0xB5008D0B, 0xB5008D0B},
                                      {10120, 0xB5008D0B, 0x8000000B},
                                      {10139, 0xB5008D0B, 0x8000000B},
                                      {10140, 0xB5008D0B, 0xB5008D0B}};
    expectTranslations(compatResultCode, cases);
}

// The highest identifiers (the last two cases) wrap around as 32-bit values.
TEST_F(Level, AttributeIdentifiers) {
    constexpr int32_t kMin = INT32_MIN, kMax = INT32_MAX;
    const Case<int32_t> cases[] = {{0, 6, 6},        {10119, 6, kMin},        {10119, 0, kMin},   {10120, 6, 9},
                                   {10120, 5, 5},    {10138, 6, 9},           {10139, 6, 7},      {10139, 5, 5},
                                   {10145, 6, 7},    {10146, 100, 101},       {10147, 6, 6},      {10130, -3, -3},
                                   {10100, 1, kMin}, {10130, kMax, kMin + 2}, {10139, kMax, kMin}};
    expectTranslations(compatAttributeId, cases);
}

TEST_F(Level, DeviceTypesBothDirections) {
    const Case<int32_t> toDriver[] = {{10130, 0, 0},     {10130, -15, -15}, {10130, -16, -16}, {10130, -17, -16},
                                      {10130, -30, -29}, {10130, -31, -31}, {10130, -32, -30}, {10130, -42, -40},
                                      {10130, -43, -43}, {10130, 5, 5},     {0, -17, -17},     {10119, 0, INT32_MIN},
                                      {10120, -17, -16}, {10136, -17, -16}, {10137, -17, -17}};
    expectTranslations(compatDeviceTypeToDriver, toDriver);
    const Case<int32_t> fromDriver[] = {{10130, 0, 0},     {10130, -15, -15},     {10130, -16, -17}, {10130, -29, -30},
                                        {10130, -30, -32}, {10130, -40, -42},     {10130, -41, -41}, {10130, 7, 7},
                                        {0, -16, -16},     {10119, 0, INT32_MIN}, {10120, -16, -17}, {10136, -16, -17},
                                        {10137, -16, -16}};
    expectTranslations(compatDeviceTypeFromDriver, fromDriver);
}

TEST_F(Level, ModuleIdentifiersByLevelRow) {
    constexpr uint32_t kNone = 0xFFFFFFFF;
    const Case<uint32_t> cases[] = {{0, 2, 2},          {10142, 2, 2},         {10142, 500, 500}, {10141, 2, kNone},
                                    {10141, 5, 6},      {10139, 8, 9},         {10138, 2, 1},     {10138, 1, kNone},
                                    {10138, 11, kNone}, {10138, kNone, kNone}, {10137, 10, 9},    {10136, 2, 3},
                                    {10128, 4, 6},      {10127, 3, 6},         {10126, 5, 7},     {10125, 3, kNone},
                                    {10125, 4, 6},      {10124, 4, 6},         {10120, 6, kNone}, {10119, 0, kNone}};
    expectTranslations(compatSpmId, cases);
}

// Without a P the text after '-' counts; parsing stops after the fourth
// component; a component without digits counts 0.
TEST(VersionParse, ExamplesAndOddForms) {
    const struct {
        const char *text;
        uint32_t level;
    } cases[] = {{"1.01.37.0", 10137},
                 {"1.01.00-P37", 10137},
                 {"1.01.37", 10100},
                 {"1.01-P37", 10037},
                 {"1.01.20-p5", 10105},
                 {"2.0.0.0", 20000},
                 {"", 0},
                 {"1.01.30-7", 10107},
                 {"1.01.37.0.9", 10137},
                 {"x.01.37.0", 137}};
    for (const auto &c : cases) EXPECT_EQ(parseDriverVersion(c.text), c.level) << c.text;
}

}  // namespace
