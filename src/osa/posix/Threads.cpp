// Threads, mutexes, sleep and local time on Linux: detached pthreads,
// recursive pthread mutexes, nanosleep, localtime_r.
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "osa/System.h"

static_assert(sizeof(pthread_mutex_t) <= sizeof(OsaMutex), "OsaMutex too small for a pthread mutex");
static_assert(alignof(pthread_mutex_t) <= alignof(OsaMutex), "OsaMutex not aligned for a pthread mutex");

namespace ryn::osa::sys {
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

pthread_mutex_t *native(OsaMutex &mutex) { return reinterpret_cast<pthread_mutex_t *>(mutex.storage.bytes); }

}  // namespace

// The thread asks for the highest normal priority itself before it runs the
// routine.
bool startThread(OsaThreadRoutine routine, void *context) {
    auto *start = new (std::nothrow) ThreadStart{routine, context};
    if (start == nullptr) return false;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        delete start;
        return false;
    }
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const int created = pthread_create(&thread, &attributes, runThread, start);
    pthread_attr_destroy(&attributes);
    if (created != 0) {
        delete start;
        return false;
    }
    return true;
}

void sleepMs(uint32_t milliseconds) {
    timespec wait{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000L};
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

void mutexInit(OsaMutex &mutex) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (mutex.storage.bytes) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void mutexLock(OsaMutex &mutex) { pthread_mutex_lock(native(mutex)); }

void mutexUnlock(OsaMutex &mutex) { pthread_mutex_unlock(native(mutex)); }

void mutexDestroy(OsaMutex &mutex) { pthread_mutex_destroy(native(mutex)); }

bool localTime(time_t seconds, struct tm &result) { return localtime_r(&seconds, &result) != nullptr; }

}  // namespace ryn::osa::sys
