// rynctl: a command-line view of the library and the driver it reaches.
//
//   rynctl info    library version, driver device, driver's answer to the
//                  version announcement
#include <cstdio>
#include <cstring>

#include "RynHwDll.h"

namespace {

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

int usage() {
    std::fprintf(stderr, "usage: rynctl info\n");
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::strcmp(argv[1], "info") == 0) return info();
    return usage();
}
