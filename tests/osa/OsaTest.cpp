#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "Osa.h"
#include "support/TempFile.h"

namespace {

// Characters compare as signed values and fold to upper case in ASCII only.
TEST(OsaStrings, ComparisonAndCaseRules) {
    const std::tuple<const char *, const char *, int32_t, int32_t> compared[] = {
        {"abc", "ab", 99, 67},      {"\xE4", "a", -28 - 97, -28 - 65}, {"a", "B", 31, -1},
        {"Hello", "hELLO", -32, 0}, {"[", "{", -32, '[' - '{'},        {"`", "@", 32, 32}};
    for (const auto &[a, b, exact, folded] : compared) {
        EXPECT_EQ(std::tuple(OsaStrCmp(a, b), OsaStrCmpI(a, b), OsaStrICmp(a, b)), std::tuple(exact, folded, folded))
            << a << " " << b;
    }
    const std::tuple<int32_t, int32_t, int32_t> cases[] = {{'a', 'A', 'a'}, {'z', 'Z', 'z'}, {'A', 'A', 'a'},
                                                           {'Z', 'Z', 'z'}, {'`', '`', '`'}, {'{', '{', '{'},
                                                           {'@', '@', '@'}, {'[', '[', '['}, {0xE4, 0xE4, 0xE4}};
    for (const auto &[c, upper, lower] : cases) {
        EXPECT_EQ(std::tuple(OsaToUpper(c), OsaStdToUpr(c), OsaToLower(c)), std::tuple(upper, upper, lower)) << c;
    }
    char text[] = "ab\xE4z{", other[] = "mixed Case";
    EXPECT_EQ(std::tuple(OsaStrUpr(text), OsaStdStrUpr(other)), std::tuple(text, other));  // in place
    EXPECT_EQ(std::tuple(std::string(text), std::string(other)), std::tuple("AB\xE4Z{", "MIXED CASE"));
}

TEST(OsaStrings, NCopyToIntegerSetAndSearch) {
    // A copy of n characters or more leaves the terminator out; n <= 0 writes nothing.
    const std::tuple<const char *, int32_t, std::string> copies[] = {
        {"ab", 5, {"ab\0XX", 5}}, {"abc", 3, "abcXX"}, {"", 2, {"\0XXXX", 5}}, {"ab", 0, "XXXXX"}, {"ab", -4, "XXXXX"}};
    for (const auto &[source, n, result] : copies) {
        char buffer[6] = "XXXXX";
        OsaStrNCpy(buffer, source, n);
        EXPECT_EQ(std::string(buffer, 5), result) << source << "/" << n;
    }
    // Leading digits only, wrapping modulo 2^32.
    const std::pair<const char *, int32_t> numbers[] = {{"123abc", 123}, {"-5", 0}, {" 7", 0}, {"4294967297", 1}};
    for (const auto &[text, value] : numbers) EXPECT_EQ(OsaStrToI(text), value) << text;
    char text[] = "abc", other[] = "abc";  // set up to n characters, never past the terminator
    EXPECT_EQ(std::tuple(std::string(OsaStrnSet(text, '*', 10)), std::string(OsaStrnSet(other, '*', 2))),
              std::tuple("***", "**c"));
    const char *dots = "a.b.c";
    EXPECT_EQ(std::tuple(OsaStrRChr(dots, '.'), OsaStrRChr(dots, '\0'), OsaStrRChr(dots, 'x')),
              std::tuple(dots + 3, dots + 5, nullptr));
}

TEST(OsaFiles, SeekOrigins) {
    const ryn::test::TempFile digits({'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'});
    FILE *file = OsaFileOpen(digits.path(), "rb");
    ASSERT_NE(file, nullptr);
    // Origins 0, 1 and 2 are start, current position and end; others fail and leave the position.
    const std::tuple<int32_t, int32_t, int32_t, char> seeks[] = {
        {1, -1, -1, '0'}, {1, 3, -1, '1'}, {4, 0, 0, '4'}, {2, 1, 0, '7'}, {-1, 2, 0, '9'}};
    for (const auto &[offset, origin, result, next] : seeks) {
        char read = 0;
        EXPECT_EQ((std::tuple{OsaFileSeek(file, offset, origin), OsaFileRead(&read, 1, 1, file), read}),
                  std::tuple(result, 1u, next))
            << origin;
    }
    EXPECT_EQ(OsaFileClose(file), 0);
}

// '^' separates the lines of a script but is an ordinary character to
// GetCh; once the script is used up, standard input (here a file) takes over.
TEST(OsaConsole, ScriptThenStandardInput) {
    const ryn::test::TempFile typed({'t', 'y', 'p', 'e', 'd', '\n', 'k'});
    const int saved = dup(STDIN_FILENO);
    ASSERT_NE(std::freopen(typed.path(), "r", stdin), nullptr);
    OsaConsoleInput("12^^x^\xE9^");
    char line[32];
    // Calls in order, 's' a line and 'c' a character (as its number): the
    // trailing '^' ends an empty line, 0xE9 is sign-widened.
    std::vector<std::string> got;
    for (const char call : std::string("sscccssccs")) {
        if (call == 'c') {
            got.push_back(std::to_string(OsaConsoleGetCh()));
        } else {
            const char *text = OsaConsoleGetStr(line);
            got.push_back(text != nullptr ? text : "null");
        }
    }
    EXPECT_EQ(got, (std::vector<std::string>{"12", "", "120", "94", "-23", "", "typed", "107", "-1", "null"}));
    dup2(saved, STDIN_FILENO);
    close(saved);
    clearerr(stdin);
}

// Both forms of PrintF take a prepared argument list.
TEST(OsaConsole, PrintFTakesAPreparedList) {
    // `form` is either entry point, whatever its calling convention.
    const auto print = [](auto form, const char *format, ...) {
        va_list arguments;
        va_start(arguments, format);
        const int32_t written = form(format, arguments);
        va_end(arguments);
        return written;
    };
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(print(OsaConsolePrintF, "%d-%s|", 42, "x") + print(OsaConsolePrintF_8, "%d-%s|", 42, "x"), 10);
    EXPECT_EQ(OsaConsolePutStr("line"), 0);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "42-x|42-x|line\n");
}

