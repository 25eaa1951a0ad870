// Threads, mutexes, sleep and local time of the Osa layer.
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <new>

#include "Osa.h"

static_assert(sizeof(pthread_mutex_t) <= sizeof(OsaMutex), "OsaMutex too small for a pthread mutex");
static_assert(alignof(pthread_mutex_t) <= alignof(OsaMutex), "OsaMutex not aligned for a pthread mutex");

namespace {

struct ThreadStart {
    OsaThreadRoutine routine;
    void *context;
};

// The highest normal priority is two steps above normal: a nice value two
// below the process's. Raising it needs privileges; without them the thread
// keeps the normal priority and runs all the same.
void raisePriority() {
    const id_t thread = static_cast<id_t>(syscall(SYS_gettid));
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, thread);
    if (errno == 0) setpriority(PRIO_PROCESS, thread, nice - 2);
}

void *runThread(void *argument) {
    const ThreadStart start = *static_cast<ThreadStart *>(argument);
    delete static_cast<ThreadStart *>(argument);
    raisePriority();
    start.routine(start.context);
    return nullptr;
}

// Creates a detached thread with the default stack size; the thread asks for
// the highest normal priority itself before it runs the routine.
int32_t startThread(OsaThreadRoutine routine, void *context) {
    if (routine == nullptr) return 0;
    auto *start = new (std::nothrow) ThreadStart{routine, context};
    if (start == nullptr) return 0;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        delete start;
        return 0;
    }
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const int created = pthread_create(&thread, &attributes, runThread, start);
    pthread_attr_destroy(&attributes);
    if (created != 0) {
        delete start;
        return 0;
    }
    return 1;
}

pthread_mutex_t *native(OsaMutex *mutex) { return reinterpret_cast<pthread_mutex_t *>(mutex->storage.bytes); }

}  // namespace

extern "C" {

int32_t RYN_DECORATED(OsaThreadStart, 4)(OsaThreadRoutine routine) { return startThread(routine, nullptr); }

int32_t RYN_DECORATED(OsaThreadStartEx, 8)(OsaThreadRoutine routine, void *context) {
    return startThread(routine, context);
}

void RYN_DECORATED(OsaThreadSleep, 4)(uint32_t milliseconds) {
    timespec wait{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000L};
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

// A null mutex is left alone by every mutex call.
void RYN_DECORATED(OsaMutexInit, 4)(OsaMutex *mutex) {
    if (mutex == nullptr) return;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (mutex->storage.bytes) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void RYN_DECORATED(OsaMutexLock, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) pthread_mutex_lock(native(mutex));
}

void RYN_DECORATED(OsaMutexUnlock, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) pthread_mutex_unlock(native(mutex));
}

void RYN_DECORATED(OsaMutexDestroy, 4)(OsaMutex *mutex) {
    if (mutex != nullptr) pthread_mutex_destroy(native(mutex));
}

struct tm *RYN_DECORATED(OsaStdLocalTime, 4)(const int32_t *time) {
    thread_local struct tm result;
    if (time == nullptr || *time < 0) return nullptr;
    const time_t seconds = *time;
    return localtime_r(&seconds, &result);
}

}  // extern "C"
