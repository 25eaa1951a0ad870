// The request tables and attributes of each family of the board, one pair
// per family file.
#pragma once

#include "Board.h"

namespace vb {

#define VB_FAMILY(name)    \
    Table name##Table();   \
    std::span<const Attribute> name##Attributes();

VB_FAMILY(boardControls)
VB_FAMILY(t1e1)
VB_FAMILY(bri)
VB_FAMILY(dsp)
VB_FAMILY(hdlc)
VB_FAMILY(rawData)
VB_FAMILY(burst)
VB_FAMILY(pots)
VB_FAMILY(slic)
VB_FAMILY(jtag)
VB_FAMILY(tone)
VB_FAMILY(telephony)
VB_FAMILY(dataMixer)
VB_FAMILY(dspPots)

#undef VB_FAMILY

// Returns an object's family state to its start (reset, and the close of a
// physical device). Families that must tell someone do it here: a running
// DSP program ends with its event, the far T1/E1 span sees the change.
void resetState(Board &board, Object &object);
void dspReset(Board &board, Object &dsp);
void t1e1Reset(Board &board, Object &span);

// Sample sinks of the families whose blocks take samples in; `from` is the
// handle of the object that played them (0: the application).
void toneReceive(Board &board, Object &block, std::span<const int16_t> samples, uint32_t from);
void telephonyReceive(Board &board, Object &block, std::span<const int16_t> samples, uint32_t from);

}  // namespace vb
