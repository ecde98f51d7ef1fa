#pragma once
// A handle the host holds is the address of the simulator's object it names.
#include "cansimu/cansimu.h"

class SimuChannel;
class SimuDevice;
class SimuPort;

inline SimuDevice *deviceOf(CAN_DEV_HANDLE handle) { return static_cast<SimuDevice *>(handle); }
inline SimuPort *portOf(CAN_PRT_HANDLE handle) { return static_cast<SimuPort *>(handle); }
inline SimuChannel *channelOf(CAN_CHN_HANDLE handle) { return static_cast<SimuChannel *>(handle); }
