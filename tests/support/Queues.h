#pragma once

// The four event queues read alike: each level's read and release picked by
// the record type, the next record owned until the test is done with it, and
// the hex text of the bytes a record carries.
#include "cansimu/cansimu.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace queues {

// The driver's queue has no handle: its `handle` is ignored.
inline CAN_STATUS receive(void *, CAN_EventDrv **event, uint32_t *pending, uint32_t timeoutMs) {
  return CAN_DrvRxMsg(event, pending, timeoutMs);
}
inline CAN_STATUS receive(void *device, CAN_EventDev **event, uint32_t *pending, uint32_t ms) {
  return CAN_DevRxMsg(device, event, pending, ms);
}
inline CAN_STATUS receive(void *port, CAN_EventPort **event, uint32_t *pending, uint32_t ms) {
  return CAN_PrtRxMsg(port, event, pending, ms);
}
inline CAN_STATUS receive(void *channel, CAN_EventChn **event, uint32_t *pending, uint32_t ms) {
  return CAN_ChnRxMsg(channel, event, pending, ms);
}
inline void release(CAN_EventDrv *event) { CAN_DrvFreeRxMsg(event); }
inline void release(CAN_EventDev *event) { CAN_DevFreeRxMsg(event); }
inline void release(CAN_EventPort *event) { CAN_PrtFreeRxMsg(event); }
inline void release(CAN_EventChn *event) { CAN_ChnFreeRxMsg(event); }

struct Release {
  template <class Event> void operator()(Event *event) const { release(event); }
};
template <class Event> using Owned = std::unique_ptr<Event, Release>;

// The record read within `timeoutMs`, or null when the read gave no record.
template <class Event>
Owned<Event> take(void *handle, uint32_t timeoutMs, uint32_t *pending = nullptr) {
  Event *event = nullptr;
  uint32_t count = 0;
  const bool read = receive(handle, &event, &count, timeoutMs) == E_SUCCESS;
  if (pending != nullptr)
    *pending = count;
  return Owned<Event>(read ? event : nullptr);
}

// The next record, which must come within `timeoutMs`; a zeroed one (the
// failure reported) when it does not, so that the caller can still read it.
template <class Event>
Owned<Event> next(void *handle, uint32_t timeoutMs = 1000, uint32_t *pending = nullptr) {
  Event *event = nullptr;
  uint32_t count = 0;
  EXPECT_EQ(receive(handle, &event, &count, timeoutMs), E_SUCCESS);
  if (pending != nullptr)
    *pending = count;
  return Owned<Event>(event ? event : static_cast<Event *>(calloc(1, sizeof(Event))));
}

// The status of one read of the queue, the record it gave released.
template <class Event> CAN_STATUS readStatus(void *handle, uint32_t timeoutMs) {
  Event *event = nullptr;
  uint32_t pending = 0;
  const CAN_STATUS status = receive(handle, &event, &pending, timeoutMs);
  release(event);
  return status;
}
// Whether a short read of the queue finds nothing (E_NO_EVENT).
template <class Event> bool isEmpty(void *handle) {
  return readStatus<Event>(handle, 1) == E_NO_EVENT;
}

inline std::string hexOf(const uint8_t *bytes, size_t count) {
  static const char digits[] = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; bytes != nullptr && i < count; ++i)
    text += {digits[bytes[i] >> 4], digits[bytes[i] & 0xF]};
  return text;
}

} // namespace queues
