// The one simulated interface box. The driver creates and owns it; it owns
// the device event queue and answers from the values read from the
// configuration file.
#pragma once

#include "cansimu/cansimu.h"
#include "core/GuardedFifo.h"
#include "core/SimuObject.h"

#include <ace/SString.h>

// Boot and application firmware versions, dates and checksums, as narrow
// text in the ANSI code page.
struct FirmwareVersions {
  ACE_CString BootVersion;
  ACE_CString BootDate;
  ACE_CString BootCheckSum;
  ACE_CString AppVersion;
  ACE_CString AppDate;
  ACE_CString AppCheckSum;
};

class SimuDevice : public SimuObject {
public:
  SimuDevice() = default;
  ~SimuDevice() override = default;

  // Fills a host device record: name (the serial number, at most 127 bytes,
  // zero-terminated), reserved flag, disconnected flag; every other byte 0.
  void describe(CAN_EnumDev &record) const;

  float batteryVoltage = 0.0f;
  float apcKelmora = 0.0f;
  float apcDravik = 0.0f;
  bool configuredConnected = true;
  bool connected = true;
  bool reserved = false;
  bool simulateUploadFailure = false;
  ACE_UINT32 mode = 0;
  ACE_WString serialNumber;
  FirmwareVersions versions;
  GuardedFifo<CAN_EventDev> events;
};