// Counts through its context, or through nullContexts when it has none.
std::atomic<int> nullContexts{0};
uint32_t countUp(void *context) {
    (context != nullptr ? *static_cast<std::atomic<int> *>(context) : nullContexts).fetch_add(1);
    return 0;
}

TEST(OsaThreads, StartWithContextAndReentrantMutex) {
    std::atomic<int> counter{0};
    nullContexts = 0;  // the thread of an earlier run has already counted
    EXPECT_EQ(std::tuple(OsaThreadStartEx(nullptr, &counter), OsaThreadStartEx(countUp, &counter) != 0,
                         OsaThreadStart(countUp) != 0),
              std::tuple(0, true, true));
    for (int i = 0; i < 500 && (counter.load() == 0 || nullContexts.load() == 0); ++i) OsaThreadSleep(2);
    EXPECT_EQ(std::tuple(counter.load(), nullContexts.load()), std::tuple(1, 1));

    OsaMutex mutex;
    OsaMutexInit(&mutex);
    OsaMutexLock(&mutex);
    OsaMutexLock(&mutex);  // the owner enters again
    std::atomic<bool> entered{false};
    std::thread other([&] {
        OsaMutexLock(&mutex);
        entered = true;
        OsaMutexUnlock(&mutex);
    });
    OsaMutexUnlock(&mutex);
    OsaThreadSleep(20);
    EXPECT_FALSE(entered.load());  // still held once
    OsaMutexUnlock(&mutex);
    other.join();
    OsaMutexDestroy(&mutex);
}

TEST(OsaTime, LocalTimeOfNegativeAndEpoch) {
    const int32_t negative = -1, twoDays = 86400 * 2;
    EXPECT_EQ(std::tuple(OsaStdLocalTime(&negative), OsaStdLocalTime(nullptr)), std::tuple(nullptr, nullptr));
    const struct tm *local = OsaStdLocalTime(&twoDays);
    ASSERT_NE(local, nullptr);
    EXPECT_TRUE(local->tm_year == 70 && (local->tm_mday == 2 || local->tm_mday == 3)) << local->tm_mday;
}

}  // namespace
