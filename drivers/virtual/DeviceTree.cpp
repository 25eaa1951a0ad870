// The built-in board: its physical devices in enumeration order. A device's
// number (deviceId) counts the devices of its type from 0; its handle is
// fixed for the life of the board.
#include "Board.h"

namespace vb {

void buildDeviceTree(Board &board) {
    struct Device {
        int32_t type;
        Family family;
        const char *name;
    };
    static constexpr Device kDevices[] = {
        {kTypeBoard, Family::Board, "Board controls"},
        {kTypeT1E1, Family::T1E1, "T1/E1 span 0"},
        {kTypeT1E1, Family::T1E1, "T1/E1 span 1"},
        {kTypeDsp, Family::Dsp, "DSP 0"},
        {kTypeDsp, Family::Dsp, "DSP 1"},
        {kTypeHdlc, Family::Hdlc, "HDLC channel 0"},
        {kTypeHdlc, Family::Hdlc, "HDLC channel 1"},
        {kTypeRawData, Family::RawData, "Raw-data channel 0"},
        {kTypeBurst, Family::Burst, "Burst channel 0"},
        {kTypePots, Family::Pots, "POTS line 0"},
        {kTypeSlic, Family::Slic, "SLIC line 0"},
        {kTypeJtag, Family::Jtag, "JTAG port 0"},
    };
    for (const Device &device : kDevices) board.create(kKindPhysical, device.type, device.family, 0, device.name);
}

}  // namespace vb
