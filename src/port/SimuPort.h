// The one CAN port of the simulated box. The device creates, owns and
// destroys it, tells it the host-visible connection state and the operating
// mode, and reads its number and reservation to describe it to the host.
#pragma once

#include "core/SimuObject.h"

#include <ace/Basic_Types.h>

class TDomData;

class SimuPort : public SimuObject {
public:
  SimuPort() = default;
  ~SimuPort() override = default;

  // Reads the port's part of the configuration document, which the device
  // hands on after reading its own. The port keeps no configured value yet:
  // its measures, baud-rate script and ECUs arrive with the port section.
  void readConfiguration(const TDomData &document);

  // Follows the device's host-visible connection state.
  void setDeviceConnected(bool connected) { deviceConnected = connected; }

  // The device's connection state as the host sees it.
  bool deviceConnected = true;
  // The mode last set on the device by CAN_DevSetMode.
  ACE_UINT32 mode = 0;
  // The host has reserved the port.
  bool reserved = false;
  // The port's fixed number.
  const ACE_UINT8 portNumber = 0x60;
};
