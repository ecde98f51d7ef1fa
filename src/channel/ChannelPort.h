// What a channel asks of the port that owns it. The port keeps the ECU
// table, the association table and the delayed-answer scheduler, and guards
// every channel's ECU set; a channel reaches its port only through these
// calls, so it knows nothing else of the port.
#pragma once

#include "core/AnswerScheduler.h"
#include "core/BusTrace.h"
#include "core/PointerSet.h"

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <memory>
#include <vector>

class SimuChannel;
class SimuECU;

class ChannelPort {
public:
  // Replaces a channel's ECU set for its type and ECU address; true when the
  // set is not empty.
  virtual bool attachEcus(ACE_UINT32 type, ACE_UINT8 address, PointerSet<SimuECU> &set) = 0;
  // Gives the channel's ECUs back and forgets the channel.
  virtual void removeChannel(SimuChannel &channel) = 0;
  // A copy of a channel's ECU set, taken under the port's lock.
  virtual std::vector<SimuECU *> copyOf(const PointerSet<SimuECU> &set) const = 0;
  // Whether channels meet a dead bus (the box unplugged, loss of
  // communication asked for).
  virtual bool channelsCutOff() const = 0;
  // The association table's ECU address for an answering identifier.
  virtual bool addressByIdRx(ACE_UINT32 idRx, ACE_UINT8 &address) const = 0;
  // Queues a raw frame answer on the port, readable `delayMs` from now.
  virtual bool enqueueResponseAfter(ACE_UINT32 canId, const ACE_WString &response, unsigned delayMs,
                                    BusTrace::Batch *trace) = 0;
  // Holds a delayed channel record until it is due.
  virtual bool scheduleAnswer(AnswerScheduler::Clock::time_point due,
                              std::unique_ptr<AnswerScheduler::Delayed> record) = 0;

protected:
  ~ChannelPort() = default;
};
