// The board as the driver shows it: the library and driver versions, the
// device tree, attributes, event records, program loading and the built-in
// modules.
#include <cstdlib>
#include <cstring>

#include "Rynctl.h"

namespace rynctl {

void printResult(const char *what, ResultCode code) {
    uint32_t error = 0, severity = 0, source = 0, line = 0;
    RynResultCode(code, &error, &severity, &source, &line);
    std::printf("%-22s 0x%08X (%s, source 0x%02X, line %u, error %u)\n", what, code,
                RynFailure(code) ? "failure" : "success", source, line, error & 0xFFu);
}

// Attribute reads go through the decorated entry point, which asks for the
// identifier as given: the undecorated one renumbers identifiers for older
// drivers, which would miss the library's own attributes and the driver's
// version text.
ResultCode readText(DeviceHandle handle, int32_t attribute, char *text, uint32_t size) {
    return RynDrvGetAttributeValueSz_16(handle, attribute, text, size);
}

std::optional<uint32_t> parseNumber(const char *text) {
    char *end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text, &end, 0);
    if (*text == '\0' || *text == '-' || *end != '\0' || errno != 0 || value > 0xFFFFFFFFull) return std::nullopt;
    return static_cast<uint32_t>(value);
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
constexpr TypeName kTypeNames[] = {{1, "board"}, {2, "t1e1"}, {3, "dsp"},  {4, "hdlc"}, {5, "raw"},
                                   {6, "burst"}, {7, "pots"}, {8, "slic"}, {9, "jtag"}};

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
        std::fprintf(stderr, "rynctl: the board has no device \"%s\"\n", what);
        return std::nullopt;
    }
    std::fprintf(stderr, "rynctl: \"%s\" names no device (TYPE:NUMBER with TYPE board, t1e1, dsp, hdlc, raw, burst, "
                         "pots, slic or jtag, or a driver handle)\n", what);
    return std::nullopt;
}

int info() {
    char version[16] = {};
    readText(RYN_LIBRARY_PSEUDO_HANDLE, 9, version, sizeof version);
    char module[16] = {};
    readText(RYN_LIBRARY_PSEUDO_HANDLE, 11, module, sizeof module);
    std::printf("%-22s %s %s\n", "library", module, version);
    const ResultCode connected = RynDrvConnectLib();
    OsaHandle handle = INVALID_HANDLE_VALUE;
    if (RynDrvGetHandle(&handle) != 0) {
        std::printf("%-22s not opened (no driver answers to \"RYNDRV\")\n", "driver device");
        printResult("connect", connected);
        return 1;
    }
    std::printf("%-22s opened (handle %u)\n", "driver device", handle);
    printResult("version announcement", connected);
    char driverVersion[80] = {};
    const ResultCode read = readText(RYN_DRIVER_PSEUDO_HANDLE, 13, driverVersion, sizeof driverVersion);
    if (RynSuccess(read)) {
        std::printf("%-22s %.79s\n", "driver version", driverVersion);
    } else {
        printResult("driver version", read);
    }
    RynDrvReleaseLib();
    return 0;
}

// ---- Device tree and attributes --------------------------------------------

namespace {

int listUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl list\n"
                 "Connects to the driver and prints its device tree: every device type and device the driver\n"
                 "enumerates, with the device's handle, its name for the other commands (TYPE:NUMBER), the\n"
                 "driver's name for it and its state.\n");
    return to == stdout ? 0 : 2;
}

uint32_t readWord(DeviceHandle handle, int32_t attribute) {
    uint32_t value = 0;
    return RynSuccess(RynDrvGetAttributeValueUint32_12(handle, attribute, &value)) ? value : 0xFFFFFFFFu;
}

}  // namespace

