// The board as the driver shows it: the library and driver versions, the
// device tree, attributes, event records, program loading and the built-in
// modules.
#include <CLI/CLI.hpp>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Rynctl.h"

namespace rynctl {

// Attribute reads go through the decorated entry point, which asks for the
// identifier as given: the undecorated one renumbers identifiers for older
// drivers, which would miss the library's own attributes and the driver's
// version text.
ResultCode readText(DeviceHandle handle, int32_t attribute, char *text, uint32_t size) {
    return RynDrvGetAttributeValueSz_16(handle, attribute, text, size);
}

// Decimal, or hexadecimal after 0x; a leading 0 is no octal prefix, so that
// "010" is ten as a user reading it expects.
std::optional<uint32_t> parseNumber(const char *text) {
    const bool hex = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char *digits = hex ? text + 2 : text;
    const unsigned char first = static_cast<unsigned char>(*digits);
    if (hex ? !std::isxdigit(first) : !std::isdigit(first)) return std::nullopt;
    char *end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(digits, &end, hex ? 16 : 10);
    if (*end != '\0' || errno != 0 || value > 0xFFFFFFFFull) return std::nullopt;
    return static_cast<uint32_t>(value);
}

std::optional<uint32_t> parseWord(const char *text) {
    if (text[0] != '-') return parseNumber(text);
    // Negative numbers are decimal only: "-0x1" is more likely a slip than a code.
    const bool hex = text[1] == '0' && (text[2] == 'x' || text[2] == 'X');
    const auto magnitude = hex ? std::nullopt : parseNumber(text + 1);
    if (!magnitude || *magnitude > 0x80000000u) return std::nullopt;
    return 0u - *magnitude;
}

Session::Session() {
    const ResultCode connected = RynDrvConnectLib();
    OsaHandle handle = INVALID_HANDLE_VALUE;
    ok_ = RynDrvGetHandle(&handle) == 0;
    if (!ok_) {
        std::fprintf(stderr, "rynctl: no driver answers to \"RYNDRV\" (no board, and no driver module in ryn-drivers/)\n");
    } else if (RynFailure(connected)) {
        printResult("connect", connected);
    }
}

Session::~Session() {
    if (ok_) RynDrvReleaseLib();
}

namespace {

struct TypeName {
    int32_t type;
    const char *name;
};
constexpr TypeName kTypeNames[] = {
    {RYN_VB_DEVICE_BOARD, "board"}, {RYN_VB_DEVICE_T1E1, "t1e1"},  {RYN_VB_DEVICE_DSP, "dsp"},
    {RYN_VB_DEVICE_HDLC, "hdlc"},   {RYN_VB_DEVICE_RAW_DATA, "raw"}, {RYN_VB_DEVICE_BURST, "burst"},
    {RYN_VB_DEVICE_POTS, "pots"},   {RYN_VB_DEVICE_SLIC, "slic"},  {RYN_VB_DEVICE_JTAG, "jtag"}};

}  // namespace

const char *typeName(int32_t type) {
    for (const TypeName &t : kTypeNames)
        if (t.type == type) return t.name;
    return nullptr;
}

std::optional<DeviceHandle> findDevice(const char *what) {
    if (auto handle = parseNumber(what)) return *handle;
    const char *colon = std::strchr(what, ':');
    const auto number = colon != nullptr ? parseNumber(colon + 1) : std::nullopt;
    for (const TypeName &t : kTypeNames) {
        if (colon == nullptr || !number || std::strncmp(what, t.name, static_cast<size_t>(colon - what)) != 0 ||
            std::strlen(t.name) != static_cast<size_t>(colon - what))
            continue;
        DeviceHandle handle = 0;
        const ResultCode result = RynDrvGetDeviceHandle_16(0, t.type, *number, &handle);
        if (RynSuccess(result)) return handle;
        std::fprintf(stderr, "rynctl: the board has no device \"%s\" (%s)\n", what, describeResult(result).c_str());
        return std::nullopt;
    }
    std::fprintf(stderr, "rynctl: \"%s\" names no device (TYPE:NUMBER with TYPE board, t1e1, dsp, hdlc, raw, burst, "
                         "pots, slic or jtag, or a driver handle)\n", what);
    return std::nullopt;
}

// Reads the library's own attributes, which need no driver.
std::string libraryVersion() {
    char version[16] = {};
    readText(RYN_LIBRARY_PSEUDO_HANDLE, 9, version, sizeof version);
    return version;
}

Command infoCommand(CLI::App &rynctl) {
    CLI::App *app = rynctl.add_subcommand("info", "library and driver versions");
    app->footer("Prints the library's own version attributes, whether the driver device \"RYNDRV\" opens, the\n"
                "driver's answer to the library's version announcement and the driver's version string.");
    return {app, [] {
                char module[16] = {};
                readText(RYN_LIBRARY_PSEUDO_HANDLE, 11, module, sizeof module);
                std::printf("%-22s %s %s\n", "library", module, libraryVersion().c_str());
                const ResultCode connected = RynDrvConnectLib();
                OsaHandle handle = INVALID_HANDLE_VALUE;
                if (RynDrvGetHandle(&handle) != 0) {
                    std::printf("%-22s not opened (no driver answers to \"RYNDRV\")\n", "driver device");
                    printResult("connect", connected);
                    return kExitRefused;
                }
                std::printf("%-22s opened (handle %u)\n", "driver device", handle);
                printResult("version announcement", connected);
                char driverVersion[80] = {};
                const ResultCode read = readText(RYN_DRIVER_PSEUDO_HANDLE, RYN_VB_ATTR_DRIVER_VERSION, driverVersion, sizeof driverVersion);
                if (RynSuccess(read)) {
                    std::printf("%-22s %.79s\n", "driver version", driverVersion);
                } else {
                    printResult("driver version", read);
                }
                RynDrvReleaseLib();
                return kExitDone;
            }};
}

// ---- Device tree and attributes --------------------------------------------

namespace {

uint32_t readWord(DeviceHandle handle, int32_t attribute) {
    uint32_t value = 0;
    return RynSuccess(RynDrvGetAttributeValueUint32_12(handle, attribute, &value)) ? value : 0xFFFFFFFFu;
}

int list() {
    Session session;
    if (!session.ok()) return kExitRefused;
    char version[80] = {};
    readText(RYN_DRIVER_PSEUDO_HANDLE, RYN_VB_ATTR_DRIVER_VERSION, version, sizeof version);
    std::printf("driver %s\n", version);
    int32_t types = 0;
    for (RynDrvIteratorBegin(&types); RynDrvIsIteratorEnd(&types);) {
        int32_t type = 0;
        const ResultCode result = RynDrvEnumDeviceType_12(0, &types, &type);
        if (RynFailure(result)) {
            printResult("device types", result);
            return kExitRefused;
        }
        int32_t devices = 0;
        for (RynDrvIteratorBegin(&devices); RynDrvIsIteratorEnd(&devices);) {
            uint32_t id = 0;
            DeviceHandle handle = 0;
            if (RynFailure(RynDrvEnumDevice_16(0, type, &devices, &id)) ||
                RynFailure(RynDrvGetDeviceHandle_16(0, type, id, &handle)))
                break;
            char name[64] = {};
            readText(handle, 3, name, sizeof name);
            const char *kind = typeName(type);
            const std::string what = kind != nullptr ? std::string(kind) + ":" + std::to_string(id) : "-";
            std::printf("0x%08X  %-8s  type %-3d  %-22s  state %u\n", handle, what.c_str(), type, name,
                        readWord(handle, 4));
        }
    }
    return kExitDone;
}

// Prints one attribute; false when the driver does not have it.
bool printAttribute(DeviceHandle handle, int32_t id, bool reportMissing) {
    uint32_t type = 0, size = 0, flags = 0;
    const ResultCode described = RynDrvGetAttributeType_20(handle, id, &type, &size, &flags);
    if (RynFailure(described)) {
        if (reportMissing) printResult("attribute", described);
        return false;
    }
    std::vector<uint8_t> value(size < 4 ? 4 : size + 1);
    uint32_t length = 0;
    const ResultCode read =
        RynDrvGetAttributeValue_20(handle, id, value.data(), static_cast<uint32_t>(value.size()), &length);
    std::printf("%3d  %-9s ", id, (flags & 2) != 0 ? "settable" : "read-only");
    if (RynFailure(read)) {
        printResult("", read);
        return true;
    }
    if (type == 0) {
        value.back() = 0;
        std::printf("\"%s\"\n", reinterpret_cast<const char *>(value.data()));
    } else if (type == 1 || type == 2) {
        uint32_t word = 0;
        std::memcpy(&word, value.data(), 4);
        std::printf("%u (0x%X)\n", word, word);
    } else {
        for (uint32_t i = 0; i < length && i < value.size(); ++i) std::printf("%02X", value[i]);
        std::printf(" (%u bytes)\n", length);
    }
    return true;
}

// Whether a VALUE reads as a number, whatever its size: such a value out of
// the 32-bit range is a slip, not text.
bool looksNumeric(const std::string &text) {
    const size_t start = text.rfind("-", 0) == 0 ? 1 : 0;
    const bool hex = text.compare(start, 2, "0x") == 0 || text.compare(start, 2, "0X") == 0;
    const size_t first = start + (hex ? 2 : 0);
    if (first >= text.size()) return false;
    for (size_t i = first; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (hex ? !std::isxdigit(c) : !std::isdigit(c)) return false;
    }
    return true;
}

}  // namespace

Command listCommand(CLI::App &rynctl) {
    CLI::App *app = rynctl.add_subcommand("list", "the board's device tree");
    app->footer("Connects to the driver and prints its device tree: every device type and device the driver\n"
                "enumerates, with the device's handle, its name for the other commands (TYPE:NUMBER), the\n"
                "driver's name for it and its state.");
    return {app, list};
}

Command attrCommand(CLI::App &rynctl) {
    struct Options {
        std::string device, value;
        uint32_t id = 0;
        bool text = false;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("attr", "read or set attributes");
    app->footer(
        "Reads a device's attributes: all of them (identifiers 1 to 99 the driver knows), or attribute ID;\n"
        "with VALUE, sets attribute ID and reads it back. A VALUE that is a number - decimal, 0x\n"
        "hexadecimal, or negative decimal from -2147483648 (-1 is 0xFFFFFFFF) - is set as a 32-bit value;\n"
        "any other VALUE is set as text, and --text sets even a number as text. DEVICE is TYPE:NUMBER\n"
        "(dsp:0, hdlc:1), a driver handle, or 0 for the driver itself.");
    addDevice(*app, o->device, "the device (0: the driver)");
    CLI::Option *id = addNumber(*app, "ID", o->id, "the attribute's identifier")->type_name("ID");
    CLI::Option *value = app->add_option("VALUE", o->value, "the value to set")->type_name("VALUE")->needs(id);
    app->add_flag("--text", o->text, "set VALUE as text even when it reads as a number")->needs(value);
    return {app, [o, id, value] {
                std::optional<uint32_t> number;
                if (value->count() != 0 && !o->text) {
                    number = parseWord(o->value.c_str());
                    if (!number && looksNumeric(o->value)) {
                        std::fprintf(stderr,
                                     "rynctl attr: VALUE: \"%s\" is out of the 32-bit range (-2147483648 to "
                                     "4294967295); give --text to set it as text\n",
                                     o->value.c_str());
                        return kExitUsage;
                    }
                }
                Session session;
                if (!session.ok()) return kExitRefused;
                const auto device = findDevice(o->device.c_str());
                if (!device) return kExitRefused;
                if (id->count() == 0) {
                    for (int32_t i = 1; i < 100; ++i) printAttribute(*device, i, false);
                    return kExitDone;
                }
                const int32_t attribute = static_cast<int32_t>(o->id);
                if (value->count() != 0) {
                    const ResultCode set = number ? RynDrvSetAttributeValueUint32_12(*device, attribute, *number)
                                                  : RynDrvSetAttributeValueSz_12(*device, attribute, o->value.c_str());
                    if (RynFailure(set)) {
                        printResult("set attribute", set);
                        return kExitRefused;
                    }
                }
                return printAttribute(*device, attribute, true) ? kExitDone : kExitRefused;
            }};
}

// ---- Events ------------------------------------------------------------------

// One event record on one line.
void printEvent(const EventData &record) {
    char text[256] = {};
    if (RynFailure(RynDrvEventCode2String_16(0, record.word[3], 0, text))) std::snprintf(text, sizeof text, "?");
    // Board time counts 100 ns from 1601; shown as UTC time of day.
    const uint64_t time = (uint64_t{record.word[1]} << 32) | record.word[0];
    const uint64_t ms = time / 10000ull % 86400000ull;
    std::printf("%02u:%02u:%02u.%03u  type %-3d  0x%04X %-28s  device 0x%08X  %u %u %u\n",
                static_cast<unsigned>(ms / 3600000), static_cast<unsigned>(ms / 60000 % 60),
                static_cast<unsigned>(ms / 1000 % 60), static_cast<unsigned>(ms % 1000),
                static_cast<int32_t>(record.word[2]), record.word[3], text, record.word[4], record.word[5],
                record.word[6], record.word[7]);
}

Command eventsCommand(CLI::App &rynctl) {
    struct Options {
        std::string device;
        uint32_t count = 0, timeout = 1000;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("events", "print event records as they come");
    app->footer("Creates a driver event queue for DEVICE (0 for every device), enables the device, then waits\n"
                "on the queue's event object and prints each event record as it comes: board time, device\n"
                "type, event code with the driver's text for it, the device's handle and the three values.\n"
                "Stops after N records (default: no limit) or when none came for MS milliseconds (default\n"
                "1000).");
    addDevice(*app, o->device, "the device (0: every device)");
    addNumber(*app, "--count", o->count, "stop after N records (0, the default: no limit)");
    addNumber(*app, "--timeout", o->timeout, "stop when no record came for MS milliseconds (default 1000)")
        ->type_name("MS");
    return {app, [o] {
                Session session;
                if (!session.ok()) return kExitRefused;
                const auto device = findDevice(o->device.c_str());
                if (!device) return kExitRefused;
                OsaHandle event = 0;
                DeviceHandle queue = 0;
                RynDrvCreateEvent(&event);
                const ResultCode created = RynDrvCreateEventQueue(*device, event, &queue);
                if (RynFailure(created)) {
                    printResult("event queue", created);
                    RynDrvCloseEvent(event);
                    return kExitRefused;
                }
                if (*device != 0) RynDrvEnable(*device, 0, 0);
                uint32_t seen = 0;
                EventData record{};
                while (o->count == 0 || seen < o->count) {
                    if (RynDrvGetEventData(queue, &record) == 0) {
                        printEvent(record);
                        std::fflush(stdout);
                        ++seen;
                    } else if (RynDrvWaitForSingleEvent(event, o->timeout) != 0) {
                        break;
                    }
                }
                RynDrvClose(queue);
                RynDrvCloseEvent(event);
                std::printf("%u event record%s\n", seen, seen == 1 ? "" : "s");
                return kExitDone;
            }};
}

// ---- Program loading -------------------------------------------------------

Command loadCommand(CLI::App &rynctl) {
    struct Options {
        std::string device, path, entry;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("load", "load and start a DSP program file");
    app->footer("Loads a DSP program file (TI COFF) into the DSP DEVICE (dsp:0, dsp:1 or a driver handle) and\n"
                "starts it at its entry address, or at symbol or hexadecimal address NAME. Prints the result\n"
                "and what the DSP reports running.");
    addDevice(*app, o->device, "the DSP");
    app->add_option("FILE", o->path, "the program file")->required();
    app->add_option("--entry", o->entry, "start at this symbol or hexadecimal address")->type_name("NAME");
    return {app, [o] {
                Session session;
                if (!session.ok()) return kExitRefused;
                const auto device = findDevice(o->device.c_str());
                if (!device) return kExitRefused;
                const ResultCode result =
                    RynDspRunProgram(*device, o->path.c_str(), o->entry.empty() ? nullptr : o->entry.c_str());
                printResult("load and start", result);
                if (RynFailure(result)) return kExitRefused;
                // The DSP's program attributes.
                for (int32_t id = RYN_VB_ATTR_DSP_TYPE; id <= RYN_VB_ATTR_DSP_MODULE_FLAG; ++id) printAttribute(*device, id, false);
                return kExitDone;
            }};
}

// ---- Built-in modules ----------------------------------------------------------

namespace {

struct SpmRow {
    uint32_t module, dspType;
    const char *form;
    uint32_t length, entry;
    const char *text;
};

constexpr SpmRow kSpmRows[] = {
#define RYN_SPM_MODULE(module, type, form, length, entry, text) {module, type, #form, length, entry, text},
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE
};

std::string printable(const char *text) {
    std::string out;
    for (; *text != '\0'; ++text) out += *text == '\n' ? std::string("\\n") : std::string(1, *text);
    return out;
}

int spmList() {
    std::printf("module  DSP type  image                 length  entry     text\n");
    for (const SpmRow &row : kSpmRows) {
        const char *kind = std::strcmp(row.form, "CommandStream") == 0 ? "command stream"
                           : std::strcmp(row.form, "Records1") == 0    ? "word records (v1)"
                                                                       : "byte records (v2)";
        std::printf("%6u  %8u  %-20s %7u  0x%05X   %s\n", row.module, row.dspType, kind, row.length, row.entry,
                    printable(row.text).c_str());
    }
    return kExitDone;
}

}  // namespace

Command spmCommand(CLI::App &rynctl) {
    struct Options {
        std::string device;
        uint32_t module = 0;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("spm", "the built-in DSP modules: list, or run one");
    app->require_subcommand(1);
    CLI::App *list = app->add_subcommand("list", "print the built-in modules");
    list->footer("Prints the built-in signal-processing modules: identifier, DSP type, kind of image, length\n"
                 "in words, entry address and the text the image carries. Needs no driver.");
    CLI::App *run = app->add_subcommand("run", "run a built-in module on a DSP");
    run->footer("Connects to the driver and runs module MODULE on the DSP DEVICE (dsp:0, or a driver handle\n"
                "such as 0x10000004), choosing the image by the DSP type the driver reports.");
    app->footer(list->get_footer() + "\n" + run->get_footer());
    addDevice(*run, o->device, "the DSP");
    addNumber(*run, "MODULE", o->module, "the module's identifier (see spm list)")->required()->type_name("MODULE");
    return {app, [o, list] {
                if (list->parsed()) return spmList();
                Session session;
                if (!session.ok()) return kExitRefused;
                const auto device = findDevice(o->device.c_str());
                if (!device) return kExitRefused;
                const ResultCode result = RynDspRunSpm(*device, o->module);
                printResult("run module", result);
                return RynFailure(result) ? kExitRefused : kExitDone;
            }};
}

}  // namespace rynctl
