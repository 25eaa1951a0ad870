// The built-in board: its physical devices in enumeration order. A device's
// number (deviceId) counts the devices of its type from 0; its handle is
// fixed for the life of the board.
#include "Families.h"

namespace vb {

void buildDeviceTree(Board &board) {
    struct Device {
        int32_t type;
        const Family *family;
        const char *name;
    };
    static const Device kDevices[] = {
        {kTypeBoard, &kBoardFamily, "Board controls"},
        {kTypeT1E1, &kT1E1Family, "T1/E1 span 0"},
        {kTypeT1E1, &kT1E1Family, "T1/E1 span 1"},
        {kTypeDsp, &kDspFamily, "DSP 0"},
        {kTypeDsp, &kDspFamily, "DSP 1"},
        {kTypeHdlc, &kHdlcFamily, "HDLC channel 0"},
        {kTypeHdlc, &kHdlcFamily, "HDLC channel 1"},
        {kTypeRawData, &kRawDataFamily, "Raw-data channel 0"},
        {kTypeBurst, &kBurstFamily, "Burst channel 0"},
        {kTypePots, &kPotsFamily, "POTS line 0"},
        {kTypeSlic, &kSlicFamily, "SLIC line 0"},
        {kTypeJtag, &kJtagFamily, "JTAG port 0"},
    };
    for (const Device &device : kDevices) board.create(kKindPhysical, device.type, *device.family, 0, device.name);
}

}  // namespace vb
