// Every exported function, called with each of its pointer arguments null in
// turn, in a child process: no call may crash. A call that returns a result
// code must refuse the null pointer with error 10 and send nothing, unless
// the pointer is one the call may skip (it then behaves as with a valid
// pointer) or one it passes on for the driver to check.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "RynHwDll.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::FakeDriver;

// What the library does with a null pointer other than refusing it with
// error 10: skip it (the call then behaves as with a valid pointer), pass it
// on to the driver, which owns the check of those buffers, or refuse it with
// the error number the call has always used.
constexpr int kNotAPointer = -2, kSkipped = -1, kPassedOn = 0;
struct Exception {
    const char *function;
    size_t argument;  // 0-based
    int treatment;    // kNotAPointer, kSkipped, kPassedOn or an error number
};

const std::vector<Exception> kExceptions = {
    // Out-values that a caller may not want.
    {"RynDrvGetDeviceHandle", 3, kSkipped},
    {"RynDrvGetAttributeValue", 4, kSkipped},
    {"RynDrvWaitForMultipleEvents", 4, kSkipped},
    {"RynDspReadData", 4, kSkipped},
    {"RynDspReadData", 5, kSkipped},
    {"RynDspIoControl", 6, kSkipped},
    {"RynHdlcReadData", 3, kSkipped},
    {"RynHdlcReadData", 4, kSkipped},
    {"RynHdlcReadData", 5, kSkipped},
    {"RynHdlcReadData", 6, kSkipped},
    {"RynHdlcReadDataEx", 5, kSkipped},
    {"RynHdlcSS7GetFilter", 1, kSkipped},
    {"RynHdlcSS7GetReceiveStatus", 1, kSkipped},
    {"RynHdlcSS7GetReceiveStatus", 2, kSkipped},
    {"RynHdlcSS7GetReceiveStatus", 3, kSkipped},
    {"RynHdlcSS7GetReceiveStatus", 4, kSkipped},
    {"RynRawDataReadData", 3, kSkipped},
    {"RynRawDataReadData", 4, kSkipped},
    {"RynBurstReadDataEx", 4, kSkipped},
    {"RynBurstReadDataEx", 5, kSkipped},
    {"RynPotsGetLiMode", 1, kSkipped},
    {"RynSlicGetHookState", 1, kSkipped},
    {"RynSlicStartRingState", 1, kSkipped},
    {"RynSlicStopRingState", 1, kSkipped},
    {"RynSlicEnableAudio", 1, kSkipped},
    {"RynSlicSignalDisconnectState", 2, kSkipped},
    {"RynSlicSetUserName", 2, kSkipped},
    {"RynSlicSetPhoneNumber", 2, kSkipped},
    {"RynSlicSendCallerID", 1, kSkipped},
    // Optional inputs: no connection data, no entry name.
    {"RynDrvConnectPipe", 4, kSkipped},
    {"RynDspRunProgram", 2, kSkipped},
    {"RynDspCreateProgramImage", 1, kSkipped},
    {"RynDspCreateProgramImageEx", 1, kSkipped},
    // Buffers that travel by address.
    {"RynDrvResultCode2String", 2, kPassedOn},
    {"RynDrvGetEventDataEx", 1, kPassedOn},
    {"RynHdlcSendData", 1, kPassedOn},
    {"RynHdlcSS7SendData", 1, kPassedOn},
    {"RynHdlcStartRepeatData", 1, kPassedOn},
    {"RynHdlcReadData", 1, kPassedOn},
    {"RynRawDataSendData", 1, kPassedOn},
    {"RynRawDataReadData", 1, kPassedOn},
    // A va_list is a pointer on this platform, but no caller can make a null one.
    {"OsaConsolePrintF", 1, kNotAPointer},
    // Calls whose refusal has its own number.
    {"RynDrvCreateEvent", 0, 13},
    {"RynDspRunProgram", 1, 13},  // a file that cannot be opened
    {"RynDspCreateProgramImage", 0, 13},
    {"RynDspCreateProgramImageEx", 0, 13},
    {"RynBriGetLineStatus", 1, 6},  // nothing of BRI is provided
    {"RynCreateAppEventQueue", 2, 9},
    {"RynGetAppEventData", 1, 9},
    {"RynGetAppEventDataEx", 1, 9},
    {"RynGetAppEventDataEx", 3, 9},
};

int treatment(const std::string &function, size_t argument) {
    for (const Exception &e : kExceptions)
        if (function == e.function && argument == e.argument) return e.treatment;
    return 10;
}

// What a child saw: the call's result and the number of requests it sent.
struct Outcome {
    bool crashed = false;
    uint64_t result = 0;
    uint32_t sent = 0;
};

// Zeroed memory for every pointer that is not the null one, a region of its
// own for each argument: long enough for any record or buffer a call reads,
// and an empty string for text arguments.
constexpr size_t kRegion = 8192;
alignas(16) std::array<unsigned char, 16 * kRegion> scratch{};

uint32_t noRoutine(void *) { return 0; }

template <typename T>
T validArgument(uint32_t handle, size_t index) {
    if constexpr (std::is_same_v<T, FILE *>) {
        return std::tmpfile();
    } else if constexpr (std::is_same_v<T, OsaThreadRoutine>) {
        return noRoutine;
    } else if constexpr (std::is_same_v<T, OsaMutex *>) {
        static OsaMutex mutex;
        OsaMutexInit(&mutex);
        return &mutex;
    } else if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(scratch.data() + index * kRegion);
    } else if constexpr (std::is_floating_point_v<T>) {
        return T(1);
    } else {
        // The first integer is the handle as a rule; counts and values get 1.
        return static_cast<T>(index == 0 ? handle : 1u);
    }
}

