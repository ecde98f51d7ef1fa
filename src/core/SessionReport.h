// The session report: when CANSIMU_REPORT names a file at the time the
// library is loaded (or the bench names one), the library keeps count of
// what the host's requests met and writes it there as JSON: per ECU, every
// scenario entry with its hits, the requests no entry matched, the negative
// answers and the dialog refusals; for the whole session, the armed statuses
// and injected events that fired.
//
// The file is replaced in one step (a temporary file renamed over it): at
// the first traffic, then at most once a second while traffic flows, and
// once more at CAN_DrvEnd (or at unload when the host never ended the
// driver), so a host that dies leaves the JSON of the last write. A write that fails is logged once
// until one succeeds again; the host sees nothing of it.
#pragma once

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <atomic>
#include <string>
#include <vector>

class SessionReport {
public:
  // An ECU as the report files it.
  struct Ecu {
    ACE_UINT32 idTx, idRx;
    const ACE_WString &scenario;
  };
  struct Entry {
    ACE_UINT32 line;
    ACE_WString pattern;
  };

  // At library load: starts a report on the file CANSIMU_REPORT names.
  static void openFromEnvironment();
  // Starts a report on `path` unless one is kept already (the variable
  // wins). `origin` says who named it, for the log.
  static void openNamed(const ACE_WString &path, const wchar_t *origin);
  // Writes the report now (CAN_DrvEnd).
  static void flush();
  // At library unload: a last write, then nothing more is kept.
  static void close();
  // The one test the request path pays when no report is kept.
  static bool enabled() { return active.load(std::memory_order_relaxed); }

  // The scenario entries of an ECU, as its file was last read. Hits of
  // entries that stay are kept.
  static void entriesRead(const Ecu &ecu, const std::vector<Entry> &entries);
  // One answer from an entry.
  static void entryHit(const Ecu &ecu, ACE_UINT32 line, const ACE_WString &pattern, bool negative);
  // A request the entry matched but the ECU's state refused (`reason`:
  // "needs session 03, ECU in 01"), answered negatively.
  static void entryRefused(const Ecu &ecu, ACE_UINT32 line, const ACE_WString &pattern,
                           const ACE_WString &reason);
  // A request no entry matched; `negative` when the fallback answered it.
  static void unscripted(const Ecu &ecu, const ACE_WString &request, bool negative);
  // A request the ECU did not take: its dialog is closed.
  static void dialogRefused(const Ecu &ecu);
  // A call answered by an armed status, and an injected event that was
  // queued.
  static void armedStatus(const char *exportName, ACE_UINT32 status, ACE_UINT32 detail);
  static void injectedEvent(const char *exportName, ACE_INT32 type);

private:
  static std::atomic<bool> active;
};
