// The root of the simulation: one per process, created on first use and
// destroyed by CAN_DrvEnd. It owns the configuration file, the simulated
// device and the driver-level event queue. Each read of the configuration
// ends with the step the export layer sets at load: it applies the file's
// INJECT elements to the injection table it owns.
#pragma once

#include "cansimu/cansimu.h"
#include "core/GuardedFifo.h"
#include "core/LecteurXML.h"
#include "core/SimuObject.h"
#include "platform/TDomData.h"

#include <ace/SString.h>

#include <atomic>
#include <memory>

class SimuDevice;

class SimuDriver : public SimuObject, public LecteurXML {
public:
  explicit SimuDriver(const ACE_WString &path);
  ~SimuDriver() override;

  // The driver, created from the stored configuration path on first use.
  static SimuDriver *instance();
  // The driver if one exists, without creating it.
  static SimuDriver *existing();
  // Destroys the driver, if any, and empties the stored path.
  static void end();

  // The configuration path given to CAN_DrvInit, used by the next creation.
  static void setConfigPath(const ACE_WString &path);
  static const ACE_WString &configPath();
  // Process-wide state: built when the library is loaded, released when it
  // is unloaded. A driver never ended is not destroyed.
  static void processAttach();
  static void processDetach();
  // What each read of the configuration does last, once the device and the
  // port hold the values it describes; none until one is set.
  using ConfigurationStep = void (*)(const TDomData &document);
  static void setLastConfigurationStep(ConfigurationStep step);

  // Lists the driver's one device for CAN_DevEnumerate: 21 when the list
  // already holds records (left untouched), 4 without memory; else count 1
  // and a malloc'd CAN_EnumDev, 0. Works whether the device is connected.
  CAN_STATUS enumerate(CAN_EnumList &list);
  // Reserves the device by name for CAN_DevReservation (SimuDevice::reserve).
  CAN_STATUS reserve(const char *name, void **handle);

  // Queues a harness event: type 0 is the end marker, 100 and 101 carry a
  // description of the device; other types queue nothing.
  void injectEvent(ACE_INT32 type, ACE_UINT8 detail);
  // Queues the end marker, waking a blocked reader.
  void pushEndMarker();
  // Timed read of the driver queue, for CAN_DrvRxMsg: 0 or 3.
  CAN_STATUS rxMsg(CAN_EventDrv **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs);
  // Releases a record from rxMsg together with its payload.
  static void freeRxMsg(CAN_EventDrv *event);

  // Read by every log line, whatever thread writes it.
  std::atomic<bool> consoleMode{false};
  std::unique_ptr<SimuDevice> device;
  GuardedFifo<CAN_EventDrv> events;

protected:
  bool parse(const ACE_WString &path) override;
  void initContent() override {}
  void clearContent() override {}

private:
  static void releasePayload(CAN_EventDrv &event);
  // Logs a read of the configuration that found no XML.
  static void logConfigurationProblem(const ACE_WString &path, const TDomData::LoadProblem &problem,
                                      bool reread);

  // Set by the first read: later ones are re-reads.
  bool readOnce = false;
};
