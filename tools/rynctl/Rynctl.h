// rynctl: a command-line view of the library, the driver it reaches and the
// board behind it. Each command lives in the file of its area; this header
// holds what they share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RynHwDll.h"

namespace rynctl {

// Prints "what 0x... (failure, source 0x.., line .., error ..)".
void printResult(const char *what, ResultCode code);
// Reads a text attribute through the decorated entry point, which asks for
// the identifier as given (the undecorated one renumbers identifiers for
// older drivers).
ResultCode readText(DeviceHandle handle, int32_t attribute, char *text, uint32_t size);
std::optional<std::vector<uint8_t>> readFile(const char *path);
// A number in C notation (decimal, 0x hexadecimal), the whole text.
std::optional<uint32_t> parseNumber(const char *text);

// The connection to the driver for one command: connects, and releases when
// it goes. `ok()` is false (and the reason printed) when no driver answers.
class Session {
public:
    Session();
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;
    bool ok() const { return ok_; }

private:
    bool ok_ = false;
};

// A device named on the command line: a driver handle (0x10000004), or
// TYPE:NUMBER with TYPE one of board, t1e1, dsp, hdlc, raw, burst, pots,
// slic, jtag (dsp:1, hdlc:0). Prints why when it names none.
std::optional<DeviceHandle> findDevice(const char *what);
// The device tree's type names, by device type; nullptr for another type.
const char *typeName(int32_t type);
void printEvent(const EventData &record);

int info();
int list(int argc, char **argv);
int attr(int argc, char **argv);
int events(int argc, char **argv);
int load(int argc, char **argv);
int spm(int argc, char **argv);
int record(int argc, char **argv);
int play(int argc, char **argv);
int demo(int argc, char **argv);
int coff(int argc, char **argv);
int image(int argc, char **argv);

}  // namespace rynctl
