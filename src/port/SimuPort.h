// The one CAN port of the simulated box. The device creates, owns and
// destroys it, tells it the host-visible connection state and the operating
// mode, and reads its number and reservation to describe it to the host.
//
// The port holds what the configuration says about the bus (measures,
// scripted baud-rate detection, negative-response code, the ECUs), what the
// host loads into it (CAN parameters, association table), its reservation and
// the port event queue.
//
// Host threads call the port concurrently with a configuration re-read (on
// the thread in CAN_DrvRxMsg), so the tables and values below are guarded by
// the port's own lock; the flags are atomic. The lock is never held while a
// reader waits for an event nor while an ECU looks a request up.
#pragma once

#include "cansimu/cansimu.h"
#include "channel/ChannelPort.h"
#include "core/AnswerScheduler.h"
#include "core/BusTrace.h"
#include "core/GuardedFifo.h"
#include "core/PointerSet.h"
#include "core/SimuObject.h"

#include <ace/Basic_Types.h>
#include <ace/Containers_T.h>
#include <ace/Functor.h>
#include <ace/Hash_Map_Manager_T.h>
#include <ace/Null_Mutex.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

#include <atomic>
#include <memory>
#include <vector>

class SimuChannel;
class SimuECU;
class TDomData;

class SimuPort : public SimuObject, public ChannelPort {
public:
  SimuPort();
  // Releases the association table, frees and destroys every channel,
  // destroys every ECU, then releases the payloads of events nobody read.
  ~SimuPort() override;

  // Reads the port's part of the configuration document, which the device
  // hands on after reading its own (PortConfiguration.cpp). Logs nothing.
  void readConfiguration(const TDomData &document);

  // Reservation by number, once the device found itself connected: only the
  // number's low byte counts. 13 for another number, 6 when already
  // reserved (`handle` null after both); else 0 and `handle` = this.
  CAN_STATUS reserve(ACE_UINT32 number, void **handle);
  // Releases the reservation. Always 0.
  CAN_STATUS free();
  // The port's entry in a host list: result byte 0, number, reserved flag.
  void describe(CAN_EnumPort &record) const;

  // The operations behind the exports. With `checkState` the getters refuse
  // with 7 while disconnected and 4 in the wrong mode; injected events fill
  // their payloads without the checks. Only the bytes the records define as
  // the port's are written.
  CAN_STATUS getMesPhys(CAN_MesPhysPort &record, bool checkState) const;
  CAN_STATUS setCanParam(const CAN_ParamPort &params);
  CAN_STATUS getCanParam(CAN_ParamPort &params, bool checkState) const;
  CAN_STATUS getState(CAN_StatePort &record, bool checkState) const;
  // Scripted detection: each call that passes its checks plays the next
  // DETBAUDRATE text, cycling. "E_SUCCESS" (or no text at all) copies the
  // first candidate into the answer and gives 0; another text gives its
  // status and leaves the answer alone.
  CAN_STATUS detBaudRate(const CAN_BaudSearchPort *request, CAN_BaudFoundPort *answer);
  // Keeps a copy of the host's table. Refusals leave the held table as it was.
  CAN_STATUS loadAssocTable(const CAN_AssocTable &table, AssocResult &result);
  // The calls accepted without effect: 7 while disconnected, 4 outside mode 1.
  CAN_STATUS checkReady() const;

  // The association table's answers: the first entry, in table order, whose
  // idRx (or address) matches. False, `out` untouched, when none does.
  bool addressByIdRx(ACE_UINT32 idRx, ACE_UINT8 &address) const override;
  bool idTxByAddress(ACE_UINT8 address, ACE_UINT32 &idTx) const;

  // The event queue (PortEvents.cpp). rxMsg: 7 while disconnected (outputs
  // untouched), else 0 or 3. endFifo: 0, or 4 when the queue refuses.
  CAN_STATUS rxMsg(CAN_EventPort **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs);
  CAN_STATUS endFifo();
  // Releases a record from rxMsg together with whatever its type carries.
  static void freeRxMsg(CAN_EventPort *event);
  // Queues a harness event of `type` with its payload; types the port does
  // not know queue nothing. Changes no state.
  void injectEvent(ACE_INT32 type, ACE_UINT8 value);

  // Raw frames (RawFrames.cpp). sendTrame offers the frame to the ECUs its
  // identifier addresses (all of them for 0x7D0) and queues their answers.
  CAN_STATUS sendTrame(const CAN_FramePort &frame);
  // Queues `response` (hex text, at most 8 bytes used) as a PRT_TYPE_FRAME
  // event from `canId`. False, with a log line, when it could not be queued.
  // The frame also goes to `trace` when one is given.
  bool enqueueResponse(ACE_UINT32 canId, const ACE_WString &response,
                       BusTrace::Batch *trace = nullptr);
  // The same, readable `delayMs` from now (at once for 0): the frame is
  // built now and held by the port's scheduler until it is due.
  bool enqueueResponseAfter(ACE_UINT32 canId, const ACE_WString &response, unsigned delayMs,
                            BusTrace::Batch *trace) override;
  // Holds a channel's delayed record until `due` (AnswerScheduler); false,
  // the record released, when it cannot be held.
  bool scheduleAnswer(AnswerScheduler::Clock::time_point due,
                      std::unique_ptr<AnswerScheduler::Delayed> record) override;
  // Delayed answers not yet readable, for every queue of the port.
  size_t delayedAnswersWaiting() const { return delayedAnswers.waiting(); }

