#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>

#include "Osa.h"

namespace {

// Characters compare as signed values and fold case in ASCII only.
TEST(OsaStrings, ComparisonAndCaseRules) {
    const std::tuple<const char *, const char *, int32_t, int32_t> compared[] = {{"abc", "abd", -1, -1},
                                                                                 {"abc", "ab", 99, 67},
                                                                                 {"", "", 0, 0},
                                                                                 {"\xE4", "a", -28 - 97, -28 - 65},
                                                                                 {"a", "B", 31, -1},
                                                                                 {"Hello", "hELLO", -32, 0},
                                                                                 {"[", "{", -32, '[' - '{'},
                                                                                 {"`", "@", 32, 32}};
    for (const auto &[a, b, exact, folded] : compared) {
        EXPECT_EQ(OsaStrCmp(a, b), exact) << a << " " << b;
        EXPECT_EQ(OsaStrCmpI(a, b), folded) << a << " " << b;
        EXPECT_EQ(OsaStrICmp(a, b), folded) << a << " " << b;
    }
    const std::tuple<int32_t, int32_t, int32_t> cases[] = {{'a', 'A', 'a'}, {'z', 'Z', 'z'}, {'A', 'A', 'a'},
                                                           {'Z', 'Z', 'z'}, {'`', '`', '`'}, {'{', '{', '{'},
                                                           {'@', '@', '@'}, {'[', '[', '['}, {0xE4, 0xE4, 0xE4}};
    for (const auto &[c, upper, lower] : cases) {
        EXPECT_EQ(std::tuple(OsaToUpper(c), OsaStdToUpr(c), OsaToLower(c)), std::tuple(upper, upper, lower)) << c;
    }
    char text[] = "ab\xE4z{", other[] = "mixed Case";
    EXPECT_EQ(OsaStrUpr(text), text);
    EXPECT_STREQ(text, "AB\xE4Z{");
    EXPECT_STREQ(OsaStdStrUpr(other), "MIXED CASE");
}

TEST(OsaStrings, NCopyToIntegerSetAndSearch) {
    // A copy of n characters or more leaves the terminator out; n <= 0 writes nothing.
    const std::tuple<const char *, int32_t, const char *> copies[] = {{"ab", 5, "ab\0XXXXX"}, {"abcdef", 3, "abcXXXXX"},
                                                                      {"abc", 3, "abcXXXXX"}, {"", 2, "\0XXXXXXX"},
                                                                      {"ab", 0, "XXXXXXXX"},  {"ab", -4, "XXXXXXXX"}};
    for (const auto &[source, n, result] : copies) {
        char buffer[9] = "XXXXXXXX";
        OsaStrNCpy(buffer, source, n);
        EXPECT_EQ(std::memcmp(buffer, result, 9), 0) << source << "/" << n;
    }
    // Leading digits only, wrapping modulo 2^32.
    const std::pair<const char *, int32_t> numbers[] = {
        {"123abc", 123}, {"-5", 0}, {" 7", 0}, {"4294967297", 1}, {"2147483648", INT32_MIN}};
    for (const auto &[text, value] : numbers) EXPECT_EQ(OsaStrToI(text), value) << text;

    char text[] = "abc", other[] = "abc";
    EXPECT_STREQ(OsaStrnSet(text, '*', 10), "***");
    EXPECT_STREQ(OsaStrnSet(other, '*', 2), "**c");
    const char *dots = "a.b.c";
    EXPECT_EQ(OsaStrRChr(dots, '.'), dots + 3);
    EXPECT_EQ(OsaStrRChr(dots, '\0'), dots + 5);
    EXPECT_EQ(OsaStrRChr(dots, 'x'), nullptr);
}

TEST(OsaFiles, ReadAndSeekOrigins) {
    char path[] = "/tmp/osa-file-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(write(fd, "0123456789", 10), 10);
    close(fd);
    FILE *file = OsaFileOpen(path, "rb");
    ASSERT_NE(file, nullptr);
    char buffer[12] = {};
    EXPECT_EQ(OsaFileRead(buffer, 2, 2, file), 2u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    // Origins 0, 1 and 2 are start, current position and end; others fail.
    const std::tuple<int32_t, int32_t, int32_t, char> seeks[] = {{1, 3, -1, '4'}, {2, 1, 0, '7'}, {-1, 2, 0, '9'}};
    for (const auto &[offset, origin, result, next] : seeks) {
        EXPECT_EQ(OsaFileSeek(file, offset, origin), result) << origin;
        EXPECT_EQ(OsaFileRead(buffer, 1, 1, file), 1u);
        EXPECT_EQ(buffer[0], next) << origin;
    }
    EXPECT_EQ(OsaFileClose(file), 0);
    EXPECT_EQ(OsaFileOpen("/nonexistent/osa", "rb"), nullptr);
    std::remove(path);
}

// Feeds standard input from a pipe for one test.
class PipedInput : public ::testing::Test {
protected:
    void feed(const std::string &text) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        ASSERT_EQ(write(fds[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(fds[1]);
        saved_ = dup(STDIN_FILENO);
        dup2(fds[0], STDIN_FILENO);
        close(fds[0]);
        clearerr(stdin);
    }
    void TearDown() override {
        OsaConsoleInput("");
        __fpurge(stdin);  // nothing of this test's input stays buffered
        if (saved_ >= 0) {
            dup2(saved_, STDIN_FILENO);
            close(saved_);
        }
        clearerr(stdin);
    }
    int saved_ = -1;
};

// '^' separates the lines of a script but is an ordinary character to
// GetCh; once the script is used up, standard input takes over.
TEST_F(PipedInput, ScriptThenStandardInput) {
    feed("typed\nk");
    OsaConsoleInput("12^^x^\xE9^");
    char line[32];
    EXPECT_STREQ(OsaConsoleGetStr(line), "12");
    EXPECT_STREQ(OsaConsoleGetStr(line), "");
    EXPECT_EQ(OsaConsoleGetCh(), 'x');
    EXPECT_EQ(OsaConsoleGetCh(), '^');
    EXPECT_EQ(OsaConsoleGetCh(), -23);         // 0xE9, sign-widened
    EXPECT_STREQ(OsaConsoleGetStr(line), "");  // the trailing '^' ends an empty line
    EXPECT_STREQ(OsaConsoleGetStr(line), "typed");
    EXPECT_EQ(OsaConsoleGetCh(), 'k');
    EXPECT_EQ(OsaConsoleGetCh(), -1);
    EXPECT_EQ(OsaConsoleGetStr(line), nullptr);
}

// Both forms of PrintF take a prepared argument list.
int32_t printThroughBothForms(const char *format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int32_t written = OsaConsolePrintF(format, arguments) + OsaConsolePrintF_8(format, again);
    va_end(again);
    va_end(arguments);
    return written;
}

TEST(OsaConsole, PrintFTakesAPreparedList) {
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(printThroughBothForms("%d-%s|", 42, "x"), 10);
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
    EXPECT_EQ(OsaThreadStartEx(nullptr, &counter), 0);
    EXPECT_NE(OsaThreadStartEx(countUp, &counter), 0);
    EXPECT_NE(OsaThreadStart(countUp), 0);  // no context
    for (int i = 0; i < 500 && (counter.load() == 0 || nullContexts.load() == 0); ++i) OsaThreadSleep(2);
    EXPECT_EQ(counter.load(), 1);
    EXPECT_EQ(nullContexts.load(), 1);

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
    EXPECT_TRUE(entered.load());
    OsaMutexDestroy(&mutex);
}

TEST(OsaTime, LocalTimeOfNegativeAndEpoch) {
    const int32_t negative = -1, twoDays = 86400 * 2;
    EXPECT_EQ(OsaStdLocalTime(&negative), nullptr);
    EXPECT_EQ(OsaStdLocalTime(nullptr), nullptr);
    const struct tm *local = OsaStdLocalTime(&twoDays);
    ASSERT_NE(local, nullptr);
    EXPECT_EQ(local->tm_year, 70);
    EXPECT_TRUE(local->tm_mday == 2 || local->tm_mday == 3) << local->tm_mday;
}

}  // namespace
