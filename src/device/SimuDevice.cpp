#include "device/SimuDevice.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>

void SimuDevice::describe(CAN_EnumDev &record) const {
  std::memset(&record, 0, sizeof record);
  const auto name = toAnsi(serialNumber.c_str());
  const size_t length = std::min<size_t>(std::strlen(name.get()), sizeof record.name - 1);
  std::memcpy(record.name, name.get(), length);
  record.fixedOne = 1;
  record.reserved = reserved ? 1 : 0;
  record.disconnected = connected ? 0 : 1;
}