int list(int argc, char **argv) {
    if (argc != 0) return listUsage(argc == 1 && std::strcmp(argv[0], "--help") == 0 ? stdout : stderr);
    Session session;
    if (!session.ok()) return 1;
    char version[80] = {};
    readText(RYN_DRIVER_PSEUDO_HANDLE, 13, version, sizeof version);
    std::printf("driver %s\n", version);
    int32_t types = 0;
    for (RynDrvIteratorBegin(&types); RynDrvIsIteratorEnd(&types);) {
        int32_t type = 0;
        const ResultCode result = RynDrvEnumDeviceType_12(0, &types, &type);
        if (RynFailure(result)) {
            printResult("device types", result);
            return 1;
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
    return 0;
}

namespace {

int attrUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl attr DEVICE\n"
                 "       rynctl attr DEVICE ID\n"
                 "       rynctl attr DEVICE ID VALUE\n"
                 "Reads a device's attributes: all of them (identifiers 1 to 99 the driver knows), or attribute\n"
                 "ID; with VALUE, sets attribute ID (a number is set as a 32-bit value, other text as text).\n"
                 "DEVICE is TYPE:NUMBER (dsp:0, hdlc:1), a driver handle, or 0 for the driver itself.\n");
    return to == stdout ? 0 : 2;
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

}  // namespace

int attr(int argc, char **argv) {
    if (argc == 1 && std::strcmp(argv[0], "--help") == 0) return attrUsage(stdout);
    if (argc < 1 || argc > 3) return attrUsage(stderr);
    const auto id = argc >= 2 ? parseNumber(argv[1]) : std::optional<uint32_t>(0);
    if (!id) return attrUsage(stderr);
    Session session;
    if (!session.ok()) return 1;
    const auto device = findDevice(argv[0]);
    if (!device) return 1;
    if (argc == 1) {
        for (int32_t i = 1; i < 100; ++i) printAttribute(*device, i, false);
        return 0;
    }
    if (argc == 3) {
        const auto number = parseNumber(argv[2]);
        const ResultCode set = number ? RynDrvSetAttributeValueUint32_12(*device, static_cast<int32_t>(*id), *number)
                                      : RynDrvSetAttributeValueSz_12(*device, static_cast<int32_t>(*id), argv[2]);
        if (RynFailure(set)) {
            printResult("set attribute", set);
            return 1;
        }
    }
    return printAttribute(*device, static_cast<int32_t>(*id), true) ? 0 : 1;
}

// ---- Events ------------------------------------------------------------------

namespace {

int eventsUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl events DEVICE [--count N] [--timeout MS]\n"
                 "Creates a driver event queue for DEVICE (0 for every device), enables the device, then waits\n"
                 "on the queue's event object and prints each event record as it comes: board time, device\n"
                 "type, event code with the driver's text for it, the device's handle and the three values.\n"
                 "Stops after N records (default: no limit) or when none came for MS milliseconds (default\n"
                 "1000).\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

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

int events(int argc, char **argv) {
    const char *what = nullptr;
    uint32_t count = 0, timeout = 1000;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return eventsUsage(stdout);
        const uint32_t value = i + 1 < argc ? parseNumber(argv[i + 1]).value_or(0xFFFFFFFFu) : 0xFFFFFFFFu;
        if (std::strcmp(argv[i], "--count") == 0 && value != 0xFFFFFFFFu) {
            count = value;
            ++i;
        } else if (std::strcmp(argv[i], "--timeout") == 0 && value != 0xFFFFFFFFu) {
            timeout = value;
            ++i;
        } else if (what == nullptr && argv[i][0] != '-') {
            what = argv[i];
        } else {
            return eventsUsage(stderr);
        }
    }
    if (what == nullptr) return eventsUsage(stderr);
    Session session;
    if (!session.ok()) return 1;
    const auto device = std::strcmp(what, "0") == 0 ? std::optional<DeviceHandle>(0) : findDevice(what);
    if (!device) return 1;
    OsaHandle event = 0;
    DeviceHandle queue = 0;
    RynDrvCreateEvent(&event);
    const ResultCode created = RynDrvCreateEventQueue(*device, event, &queue);
    if (RynFailure(created)) {
        printResult("event queue", created);
        RynDrvCloseEvent(event);
        return 1;
    }
    if (*device != 0) RynDrvEnable(*device, 0, 0);
    uint32_t seen = 0;
    EventData record{};
    while (count == 0 || seen < count) {
        if (RynDrvGetEventData(queue, &record) == 0) {
            printEvent(record);
            std::fflush(stdout);
            ++seen;
        } else if (RynDrvWaitForSingleEvent(event, timeout) != 0) {
            break;
        }
    }
    RynDrvClose(queue);
    RynDrvCloseEvent(event);
    std::printf("%u event record%s\n", seen, seen == 1 ? "" : "s");
    return 0;
}

// ---- Program loading -------------------------------------------------------

namespace {

int loadUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl load DEVICE FILE [--entry NAME]\n"
                 "Loads a DSP program file (TI COFF) into the DSP DEVICE (dsp:0, dsp:1 or a driver handle) and\n"
                 "starts it at its entry address, or at symbol or hexadecimal address NAME. Prints the result\n"
                 "and what the DSP reports running.\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

int load(int argc, char **argv) {
    const char *what = nullptr, *path = nullptr, *entry = nullptr;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return loadUsage(stdout);
        if (std::strcmp(argv[i], "--entry") == 0 && i + 1 < argc) {
            entry = argv[++i];
        } else if (argv[i][0] != '-' && what == nullptr) {
            what = argv[i];
        } else if (argv[i][0] != '-' && path == nullptr) {
            path = argv[i];
        } else {
            return loadUsage(stderr);
        }
    }
    if (path == nullptr) return loadUsage(stderr);
    Session session;
    if (!session.ok()) return 1;
    const auto device = findDevice(what);
    if (!device) return 1;
    const ResultCode result = RynDspRunProgram(*device, path, entry);
    printResult("load and start", result);
    if (RynFailure(result)) return 1;
    for (int32_t id = 32; id <= 37; ++id) printAttribute(*device, id, false);  // the DSP's program attributes
    return 0;
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

int spmUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl spm list\n"
                 "       rynctl spm run DEVICE MODULE\n"
                 "list prints the built-in signal-processing modules: identifier, DSP type, kind of image,\n"
                 "length in words, entry address and the text the image carries. run connects to the driver\n"
                 "and runs module MODULE on the DSP DEVICE (dsp:0, or a driver handle such as 0x10000004),\n"
                 "choosing the image by the DSP type the driver reports.\n");
    return to == stdout ? 0 : 2;
}

