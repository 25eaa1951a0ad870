/* A driver module for the tests: answers every request with the request's
 * code at reply offset 8 and the device name's length at offset 12, and
 * reports the whole reply as returned. The device name "REFUSE" is refused. */
#include <string.h>

#include "RynUserDriver.h"

static char opened[64];

static void *moduleOpen(const char *deviceName) {
    if (strcmp(deviceName, "REFUSE") == 0) return NULL;
    strncpy(opened, deviceName, sizeof opened - 1);
    return opened;
}

static int moduleControl(void *device, const RynDriverRequest *request, uint32_t *returned) {
    uint32_t nameLength = (uint32_t)strlen((const char *)device);
    if (request->outputLength >= 16) {
        memcpy((char *)request->output + 8, &request->code, 4);
        memcpy((char *)request->output + 12, &nameLength, 4);
    }
    *returned = request->outputLength;
    return 1;
}

static void moduleClose(void *device) { (void)device; }

static const RynUserDriver driver = {RYN_USER_DRIVER_ABI, moduleOpen, moduleControl, moduleClose};

const RynUserDriver *RynUserDriverEntry(void) { return &driver; }
