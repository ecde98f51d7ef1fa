// The configuration file as the host's CAN_DrvInit reads it, then the calls
// that use what was read: enumeration, reservation of the device and the
// port, and a raw frame offered to every ECU of the bench.
#include "FuzzSupport.h"
#include "cansimu/cansimu.h"

#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string path = fuzz::writeScratch("bench.xml", data, size);
  CAN_DrvInit(path.c_str());
  CAN_EnumList devices = {};
  std::string name;
  if (CAN_DevEnumerate(&devices) == E_SUCCESS) {
    name = static_cast<CAN_EnumDev *>(devices.records)->name;
    std::free(devices.records);
  }
  CAN_DEV_HANDLE device = nullptr;
  CAN_PRT_HANDLE port = nullptr;
  if (CAN_DevReservation(name.c_str(), &device) == E_SUCCESS &&
      CAN_PrtReservation(device, 96, &port) == E_SUCCESS) {
    uint8_t detail = 0;
    CAN_DevSetMode(device, 2, &detail);
    const CAN_FramePort frame = {CAN_BROADCAST_ID, 0, 0, 2, {0x3E, 0x00}, 0};
    CAN_PrtSendTrame(port, &frame, &detail);
    CAN_EventPort *event = nullptr;
    uint32_t pending = 0;
    while (CAN_PrtRxMsg(port, &event, &pending, 1) == E_SUCCESS)
      CAN_PrtFreeRxMsg(event);
    CAN_DevSetMode(device, 3, &detail);
    CAN_MesPhysPort measures;
    CAN_PrtGetMesPhys(port, &measures);
  }
  CAN_DrvEnd();
  return 0;
}