std::string printable(const char *text) {
    std::string out;
    for (; *text != '\0'; ++text) out += *text == '\n' ? std::string("\\n") : std::string(1, *text);
    return out;
}

}  // namespace

int spm(int argc, char **argv) {
    if (argc == 1 && std::strcmp(argv[0], "list") == 0) {
        std::printf("module  DSP type  image                 length  entry     text\n");
        for (const SpmRow &row : kSpmRows) {
            const char *kind = std::strcmp(row.form, "CommandStream") == 0 ? "command stream"
                               : std::strcmp(row.form, "Records1") == 0    ? "word records (v1)"
                                                                           : "byte records (v2)";
            std::printf("%6u  %8u  %-20s %7u  0x%05X   %s\n", row.module, row.dspType, kind, row.length, row.entry,
                        printable(row.text).c_str());
        }
        return 0;
    }
    if (argc == 3 && std::strcmp(argv[0], "run") == 0) {
        const auto module = parseNumber(argv[2]);
        if (!module) return spmUsage(stderr);
        Session session;
        if (!session.ok()) return 1;
        const auto device = findDevice(argv[1]);
        if (!device) return 1;
        const ResultCode result = RynDspRunSpm(*device, *module);
        printResult("run module", result);
        return RynFailure(result) ? 1 : 0;
    }
    return spmUsage(argc == 1 && std::strcmp(argv[0], "--help") == 0 ? stdout : stderr);
}

}  // namespace rynctl
