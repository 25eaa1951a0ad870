// What the common code of the Osa layer asks of the operating system.
//
// The layer is written once (src/osa/*.cpp) over these primitives, and each
// platform implements them once: src/osa/posix/ for Linux, src/osa/windows/
// for Windows; the build compiles one of the two folders. Only src/osa/
// includes this header; the rest of the library sees Device.h, Events.h,
// Files.h and Handles.h.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "Osa.h"
#include "RynUserDriver.h"

namespace ryn::osa {
class Event;
}  // namespace ryn::osa

namespace ryn::osa::sys {

// ---- Handles ----------------------------------------------------------------

// A handle of the system: a file descriptor, or the value of a HANDLE.
using NativeHandle = intptr_t;
// What the primitives below return when the system gives no handle.
inline constexpr NativeHandle kNoNativeHandle = -1;

// Takes over `native` as the 32-bit handle the layer gives out: never 0, never
// a standard stream, never INVALID_HANDLE_VALUE. Returns INVALID_HANDLE_VALUE,
// with `native` closed, when it cannot be one.
OsaHandle adoptHandle(NativeHandle native);
// Closes the system's handle behind a handle that adoptHandle gave out.
void closeHandle(OsaHandle handle);

// ---- Device connections -----------------------------------------------------

// A fresh handle of the system that stands for a connection to a driver
// inside the process (a registered device or a driver module), so that every
// connection has a handle no other object of the process has.
NativeHandle newConnectionHandle();
// Opens `path` (the four characters \\.\ and the device name) as a device of
// the system itself; false when the system has no such device (on Linux it
// never has: its drivers are reached through driver modules).
bool openSystemDevice(const char *path, NativeHandle &device);
// One request to a device that openSystemDevice opened, given as the
// connection `instance` (its handle); nonzero on success, as a driver
// module's control.
int systemDeviceControl(void *instance, const RynDriverRequest *request, uint32_t *returned);

// The file of the driver module for the device `lowerName` (validated, in
// lower case): ryn-drivers/<name>.so or ryn-drivers\<name>.dll in the folder
// of the loaded library file. Empty when that folder cannot be found.
std::string driverModulePath(std::string_view lowerName);
// Loads the module file at `path`, or null; never throws.
void *loadModule(const std::string &path);
// The address of the module's exported `name`, or null.
void *moduleSymbol(void *module, const char *name);
void unloadModule(void *module);

// ---- Event objects ----------------------------------------------------------

// A new unnamed auto-reset event, initially non-signalled, or kNoNativeHandle.
NativeHandle newEvent();
// Signals a published event.
bool setEvent(Event &event);
// Waits on published events held by the caller, each named once, 1 to 64 of
// them: the result codes of Events.h; kWaitFailed once one is closing.
uint32_t waitForEvents(uint32_t count, Event *const *events, bool waitAll, uint32_t timeoutMs);
// Makes the waits on a closing event return (they then see it closing).
void wakeEvent(Event &event);
// Signals an event through a pointer kept from an earlier lookup, without
// holding it, when that needs no system call: Done (signalled, or signalled
// already), NeedsCall (the caller holds the event and calls setEvent), or
// Stale (the object is no longer that incarnation of the event).
enum class InPlace { Done, NeedsCall, Stale };
InPlace signalInPlace(Event &event, uint32_t incarnation);

// ---- Threads, mutexes, time -------------------------------------------------

// Starts a detached thread with the default stack size that asks for the
// highest normal priority and runs routine(context); false when none starts.
bool startThread(OsaThreadRoutine routine, void *context);
void sleepMs(uint32_t milliseconds);
// The re-entrant mutex of the platform in the caller's storage.
void mutexInit(OsaMutex &mutex);
void mutexLock(OsaMutex &mutex);
void mutexUnlock(OsaMutex &mutex);
void mutexDestroy(OsaMutex &mutex);
// The broken-down local time of `seconds`; false when there is none.
bool localTime(time_t seconds, struct tm &result);

// ---- Console ----------------------------------------------------------------

// One key from a console without echo and without waiting for a newline; one
// character from anything else. -1 at the end of the input.
int32_t readKey();
// A beep of `frequency` Hz lasting `milliseconds`, as the platform can give
// one; returns after the duration in any case.
void beep(uint32_t frequency, uint32_t milliseconds);

}  // namespace ryn::osa::sys
