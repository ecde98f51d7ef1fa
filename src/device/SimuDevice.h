// The one simulated interface box. The driver creates and owns it; it owns
// the box's port and the device event queue, and answers the CAN_Dev*
// exports from the values read from the configuration file.
//
// Two connection states: configuredConnected is what the configuration asks
// for, connected what the host sees. The host sees a change, as an event and
// as refusals (7), at its next CAN_DevRxMsg.
#pragma once

#include "cansimu/cansimu.h"
#include "core/GuardedFifo.h"
#include "core/SimuObject.h"
#include "device/FirmwareVersions.h"
#include "port/SimuPort.h"

#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

#include <atomic>
#include <memory>

class TDomData;

class SimuDevice : public SimuObject {
public:
  SimuDevice();
  // Destroys the port, then releases the payloads of events nobody read.
  ~SimuDevice() override;

  // Reads the device's elements of the configuration document, then hands
  // the document to the port. Missing values keep the previous ones.
  void readConfiguration(const TDomData &document);

  // Lists the device's one port for CAN_PrtEnumerate: 7 while disconnected,
  // 4 without memory (records left null); else count 1 and a malloc'd
  // CAN_EnumPort, 0.
  CAN_STATUS enumeratePorts(CAN_EnumList &list) const;
  // Reserves the port for CAN_PrtReservation: 7 while disconnected, with
  // `handle` untouched; else SimuPort::reserve.
  CAN_STATUS reservePort(ACE_UINT32 number, void **handle);

  // Reservation by serial number: 13 for another name (before any other
  // check), 6 when already reserved, 7 while disconnected; else 0 and
  // `handle` = this. `handle` is null after any refusal.
  CAN_STATUS reserve(const char *name, void **handle);
  // 4 while the port is reserved; else releases the reservation, 0.
  CAN_STATUS free();
  // Sets the mode of the device and of its port: 0, or 7 while disconnected.
  CAN_STATUS setMode(ACE_UINT32 newMode);

  // The record getters. With checkConnected they refuse with 7 while
  // disconnected; injected events fill their payloads without the check.
  CAN_STATUS getMode(CAN_ModeDev &record, bool checkConnected) const;
  // Also allocates the one-entry port array (4 without memory, nothing
  // written).
  CAN_STATUS getConfig(CAN_ConfigDev &record, bool checkConnected) const;
  CAN_STATUS getTension(CAN_TensionDev &record, bool checkConnected) const;
  CAN_STATUS getVersion(CAN_VersionDev &record) const;
  // Accepted without effect: 0, or 7 while disconnected.
  CAN_STATUS setSleep() const;
  // Blocks 500 ms, then queues DEV_TYPE_RESET carrying 0xF4: 0, 7 while
  // disconnected, 4 when the event cannot be built or queued.
  CAN_STATUS hc16Reset();
  // Queues the end marker: 0, 7 while disconnected, 4 when the queue refuses.
  CAN_STATUS endFifo();
  // Plays out a firmware download (FirmwareDownload.cpp).
  CAN_STATUS downloadFirmware(const char *path, DownloadResult *result);

  // Timed read of the device queue, for CAN_DevRxMsg: first queues the
  // connection event the configuration calls for, then 0 or 3.
  CAN_STATUS rxMsg(CAN_EventDev **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs);
  // Releases a record from rxMsg together with whatever its type carries.
  static void freeRxMsg(CAN_EventDev *event);
  // Queues a harness event of `type` (types unknown to the device queue
  // nothing); changes no state.
  void injectEvent(ACE_INT32 type, ACE_UINT8 value);
  // Sets the host-visible connection state, port first.
  void setConnected(bool state);

  // True when `name` is the device's serial number.
  bool isNamed(const char *name) const;

  // Fills a host device record: name (the serial number, at most 127 bytes,
  // zero-terminated), reserved flag, disconnected flag; every other byte 0.
  void describe(CAN_EnumDev &record) const;

  // Configuration reads (on the host thread in CAN_DrvRxMsg) write what host
  // calls on other threads read: the values below are guarded by
  // valuesLock, the flags are atomic.
  mutable ACE_Recursive_Thread_Mutex valuesLock;
  float batteryVoltage = 0.0f;
  float apcKelmora = 0.0f;
  float apcDravik = 0.0f;
  ACE_WString serialNumber;
  FirmwareVersions versions;
  std::atomic<bool> configuredConnected{true};
  std::atomic<bool> connected{true};
  std::atomic<bool> reserved{false};
  std::atomic<bool> simulateUploadFailure{false};
  std::atomic<ACE_UINT32> mode{0};
  std::unique_ptr<SimuPort> port;
  GuardedFifo<CAN_EventDev> events;

private:
  // The device's own elements of the configuration, under valuesLock.
  void readOwnElements(const TDomData &document);
  // Queues an event carrying `payload` (malloc'd, or null); on refusal the
  // payload is released and false returned.
  bool queueEvent(ACE_UINT32 type, void *payload);
  // Queues a DEV_TYPE_PROGRESS event whose data is the value itself.
  bool queueProgress(ACE_UINT32 value);
  // A malloc'd payload for an injected event, or null for none.
  void *buildInjectedPayload(ACE_INT32 type, ACE_UINT8 value) const;
  // Releases what an event record carries, as CAN_DevFreeRxMsg does.
  static void releasePayload(CAN_EventDev &event);
};
