/*
 * dtmf_loopback.c - DTMF dialling and detection on the board's DSP.
 *
 * It connects to the board driver, creates a DTMF dialler and a DTMF
 * detector on DSP 0, connects the dialler's output to the detector, asks
 * for the detector's events through a driver event queue, dials "1234#" and
 * prints each digit the detector reports. On the virtual board the dialler
 * synthesises the tones and the detector finds them in the samples, so
 * every digit should come back in order.
 *
 * The program checks every result code (0 is success) and exits with 0
 * only if the digits detected are the digits dialled.
 */
#include <stdio.h>
#include <string.h>

#include "RynHwDll.h"
#include "RynVirtualBoard.h" /* the virtual board's device and block types, event codes */

static int check(const char *step, ResultCode code)
{
    if (code == 0) return 1;
    printf("FAILED  %s: result code 0x%08lX (error number %lu)\n", step, (unsigned long)code,
           (unsigned long)(code & 0xFFu));
    return 0;
}

/* Reads event records until the dialler reports it has finished; the digits
 * the detector reported are appended to `detected`. */
static void collect_digits(DeviceHandle queue, OsaHandle event, DeviceHandle detector, char *detected,
                           size_t size)
{
    EventData record;
    size_t count = 0;
    for (;;) {
        if (RynDrvGetEventData(queue, &record) != 0) {
            /* Nothing queued: wait for the queue's event object (2 s at most). */
            if (RynDrvWaitForSingleEvent(event, 2000) != 0) break;
            continue;
        }
        if (record.word[3] == RYN_VB_EVENT_DTMF_DIGIT && record.word[4] == detector && count + 1 < size) {
            detected[count++] = (char)record.word[5];
            printf("digit '%c' detected\n", (char)record.word[5]);
        } else if (record.word[3] == RYN_VB_EVENT_DIALLING_FINISHED) {
            break;
        }
    }
    detected[count] = '\0';
}

int main(void)
{
    const char *digits = "1234#";
    char detected[32] = "";
    DeviceHandle dsp = 0, dialler = 0, detector = 0, queue = 0;
    OsaHandle event = 0;
    int good;

    if (!check("connect", RynDrvConnectLib())) return 1;
    good = check("find DSP 0", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_DSP, 0, &dsp)) &&
           check("create the dialler", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_DTMF_DIALLER, 0, 0, &dialler)) &&
           check("create the detector", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_DTMF_DETECTOR, 0, 0, &detector)) &&
           /* Default tone and pause times; each tone 6 dB below the reference level. */
           check("set up the dialler", RynToneDtmfDiallerInit(dialler, 0, 0, 6, 0)) &&
           check("set up the detector", RynToneDtmfDetectorInit(detector, 0, 0)) &&
           check("connect dialler to detector", RynDrvConnectLogicalDevice(dialler, 0, detector, 0)) &&
           check("create an event object", RynDrvCreateEvent(&event)) &&
           /* A queue for the events of every block on DSP 0. */
           check("create an event queue", RynDrvCreateEventQueue(dsp, event, &queue)) &&
           check("dial", RynToneDtmfDial(dialler, digits, (int32_t)strlen(digits), 0, 0));
    if (good) {
        printf("dialled \"%s\"\n", digits);
        collect_digits(queue, event, detector, detected, sizeof detected);
        printf("detected \"%s\"\n", detected);
        good = strcmp(detected, digits) == 0;
    }
    if (queue != 0) RynDrvClose(queue);
    if (event != 0) RynDrvCloseEvent(event);
    if (detector != 0) RynDrvClose(detector);
    if (dialler != 0) RynDrvClose(dialler);
    RynDrvReleaseLib();
    printf("%s\n", good ? "All digits came back as dialled." : "The digits did not come back as dialled.");
    return good ? 0 : 1;
}
