/* A driver module of the older driver generation 1.01.30.0: it answers the
 * attribute read (function 0x818) with that version text and every other
 * request with the driver failure code 0xB5008D0B, which the undecorated
 * entry points reduce to 0x8000000B for a driver of that generation. */
#include <string.h>

#include "RynUserDriver.h"

static const char kVersion[] = "1.01.30.0";
static const uint32_t kAttributeRead = 0x220000u | (0x818u << 2);
static const uint32_t kDriverFailure = 0xB5008D0Bu;
static int instance;

static void *moduleOpen(const char *deviceName) {
    (void)deviceName;
    return &instance;
}

static int moduleControl(void *device, const RynDriverRequest *request, uint32_t *returned) {
    char *out = (char *)request->output;
    uint32_t zero = 0;
    (void)device;
    if (request->outputLength < 12) return 0;
    memset(out, 0, request->outputLength);
    if (request->code == kAttributeRead && request->outputLength >= 16 + sizeof kVersion) {
        memcpy(out + 8, &zero, 4);
        memcpy(out + 16, kVersion, sizeof kVersion);
    } else {
        memcpy(out + request->outputLength - 4, &kDriverFailure, 4);
    }
    *returned = request->outputLength;
    return 1;
}

static void moduleClose(void *device) { (void)device; }

static const RynUserDriver driver = {RYN_USER_DRIVER_ABI, moduleOpen, moduleControl, moduleClose};

const RynUserDriver *RynUserDriverEntry(void) { return &driver; }
