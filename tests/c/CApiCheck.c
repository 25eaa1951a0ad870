/* Calls the library from C99 by bare names: a decorated-only function bound
 * to its decorated symbol, an undecorated entry point and a decorated one. */
#include <stdio.h>

#include "RynHwDll.h"

static int failures;

static void expect(int condition, const char *what) {
    if (!condition) {
        printf("FAILED: %s\n", what);
        ++failures;
    }
}

int main(void) {
    uint32_t error, severity, source, line;
    OsaHandle handle = 7;

    expect(RynSuccess(0) == 1 && RynSuccess_4(0) == 1, "RynSuccess of 0");
    expect(RynFailure(RYN_RESULT_CALL_FAILED) == 1, "RynFailure of a transport code");
    expect(RynResultLineNum(RYN_RESULT_NO_REPLY) == 173, "line of the no-reply code");
    RynResultCode(RYN_RESULT_CALL_FAILED, &error, &severity, &source, &line);
    expect(error == 0x8000000Du && severity == 1 && source == 0x86 && line == 170, "RynResultCode");
    expect(RynFailure(RynDrvGetHandle(&handle)) == 1 && handle == 7, "RynDrvGetHandle unconnected");
    expect(RynResultErrorCode(RynDrvReleaseLib_0()) == 11, "release while unconnected");
    expect(OsaDeviceOpen("NO-SUCH-DEVICE") == INVALID_HANDLE_VALUE, "unknown device");
    return failures == 0 ? 0 : 1;
}
