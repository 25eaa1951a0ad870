// Threads, mutexes, sleep and local time on Windows: CreateThread at the
// highest normal priority, critical sections, Sleep, localtime_s.
#include <ctime>
#include <new>

#include "osa/windows/Native.h"

static_assert(sizeof(CRITICAL_SECTION) <= sizeof(OsaMutex), "OsaMutex too small for a critical section");
static_assert(alignof(CRITICAL_SECTION) <= alignof(OsaMutex), "OsaMutex not aligned for a critical section");

namespace ryn::osa::sys {
namespace {

struct ThreadStart {
    OsaThreadRoutine routine;
    void *context;
};

// The routine's result is the thread's exit code.
DWORD WINAPI runThread(LPVOID argument) {
    const ThreadStart start = *static_cast<ThreadStart *>(argument);
    delete static_cast<ThreadStart *>(argument);
    return start.routine(start.context);
}

CRITICAL_SECTION *native(OsaMutex &mutex) { return reinterpret_cast<CRITICAL_SECTION *>(mutex.storage.bytes); }

}  // namespace

// The thread is created suspended, raised to the highest normal priority and
// let go; its handle is closed at once, as nobody joins it.
bool startThread(OsaThreadRoutine routine, void *context) {
    auto *start = new (std::nothrow) ThreadStart{routine, context};
    if (start == nullptr) return false;
    const HANDLE thread = CreateThread(nullptr, 0, runThread, start, CREATE_SUSPENDED, nullptr);
    if (thread == nullptr) {
        delete start;
        return false;
    }
    SetThreadPriority(thread, THREAD_PRIORITY_HIGHEST);
    ResumeThread(thread);
    CloseHandle(thread);
    return true;
}

void sleepMs(uint32_t milliseconds) { Sleep(milliseconds); }

// A critical section may be entered again by its owner: re-entrant.
void mutexInit(OsaMutex &mutex) { InitializeCriticalSection(new (mutex.storage.bytes) CRITICAL_SECTION); }

void mutexLock(OsaMutex &mutex) { EnterCriticalSection(native(mutex)); }

void mutexUnlock(OsaMutex &mutex) { LeaveCriticalSection(native(mutex)); }

void mutexDestroy(OsaMutex &mutex) { DeleteCriticalSection(native(mutex)); }

bool localTime(time_t seconds, struct tm &result) { return localtime_s(&result, &seconds) == 0; }

}  // namespace ryn::osa::sys
