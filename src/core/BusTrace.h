// The bus trace: when CANSIMU_TRACE names a file at the time the library is
// loaded (or the bench names one), the traffic is appended there as it
// would look on the bus, in the candump log format that can-utils and
// python-can read:
//
//   (1764000000.123456) can0 7E0#0322F190
//
// Raw frames go as sent and answered. A diagnostic request and its answers
// are cut into ISO 15765-2 frames (single, first and consecutive frames, and
// the receiver's flow control after a first frame) on the identifiers of
// the ECU that answers. Times come from a monotonic clock anchored to the
// wall clock when the file was opened.
//
// The frames of one exchange are collected in a Batch and added whole to
// the trace's buffer, which is written at the end of the host call, so
// lines from several host threads never mix. A file that cannot be opened
// or written is logged once; the trace then stops.
#pragma once

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <atomic>
#include <cstddef>
#include <string>

class BusTrace {
public:
  // At library load: opens the file CANSIMU_TRACE names, if any.
  static void openFromEnvironment();
  // Opens `path` unless a trace is already written (the variable wins).
  // `origin` says who named it, for the log.
  static void openNamed(const ACE_WString &path, const wchar_t *origin);
  // At library unload.
  static void close();
  // The one test the request path pays when nothing is traced.
  static bool enabled() { return active.load(std::memory_order_relaxed); }

  // The frames of one exchange, in bus order.
  class Batch {
  public:
    // One CAN frame of up to 8 bytes (more are cut).
    void frame(ACE_UINT32 id, const unsigned char *bytes, size_t length);
    // A message cut into ISO-TP frames on `id`; after a first frame, the
    // receiver answers with a flow control frame on `flowControlId` (none
    // when `flowControlId` is kNoReceiver).
    void message(ACE_UINT32 id, ACE_UINT32 flowControlId, const unsigned char *bytes,
                 size_t length);
    // Writes the batch to the trace in one go; nothing when it is empty.
    void write();

    static constexpr ACE_UINT32 kNoReceiver = 0xFFFFFFFFu;

  private:
    std::string lines_;
  };

private:
  static bool open(const ACE_WString &path, const wchar_t *origin);
  static std::atomic<bool> active;
};
