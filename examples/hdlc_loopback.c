/*
 * hdlc_loopback.c - a first program with the RynHwDll library.
 *
 * It connects to the board driver, finds HDLC channel 0, sets up the
 * channel's sender and receiver, sends three frames and reads them back.
 * On the virtual board (the driver module ryn-drivers/ryndrv.so beside the
 * library) a channel's sent frames arrive at its own receiver, so every
 * frame should come back exactly as it was sent.
 *
 * Every call returns a ResultCode: 0 is success, bit 31 set is a failure,
 * and the lowest 8 bits are the error number. The program checks each one,
 * prints one line per step and exits with 0 only if everything came back
 * as sent.
 */
#include <stdio.h>
#include <string.h>

#include "RynHwDll.h"
#include "RynVirtualBoard.h" /* the virtual board's device types */

/* Prints the outcome of one step; returns 1 when the call succeeded. */
static int check(const char *step, ResultCode code)
{
    if (code == 0) {
        printf("ok      %s\n", step);
        return 1;
    }
    printf("FAILED  %s: result code 0x%08lX (error number %lu)\n", step, (unsigned long)code,
           (unsigned long)(code & 0xFFu));
    return 0;
}

/* Sets up the channel, sends the frames and reads them back; returns 1 when
 * every frame came back as sent. */
static int loop_frames(DeviceHandle channel)
{
    static const char *const frames[] = {
        "Hello, HDLC!",
        "#2",
        "The third frame is the longest of the three, to show that lengths are kept.",
    };
    const unsigned count = sizeof frames / sizeof frames[0];
    unsigned i;

    /* The settings (all 0 here) are passed to the driver unchanged; their
     * meaning is the driver's. The sender must be set up before sending and
     * the receiver before reading. */
    if (!check("set up the sender (RynHdlcSenderInit)", RynHdlcSenderInit(channel, 0, 0, 0, 0, 0, 0)))
        return 0;
    if (!check("set up the receiver (RynHdlcReceiverInit)", RynHdlcReceiverInit(channel, 0, 0, 0, 0, 0, 0, 0)))
        return 0;

    /* Send: the driver reads the frame from our buffer while the call runs. */
    for (i = 0; i < count; ++i) {
        char step[64];
        sprintf(step, "send frame %u (%u bytes)", i + 1, (unsigned)strlen(frames[i]));
        if (!check(step, RynHdlcSendData(channel, frames[i], (uint32_t)strlen(frames[i]), 0, 0)))
            return 0;
    }

    /* Read: the driver writes each frame into our buffer and tells its length. */
    for (i = 0; i < count; ++i) {
        char buffer[256];
        char step[64];
        uint32_t length = 0;
        const uint32_t expected = (uint32_t)strlen(frames[i]);

        sprintf(step, "read frame %u", i + 1);
        if (!check(step, RynHdlcReadData(channel, buffer, sizeof buffer, &length, NULL, NULL, NULL)))
            return 0;
        if (length > sizeof buffer) {
            printf("FAILED  frame %u: the driver reports %lu bytes, more than the buffer holds\n", i + 1,
                   (unsigned long)length);
            return 0;
        }
        printf("        received %lu bytes: \"%.*s\"\n", (unsigned long)length, (int)length, buffer);
        if (length != expected || memcmp(buffer, frames[i], expected) != 0) {
            printf("FAILED  frame %u differs from what was sent: \"%s\"\n", i + 1, frames[i]);
            return 0;
        }
    }
    return 1;
}

int main(void)
{
    DeviceHandle channel = 0;
    int good;

    if (!check("connect to the driver (RynDrvConnectLib)", RynDrvConnectLib()))
        return 1;

    /* Parent 0 is the board itself; HDLC channel number 0. */
    good = check("find HDLC channel 0 (RynDrvGetDeviceHandle)",
                 RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_HDLC, 0, &channel));
    if (good) {
        printf("        channel handle 0x%08lX\n", (unsigned long)channel);
        good = loop_frames(channel);
    }

    if (!check("release the driver (RynDrvReleaseLib)", RynDrvReleaseLib()))
        good = 0;

    printf(good ? "All frames came back as sent.\n" : "The loopback did not work.\n");
    return good ? 0 : 1;
}
