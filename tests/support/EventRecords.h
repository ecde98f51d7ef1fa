// Checks on the event records the library hands to the host.
#pragma once

#include "cansimu/cansimu.h"

// True when every word of a driver event is 0: the end marker. Compares the
// fields, not the bytes, since 64-bit records have padding.
inline bool isEndMarker(const CAN_EventDrv &event) {
  return event.type == 0 && event.detail == 0 && event.reserved1 == 0 && event.reserved2 == 0 &&
         event.data == nullptr && event.reserved3 == 0;
}
inline bool isEndMarker(const CAN_EventPort &event) {
  return event.type == 0 && event.reserved1 == 0 && event.reserved2 == 0 && event.reserved3 == 0 &&
         event.data == nullptr && event.reserved4 == 0;
}
inline bool isEndMarker(const CAN_EventChn &event) {
  return event.type == 0 && event.reserved1 == 0 && event.reserved2 == 0 &&
         event.reserved3 == 0 && event.data == nullptr && event.request == nullptr;
}
