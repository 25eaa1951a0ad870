// What the tests do differently on each system, done once per system:
// support/posix/ and support/windows/, chosen by the build.
#pragma once

#include <cstdint>
#include <string>

#include "Osa.h"

namespace ryn::test {

// Signals an event object of the library as a driver in the same process
// does, past the library: writes to the eventfd on Linux, SetEvent on
// Windows. True when the system took the signal.
bool signalEventNatively(OsaHandle event);

// Limits the address space (Linux) or the committed memory (Windows) of this
// process to `bytes`, so that a larger allocation fails. For a child process
// of a death test. True when the limit is in force.
bool limitProcessMemory(uint64_t bytes);

// Runs `command` through the system's shell: its standard output, and its
// exit code (-1 when it did not exit normally).
struct CommandResult {
    std::string out;
    int status;
};
CommandResult runCommand(const std::string &command);

}  // namespace ryn::test