template <typename R, typename... A, size_t... I>
Outcome callInChild(FakeDriver &driver, R (*function)(A...), uint32_t handle, size_t nullArgument,
                    std::index_sequence<I...>) {
    int channel[2];
    if (pipe(channel) != 0) return {true};
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        std::freopen("/dev/null", "r", stdin);
        std::freopen("/dev/null", "w", stdout);
        driver.clear();
        Outcome outcome;
        const auto argument = [&](auto tag, size_t index) {
            using T = typename decltype(tag)::type;
            if constexpr (std::is_pointer_v<T>)
                if (index == nullArgument) return T{nullptr};
            return validArgument<T>(handle, index);
        };
        if constexpr (std::is_void_v<R>) {
            function(argument(std::type_identity<A>{}, I)...);
        } else if constexpr (std::is_pointer_v<R>) {
            outcome.result = function(argument(std::type_identity<A>{}, I)...) != nullptr;
        } else {
            outcome.result = static_cast<uint64_t>(function(argument(std::type_identity<A>{}, I)...));
        }
        outcome.sent = static_cast<uint32_t>(driver.requestCount());
        const ssize_t written = write(channel[1], &outcome, sizeof outcome);
        _exit(written == sizeof outcome ? 0 : 1);
    }
    close(channel[1]);
    Outcome outcome;
    const bool complete = read(channel[0], &outcome, sizeof outcome) == sizeof outcome;
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.crashed = !complete || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    return outcome;
}

template <typename R, typename... A>
void checkFunction(FakeDriver &driver, const std::string &name, R (*function)(A...), bool returnsResultCode) {
    constexpr size_t kCount = sizeof...(A);
    constexpr std::array<bool, kCount + 1> isPointer{std::is_pointer_v<A>..., false};
    const auto indices = std::index_sequence_for<A...>{};
    if constexpr (((!std::is_pointer_v<A>) && ...)) return;
    // The handle that the call accepts: the one with which it sends a request
    // (or succeeds) when every pointer is valid.
    uint32_t handle = 0;
    Outcome valid;
    for (const uint32_t candidate : {1u, 0x20000001u, 0x10000001u, 0x40000001u, 0x30000001u, 0xFFFFFFFEu, 0u}) {
        handle = candidate;
        valid = callInChild(driver, function, handle, kCount, indices);
        if (valid.crashed || valid.sent > 0 || (valid.result & 0xFF) != 11) break;
    }
    ASSERT_FALSE(valid.crashed) << name << " with valid pointers";
    for (size_t i = 0; i < kCount; ++i) {
        if (!isPointer[i]) continue;
        const int expected = treatment(name, i);
        if (expected == kNotAPointer) continue;
        SCOPED_TRACE(name + " argument " + std::to_string(i));
        const Outcome null = callInChild(driver, function, handle, i, indices);
        EXPECT_FALSE(null.crashed);
        if (!returnsResultCode || null.crashed || expected == kPassedOn) continue;
        if (expected == kSkipped) {
            EXPECT_EQ(std::tuple(null.result, null.sent), std::tuple(valid.result, valid.sent));
            continue;
        }
        // A check that comes before the pointer's, and fails with valid
        // pointers too, answers first.
        const bool validFailedEarly = valid.sent == 0 && static_cast<int32_t>(valid.result) < 0;
        if (validFailedEarly && null.result == valid.result) continue;
        const auto code = static_cast<ResultCode>(null.result);
        EXPECT_EQ(code & 0x800000FFu, 0x80000000u | uint32_t(expected)) << std::hex << "result 0x" << code;
        // A refused null pointer sends nothing; a failed program load also
        // cleans up after itself.
        if (expected == 10) {
            EXPECT_EQ(null.sent, 0u);
        }
    }
}

// Calls that do not return a result code: for them only "no crash" holds.
const std::set<std::string> kPlainResults = {
    "RynSuccess", "RynFailure", "RynResultSeverity", "RynResultSourceId", "RynResultLineNum", "RynResultErrorCode",
    "RynResultCode", "RynDrvIsIteratorEnd"};

bool isOsa(const std::string &name) { return name.rfind("Osa", 0) == 0; }

TEST(NullPointers, NoCallCrashesAndResultCallsRefuseWithError10) {
    FakeDriver driver;
    ASSERT_EQ(RynDrvConnectLib_0(), 0u);
    // Both entry points of a function: the undecorated one translates what
    // it forwards, and must not read through a null pointer either.
#define RYN_EXPORT_DECORATED(name, n)                                                                         \
    checkFunction(driver, #name, &RYN_DECORATED(name, n), !kPlainResults.contains(#name) && !isOsa(#name));
#define RYN_EXPORT(name, n, undecorated, translation) \
    RYN_EXPORT_DECORATED(name, n)                     \
    checkFunction(driver, #name, &undecorated, !kPlainResults.contains(#name) && !isOsa(#name));
#include "exports/ExportTable.inc"
#undef RYN_EXPORT
#undef RYN_EXPORT_DECORATED
    RynDrvReleaseLib_0();
}

}  // namespace
