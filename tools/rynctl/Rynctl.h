// rynctl: a command-line view of the library, the driver it reaches and the
// board behind it. Each command lives in the file of its area; this header
// holds what they share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace rynctl {

// Exit codes of every command.
inline constexpr int kExitDone = 0;     // done
inline constexpr int kExitRefused = 1;  // the board or driver refused, a file failed, or nothing was detected
inline constexpr int kExitUsage = 2;    // the command line is wrong

// What a result code means, on one line: "failure, source 0x6A device core
// and application event queues, line 120, error 11: invalid handle".
std::string describeResult(ResultCode code);
// Prints "what 0x... (the code's meaning)" on standard output.
void printResult(const char *what, ResultCode code);
// Reads a text attribute through the decorated entry point, which asks for
// the identifier as given (the undecorated one renumbers identifiers for
// older drivers).
ResultCode readText(DeviceHandle handle, int32_t attribute, char *text, uint32_t size);
std::optional<std::vector<uint8_t>> readFile(const char *path);
// A number from 0 to 0xFFFFFFFF in decimal or 0x hexadecimal, the whole text.
std::optional<uint32_t> parseNumber(const char *text);
// parseNumber, or a negative decimal from -2147483648 as its 32-bit two's
// complement (-1 is 0xFFFFFFFF).
std::optional<uint32_t> parseWord(const char *text);

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
// slic, jtag (dsp:1, hdlc:0). Prints why when the board has no such device.
std::optional<DeviceHandle> findDevice(const char *what);
// The device tree's type names, by device type; nullptr for another type.
const char *typeName(int32_t type);
void printEvent(const EventData &record);

// ---- The command line ------------------------------------------------------

// A command: its part of the parser, and what it does once the whole command
// line has been read and checked; returns the exit code.
struct Command {
    CLI::App *app;
    std::function<int()> run;
};

// Adds a NUMBER argument or option stored in `value`: decimal or 0x
// hexadecimal from `low` to `high`, refused with the range otherwise.
CLI::Option *addNumber(CLI::App &app, const std::string &name, uint32_t &value, const std::string &description,
                       uint32_t low = 0, uint32_t high = 0xFFFFFFFFu);
// Adds a DEVICE argument: checks that it names a device (TYPE:NUMBER or a
// handle) before anything connects; the board is asked when the command runs.
CLI::Option *addDevice(CLI::App &app, std::string &value, const std::string &description);
// The name nearest to `given` among `names` (case and one transposition
// counted as one edit), or "" when none is near enough to be a slip.
std::string nearest(const std::string &given, const std::vector<std::string> &names);

Command demoCommand(CLI::App &rynctl);
Command infoCommand(CLI::App &rynctl);
Command listCommand(CLI::App &rynctl);
Command attrCommand(CLI::App &rynctl);
Command eventsCommand(CLI::App &rynctl);
Command loadCommand(CLI::App &rynctl);
Command recordCommand(CLI::App &rynctl);
Command playCommand(CLI::App &rynctl);
Command spmCommand(CLI::App &rynctl);
Command coffCommand(CLI::App &rynctl);
Command imageCommand(CLI::App &rynctl);
Command resultCommand(CLI::App &rynctl);

// The library's version text as the loaded library reports it ("2.12.1.0").
std::string libraryVersion();

}  // namespace rynctl
