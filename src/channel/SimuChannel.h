// A diagnostic channel: the host's conversation with one ECU (one-to-one,
// type 0) or with every free ECU of the bus (broadcast, type 1). The port
// creates and owns it; it finds its ECUs through the port's association table
// and ECU table, and reports every answer as an event in its own queue.
//
// The channel's ECU set is changed only by the port (attach, give back) and
// is guarded by the port's lock; the channel's own values by its own lock.
// Neither lock is held while a reader waits or an ECU looks a request up.
#pragma once

#include "cansimu/cansimu.h"
#include "channel/ChannelPort.h"
#include "core/BusTrace.h"
#include "core/GuardedFifo.h"
#include "core/PointerSet.h"
#include "core/SimuObject.h"

#include <ace/Basic_Types.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

#include <atomic>

class SimuECU;

class SimuChannel : public SimuObject {
public:
  SimuChannel(ChannelPort &port, ACE_UINT32 channelType);
  // Releases the payloads of events nobody read.
  ~SimuChannel() override;

  // Keeps the record's echo values and start frame and attaches the ECUs:
  // 0; 4, with the configuration warning, when none was found. A start
  // frame pointer that is null for a non-empty frame is refused with 4,
  // nothing changed.
  CAN_STATUS configure(const CAN_ChnConfigRec &record);
  // 4 unless configured. One-to-one: open when an ECU accepts a dialog, else
  // 4 and closed. Other types: the start frame is exchanged, then open.
  CAN_STATUS openSession();
  // 0; 4 unless configured with an open session.
  CAN_STATUS closeSession();
  // The request of CAN_ChnSendDiag (DiagnosticExchange.cpp): 4 unless the
  // session is open; else every answer is queued, 0.
  CAN_STATUS send(const CAN_DiagMsg &request);
  // Timed read of the channel queue: 0 or 3.
  CAN_STATUS rxMsg(CAN_EventChn **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs);
  // Releases a record from rxMsg with what its type carries.
  static void freeRxMsg(CAN_EventChn *event);
  // Queues the end marker: 0; 4 while the session is open.
  CAN_STATUS endFifo();
  // Gives the ECUs back to the port and leaves its channel set: 0; 4 while
  // the session is open. The caller then destroys the channel.
  CAN_STATUS free();
  // The channel's entry in CAN_ChnEnumerate's list.
  void describe(CAN_ChnInfo &record) const;

  const ACE_UINT32 channelType;
  // The ECUs the channel talks to, in attach order; guarded by the port.
  PointerSet<SimuECU> ecus;
  GuardedFifo<CAN_EventChn> events;

private:
  // The channel's values that events and descriptions echo.
  struct Echo {
    ACE_UINT8 ecuAddress = 0, echoByte1 = 0, echoByte2 = 0;
    ACE_UINT32 echoWord = 0;
  };

  // Asks each ECU for its answer to `requestText` and queues the events
  // (DiagnosticExchange.cpp). `request` is null for a session's opening.
  void exchange(const CAN_DiagMsg *request, const ACE_WString &requestText);
  // Builds and queues the channel event of one answer, readable `dueMs`
  // from now (at once for 0).
  void queueAnswer(const CAN_DiagMsg *request, const ACE_WString &response, ACE_UINT8 responder,
                   const Echo &echo, const SimuECU &ecu, const ACE_WString &requestText,
                   BusTrace::Batch *trace, unsigned dueMs);
  // Pushes `event` now, or has the port's scheduler push it in `dueMs`.
  void deliverAt(CAN_EventChn &event, unsigned dueMs);
  struct DelayedEvent;
  // Queues the send failure of a request on a dead bus.
  void reportLossOfCommunication(const CAN_DiagMsg *request);
  Echo echoValues() const;
  static void releasePayload(CAN_EventChn &event);

  ChannelPort &port;
  std::atomic<bool> sessionOpen{false};
  std::atomic<bool> configured{false};
  // Guards echo and startFrameText.
  mutable ACE_Recursive_Thread_Mutex lock;
  Echo echo;
  ACE_WString startFrameText;
};
