#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "Osa.h"

namespace {

TEST(OsaStrings, SignedComparisonAndCaseFolding) {
    EXPECT_LT(OsaStrCmp("abc", "abd"), 0);
    EXPECT_EQ(OsaStrCmp("abc", "ab"), 99);
    EXPECT_EQ(OsaStrCmp("", ""), 0);
    EXPECT_LT(OsaStrCmp("\xE4", "a"), 0);  // bytes >= 0x80 compare below ASCII
    EXPECT_EQ(OsaStrCmp("\xE4", "a"), -28 - 97);
    EXPECT_EQ(OsaStrCmpI("Hello", "hELLO"), 0);
    EXPECT_EQ(OsaStrCmpI("a", "B"), -1);
    EXPECT_EQ(OsaStrICmp("a", "B"), -1);
    EXPECT_EQ(OsaStrCmpI("[", "{"), '[' - '{');  // braces are not letters
    EXPECT_EQ(OsaToUpper(0xE4), 0xE4);
    EXPECT_EQ(OsaToUpper(123), 123);
    EXPECT_EQ(OsaToUpper('z'), 'Z');
    EXPECT_EQ(OsaStdToUpr('a'), 'A');
    EXPECT_EQ(OsaToLower('Z'), 'z');
    EXPECT_EQ(OsaToLower('@'), '@');
    char text[] = "ab\xE4z{";
    EXPECT_EQ(OsaStrUpr(text), text);
    EXPECT_STREQ(text, "AB\xE4Z{");
    char other[] = "mixed Case";
    EXPECT_STREQ(OsaStdStrUpr(other), "MIXED CASE");
}

TEST(OsaStrings, NCopyTerminatorRules) {
    char buffer[9];
    std::memcpy(buffer, "XXXXXXXX", 9);
    OsaStrNCpy(buffer, "ab", 5);
    EXPECT_EQ(std::memcmp(buffer, "ab\0XXXXX", 9), 0);
    std::memcpy(buffer, "XXXXXXXX", 9);
    OsaStrNCpy(buffer, "abcdef", 3);
    EXPECT_EQ(std::memcmp(buffer, "abcXXXXX", 9), 0);
    std::memcpy(buffer, "XXXXXXXX", 9);
    OsaStrNCpy(buffer, "", 2);
    EXPECT_EQ(std::memcmp(buffer, "\0XXXXXXX", 9), 0);
    std::memcpy(buffer, "XXXXXXXX", 9);
    OsaStrNCpy(buffer, "ab", 0);
    OsaStrNCpy(buffer, "ab", -4);
    EXPECT_EQ(std::memcmp(buffer, "XXXXXXXX", 9), 0);
    OsaStrNCpy(buffer, "abc", 3);  // exactly n characters: no terminator
    EXPECT_EQ(std::memcmp(buffer, "abcXXXXX", 9), 0);
}

TEST(OsaStrings, ToIntegerSetAndSearch) {
    EXPECT_EQ(OsaStrToI("123abc"), 123);
    EXPECT_EQ(OsaStrToI("-5"), 0);
    EXPECT_EQ(OsaStrToI(" 7"), 0);
    EXPECT_EQ(OsaStrToI(""), 0);
    EXPECT_EQ(OsaStrToI("4294967297"), 1);  // wraps modulo 2^32
    EXPECT_EQ(OsaStrToI("2147483648"), INT32_MIN);

    char text[] = "abc";
    EXPECT_STREQ(OsaStrnSet(text, '*', 10), "***");
    char other[] = "abc";
    EXPECT_STREQ(OsaStrnSet(other, '*', 2), "**c");

    const char *dots = "a.b.c";
    EXPECT_EQ(OsaStrRChr(dots, '.'), dots + 3);
    EXPECT_EQ(OsaStrRChr(dots, '\0'), dots + 5);
    EXPECT_EQ(OsaStrRChr("abc", 'x'), nullptr);
    EXPECT_EQ(OsaStrLen("\xE4\xE4"), 2u);
    char copy[8];
    OsaStrCpy(copy, "copy");
    EXPECT_STREQ(copy, "copy");
}

TEST(OsaFiles, ReadAndSeekOrigins) {
    char path[] = "/tmp/osa-file-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "0123456789", 10), 10);
    close(fd);

    FILE *file = OsaFileOpen(path, "rb");
    ASSERT_NE(file, nullptr);
    char buffer[12] = {};
    EXPECT_EQ(OsaFileRead(buffer, 2, 2, file), 2u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    auto next = [file] {
        char c = '?';
        return OsaFileRead(&c, 1, 1, file) == 1 ? c : '?';
    };
    EXPECT_EQ(OsaFileSeek(file, 1, 3), -1);  // unknown origin: position unchanged
    EXPECT_EQ(next(), '4');
    EXPECT_EQ(OsaFileSeek(file, 2, 1), 0);
    EXPECT_EQ(next(), '7');
    EXPECT_EQ(OsaFileSeek(file, -1, 2), 0);
    EXPECT_EQ(next(), '9');
    EXPECT_EQ(OsaFileSeek(file, 0, 0), 0);
    EXPECT_EQ(OsaFileRead(buffer, 4, 3, file), 2u);  // whole items only
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

TEST_F(PipedInput, ScriptThenStandardInput) {
    feed("typed\nk");
    OsaConsoleInput("12^^x");
    char line[32];
    EXPECT_STREQ(OsaConsoleGetStr(line), "12");
    EXPECT_STREQ(OsaConsoleGetStr(line), "");
    EXPECT_EQ(OsaConsoleGetCh(), 'x');
    EXPECT_STREQ(OsaConsoleGetStr(line), "typed");  // script used up: standard input
    EXPECT_EQ(OsaConsoleGetCh(), 'k');
    EXPECT_EQ(OsaConsoleGetCh(), -1);
    EXPECT_EQ(OsaConsoleGetStr(line), nullptr);
}

TEST_F(PipedInput, TrailingSeparatorAndCharactersOfTheScript) {
    feed("rest\n");
    static const char script[] = "1^\xE9^";
    OsaConsoleInput(script);
    char line[32];
    EXPECT_EQ(OsaConsoleGetCh(), '1');
    EXPECT_EQ(OsaConsoleGetCh(), '^');         // a separator is an ordinary character here
    EXPECT_EQ(OsaConsoleGetCh(), -23);         // 0xE9, sign-widened
    EXPECT_STREQ(OsaConsoleGetStr(line), "");  // the trailing '^' ends an empty line
    EXPECT_STREQ(OsaConsoleGetStr(line), "rest");
}

uint32_t countUp(void *context) {
    static_cast<std::atomic<int> *>(context)->fetch_add(1);
    return 0;
}

std::atomic<int> nullContexts{0};

uint32_t countNullContext(void *context) {
    if (context == nullptr) nullContexts.fetch_add(1);
    return 0;
}

int32_t printThroughBothForms(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int32_t written = OsaConsolePrintF(format, arguments);  // the plain form takes the list too
    va_end(arguments);
    va_start(arguments, format);
    written += OsaConsolePrintF_8(format, arguments);
    va_end(arguments);
    return written;
}

TEST(OsaConsole, PrintFTakesAPreparedList) {
    ::testing::internal::CaptureStdout();
    const int32_t written = printThroughBothForms("%d-%s|", 42, "x");
    EXPECT_EQ(OsaConsolePutStr("line"), 0);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "42-x|42-x|line\n");
    EXPECT_EQ(written, 10);
}

TEST(OsaThreads, StartWithContextAndReentrantMutex) {
    std::atomic<int> counter{0};
    EXPECT_NE(OsaThreadStartEx(countUp, &counter), 0);
    EXPECT_EQ(OsaThreadStartEx(nullptr, &counter), 0);
    for (int i = 0; i < 500 && counter.load() == 0; ++i) OsaThreadSleep(2);
    EXPECT_EQ(counter.load(), 1);
    EXPECT_NE(OsaThreadStart(countNullContext), 0);
    for (int i = 0; i < 500 && nullContexts.load() == 0; ++i) OsaThreadSleep(2);
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
    const int32_t negative = -1;
    EXPECT_EQ(OsaStdLocalTime(&negative), nullptr);
    EXPECT_EQ(OsaStdLocalTime(nullptr), nullptr);
    const int32_t day = 86400 * 2;
    const struct tm *local = OsaStdLocalTime(&day);
    ASSERT_NE(local, nullptr);
    EXPECT_EQ(local->tm_year, 70);
    EXPECT_GE(local->tm_mday, 2);
    EXPECT_LE(local->tm_mday, 3);
}

}  // namespace
