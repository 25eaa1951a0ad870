// Threads, mutexes, sleep and local time of the Osa layer: the checks of
// the entry points; the work is the system's (osa/System.h).
#include <ctime>

#include "Osa.h"
#include "osa/System.h"

namespace sys = ryn::osa::sys;

extern "C" {

int32_t RYN_DECORATED(OsaThreadStart, 4)(OsaThreadRoutine routine) {
    return routine != nullptr && sys::startThread(routine, nullptr) ? 1 : 0;
}

int32_t RYN_DECORATED(OsaThreadStartEx, 8)(OsaThreadRoutine routine, void *context) {
    return routine != nullptr && sys::startThread(routine, context) ? 1 : 0;
}

void RYN_DECORATED(OsaThreadSleep, 4)(uint32_t milliseconds) { sys::sleepMs(milliseconds); }

// A null mutex is left alone by every mutex call.
void RYN_DECORATED(OsaMutexInit, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) sys::mutexInit(*mutex);
}

void RYN_DECORATED(OsaMutexLock, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) sys::mutexLock(*mutex);
}

void RYN_DECORATED(OsaMutexUnlock, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) sys::mutexUnlock(*mutex);
}

void RYN_DECORATED(OsaMutexDestroy, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) sys::mutexDestroy(*mutex);
}

struct tm *RYN_DECORATED(OsaStdLocalTime, 4)(const int32_t *time) {
    thread_local struct tm result;
    if (time == nullptr || *time < 0) return nullptr;
    return sys::localTime(static_cast<time_t>(*time), result) ? &result : nullptr;
}

}  // extern "C"
