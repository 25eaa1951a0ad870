/*
 * phone_line.c - the application as a small exchange: a telephone on the
 * SLIC line dials a number, and the call goes out on the POTS line.
 *
 * Each line reaches the DSP blocks through a pipe joined to it:
 * RynDrvConnectPipe(pipe, 0, line, 0, NULL, 0). A block connected after the
 * pipe hears what the line carries; a block connected before it plays into
 * the line.
 *
 *  1. The telephone's user lifts the handset (the virtual board simulates
 *     the set with its attributes); the application sees "Hook state
 *     changed" and plays dial tone to the set.
 *  2. The user dials; a DTMF detector on the SLIC line's pipe collects the
 *     digits, and the application ends the dial tone at the first digit
 *     (switching the audio path on).
 *  3. The application takes the POTS line off hook and dials the digits
 *     into the line from a DTMF dialler; the exchange behind the line takes
 *     them and plays ring-back (2 s on, 4 s off, from the first digit),
 *     which a dual-frequency detector (440 + 480 Hz) connected to the POTS
 *     line's pipe once dialling has finished hears.
 *  4. Both sides hang up.
 *
 * Everything plays on the board's sample clock in real time: the
 * application only waits for events. The program checks every result code
 * and exits with 0 only if every step worked.
 */
#include <stdio.h>
#include <string.h>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"

#define NUMBER "4021#"

static int check(const char *step, ResultCode code)
{
    if (code == 0) return 1;
    printf("FAILED  %s: result code 0x%08lX (error number %lu)\n", step, (unsigned long)code,
           (unsigned long)(code & 0xFFu));
    return 0;
}

/* The next record with `code` from `source`, waiting on the queue's event
 * object for at most 2 s; 0 when none came. */
static int next_event(DeviceHandle queue, OsaHandle event, uint32_t code, DeviceHandle source, EventData *record)
{
    for (;;) {
        if (RynDrvGetEventData(queue, record) != 0) {
            if (RynDrvWaitForSingleEvent(event, 2000) != 0) return 0;
            continue;
        }
        if (record->word[3] == code && record->word[4] == source) return 1;
    }
}

/* A pipe joined to a line. */
static int join(DeviceHandle line, DeviceHandle *pipe)
{
    return check("create a pipe", RynDrvCreatePipe(0, pipe)) &&
           check("join the pipe to the line", RynDrvConnectPipe(*pipe, 0, line, 0, NULL, 0));
}

/* A block of `type` connected to a line's pipe: after it (it hears the
 * line) or before it (it plays into the line). */
static int attach(DeviceHandle dsp, int32_t type, DeviceHandle pipe, int hears, DeviceHandle *block)
{
    return check("create a block", RynDrvCreateLogicalDevice(dsp, type, 0, 0, block)) &&
           check("connect the block", hears ? RynDrvConnectLogicalDevice(pipe, 0, *block, 0)
                                            : RynDrvConnectLogicalDevice(*block, 0, pipe, 0));
}

int main(void)
{
    DeviceHandle slic = 0, pots = 0, dsp = 0, queue = 0;
    DeviceHandle slic_pipe = 0, pots_pipe = 0, detector = 0, dialler = 0, ring_back = 0;
    OsaHandle event = 0;
    EventData record;
    const uint32_t ring_back_hz[2] = {440, 480};
    uint32_t state = 0;
    char heard[32] = "", dialled[32] = "";
    size_t count = 0;
    int good;

    if (!check("connect", RynDrvConnectLib())) return 1;
    good = check("find the SLIC line", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_SLIC, 0, &slic)) &&
           check("find the POTS line", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_POTS, 0, &pots)) &&
           check("find DSP 0", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_DSP, 0, &dsp)) &&
           check("create an event object", RynDrvCreateEvent(&event)) &&
           check("create an event queue", RynDrvCreateEventQueue(0, event, &queue)) &&
           join(slic, &slic_pipe) && attach(dsp, RYN_VB_BLOCK_DTMF_DETECTOR, slic_pipe, 1, &detector) &&
           check("set up the DTMF detector", RynToneDtmfDetectorInit(detector, 0, 0));

    /* 1. The handset is lifted: dial tone. */
    good = good && check("lift the handset", RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 1)) &&
           next_event(queue, event, RYN_VB_EVENT_HOOK_CHANGED, slic, &record) &&
           record.word[5] == RYN_VB_HOOK_OFF && check("play dial tone", RynSlicEnableDialTone(slic));
    if (good) printf("SLIC: handset lifted, dial tone\n");

    /* 2. The user dials; the first digit ends the dial tone. */
    good = good && check("dial on the set", RynDrvSetAttributeValueSz(slic, RYN_VB_ATTR_SLIC_SET_DIGITS, NUMBER));
    while (good && count < strlen(NUMBER) && next_event(queue, event, RYN_VB_EVENT_DTMF_DIGIT, detector, &record)) {
        heard[count++] = (char)record.word[5];
        if (count == 1) good = check("end the dial tone", RynSlicEnableAudio(slic, &state));
    }
    if (good) {
        printf("SLIC: the set dialled \"%s\", heard \"%s\"\n", NUMBER, heard);
        good = strcmp(heard, NUMBER) == 0;
    }

    /* 3. The call goes out on the POTS line. */
    good = good && check("take the POTS line off hook", RynPotsOffHook(pots)) &&
           join(pots, &pots_pipe) && attach(dsp, RYN_VB_BLOCK_DTMF_DIALLER, pots_pipe, 0, &dialler) &&
           check("dial out", RynToneDtmfDial(dialler, heard, (int32_t)strlen(heard), 0, 0)) &&
           next_event(queue, event, RYN_VB_EVENT_DIALLING_FINISHED, dialler, &record) &&
           attach(dsp, RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR, pots_pipe, 1, &ring_back) &&
           check("set up the ring-back detector", RynToneDualDetectorInit(ring_back, 0, ring_back_hz, 2, 0, 0, 0)) &&
           check("read what the exchange took",
                 RynDrvGetAttributeValueSz(pots, RYN_VB_ATTR_POTS_DIALLED, dialled, sizeof dialled));
    if (good) {
        printf("POTS: dialled \"%s\", the exchange took \"%s\"\n", heard, dialled);
        good = strcmp(dialled, heard) == 0 && next_event(queue, event, RYN_VB_EVENT_TONE_DETECTED, ring_back, &record);
        printf("POTS: ring-back %s\n", good ? "heard" : "NOT heard");
    }

    /* 4. Both sides hang up. */
    good = good && check("hang up the POTS line", RynPotsOnHook(pots)) &&
           check("hang up the handset", RynDrvSetAttributeValueBool(slic, RYN_VB_ATTR_SLIC_HANDSET, 0));

    if (ring_back != 0) RynDrvClose(ring_back);
    if (dialler != 0) RynDrvClose(dialler);
    if (detector != 0) RynDrvClose(detector);
    if (pots_pipe != 0) RynDrvClose(pots_pipe);
    if (slic_pipe != 0) RynDrvClose(slic_pipe);
    if (queue != 0) RynDrvClose(queue);
    if (event != 0) RynDrvCloseEvent(event);
    RynDrvReleaseLib();
    printf(good ? "the call went out\n" : "the call FAILED\n");
    return good ? 0 : 1;
}
