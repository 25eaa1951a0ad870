/* Linked against the static library and run beside a driver module of the
 * driver generation 1.01.30.0: the load step must have found that version,
 * so that the undecorated entry point reduces the driver's failure code. */
#include <stdio.h>

#include "RynHwDll.h"

int main(void) {
    ResultCode translated, raw;
    if (RynDrvConnectLib_0() == RYN_RESULT_NO_REPLY) {
        printf("the driver module next to the program did not answer\n");
        return 1;
    }
    translated = RynDrvReset(RYN_HANDLE_PHYSICAL);
    raw = RynDrvReset_4(RYN_HANDLE_PHYSICAL);
    RynDrvReleaseLib();
    if (translated != 0x8000000Bu || raw != 0xB5008D0Bu) {
        printf("RynDrvReset gave 0x%08X (expected 0x8000000B), decorated 0x%08X (expected 0xB5008D0B)\n", translated,
               raw);
        return 1;
    }
    return 0;
}