  // The channel operations. createChannel: 26 for a broadcast channel
  // (type 1) on a port that has channels, else 0 with the new channel in
  // `handle`. enumerateChannels: the channels in creation order in a
  // malloc'd array of CAN_ChnInfo (4 without memory).
  CAN_STATUS createChannel(ACE_UINT32 type, void **handle);
  CAN_STATUS enumerateChannels(CAN_EnumList &list) const;
  // Replaces a channel's ECU set: a broadcast channel (type 1) takes every
  // free ECU; another type takes the ECU of the association table's idTx for
  // `address`, out of the free set if it is there. The ECUs the set held are
  // not given back. True when the set is not empty.
  bool attachEcus(ACE_UINT32 type, ACE_UINT8 address, PointerSet<SimuECU> &set) override;
  // Gives the channel's ECUs back to the free set and forgets the channel;
  // its owner then destroys it.
  void removeChannel(SimuChannel &channel) override;
  // A copy of a set the port guards (a channel's ECUs).
  std::vector<SimuECU *> copyOf(const PointerSet<SimuECU> &set) const override;

  // Follows the device's host-visible connection state.
  void setDeviceConnected(bool connected) { deviceConnected = connected; }

  // The ECUs of the table keyed by idTx, in the table's order: buckets of
  // idTx modulo 32 ascending, within a bucket the ECU bound last first.
  std::vector<SimuECU *> ecusInTableOrder() const;
  // Number of ECUs no one-to-one channel holds.
  size_t freeEcuCount() const;

  // The device's connection state as the host sees it.
  std::atomic<bool> deviceConnected{true};
  // The bench's opt-in (lossOfCom="1" on CAN_DEVICESTATE): while the box
  // is unplugged, channels meet a dead bus instead of answering.
  std::atomic<bool> lossOfCommunication{false};
  bool channelsCutOff() const override { return lossOfCommunication && !deviceConnected; }
  // The mode last set on the device by CAN_DevSetMode.
  std::atomic<ACE_UINT32> mode{0};
  // The host has reserved the port.
  std::atomic<bool> reserved{false};
  // The port's fixed number.
  const ACE_UINT8 portNumber = 0x60;
  // The port event queue.
  GuardedFifo<CAN_EventPort> events;

private:
  struct DelayedFrame;
  // Builds the frame event of `response`; null, with the "not enqueued"
  // line, without memory.
  CAN_FramePort *frameOf(ACE_UINT32 canId, const ACE_WString &response, BusTrace::Batch *trace);

  // Keyed by idTx, hashed by the value itself: bucket idTx modulo 32.
  using EcuTable = ACE_Hash_Map_Manager_Ex<unsigned long, SimuECU *, ACE_Hash<unsigned long>,
                                           ACE_Equal_To<unsigned long>, ACE_Null_Mutex>;
  // The six parameters of CAN_ParamPort, as the host last set them.
  struct CanParams {
    ACE_UINT8 param1 = 0, param2 = 0, param3 = 0;
    ACE_UINT32 param4 = 0;
    ACE_UINT8 param5 = 0;
    ACE_UINT32 param6 = 0;
  };

  // 7 while disconnected, 4 outside `required`, else 0.
  CAN_STATUS stateFor(ACE_UINT32 required) const;
  // Queues an event carrying `payload` (malloc'd, or null); on refusal the
  // payload is released and false returned.
  bool queueEvent(ACE_UINT32 type, void *payload);
  // A malloc'd payload for an injected event, or null for none.
  void *buildInjectedPayload(ACE_INT32 type, ACE_UINT8 value) const;
  // Releases what an event record carries, as CAN_PrtFreeRxMsg does.
  static void releasePayload(CAN_EventPort &event);

  // Guards every field below.
  mutable ACE_Recursive_Thread_Mutex lock;
  float batteryVoltage = 0.0f;
  float canHmin = 0.0f, canHmax = 0.0f, canLmin = 0.0f, canLmax = 0.0f;
  ACE_Array<ACE_WString> baudRateResults;
  CanParams canParams;
  // The copy of the host's association table.
  std::unique_ptr<CAN_AssocEntry[]> assocEntries;
  ACE_UINT32 assocCount = 0;
  EcuTable ecuByIdTx;
  PointerSet<SimuECU> freeEcus;
  // The channels, owned, in creation order.
  PointerSet<SimuChannel> channels;
  // Every ECU the configuration reads created, in creation order.
  std::vector<std::unique_ptr<SimuECU>> ownedEcus;
  ACE_WString negativeCode;
  // Answers of this port's ECUs that are not due yet; stopped first when
  // the port goes.
  AnswerScheduler delayedAnswers;
};
