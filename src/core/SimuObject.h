// Common base of the simulation objects (driver, device, port, channel, ECU):
// owners destroy their children through it.
#pragma once

class SimuObject {
public:
  SimuObject() = default;
  virtual ~SimuObject() = default;
  SimuObject(const SimuObject &) = delete;
  SimuObject &operator=(const SimuObject &) = delete;
};
