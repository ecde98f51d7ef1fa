// The frame every CAN_* export runs before the simulation, written once:
//
//   return ExportCall("CAN_DevSetMode", kDeviceFamily)
//       .require(device).require(detail)   // null checks, in argument order
//       .inject(detail)                    // armed status answers the call
//       .run([&] { return ...; });         // hand-over
//
// The steps run in the order they are written; the first one that answers
// ends the call and the later steps do nothing. No exception leaves run().
#pragma once

#include "cansimu/cansimu.h"
#include "platform/AppendBuffer.h"
#include "platform/FileWatch.h"

#include <ace/Basic_Types.h>

#include <exception>

// Codes a null pointer gets in each export family.
constexpr CAN_STATUS kDriverFamily = E_NULL_POINTER;
constexpr CAN_STATUS kDeviceFamily = E_NULL_POINTER;
constexpr CAN_STATUS kPortFamily = E_NULL_POINTER;
constexpr CAN_STATUS kChannelFamily = E_INVALID;

// Tells the log and the session report that an armed status answered a call.
void noteArmedStatus(const char *exportName, ACE_UINT32 status, ACE_UINT8 detail);

// Logs an exception that reached an export (never lets it out).
void logEscapedException(const char *exportName, const char *what);

class ExportCall {
public:
  ExportCall(const char *exportName, CAN_STATUS nullCode)
      : name_(exportName), nullCode_(nullCode) {}
  // The lines the call logged or traced reach their files as it ends.
  ~ExportCall() { AppendBuffer::callEnds(); }
  ExportCall(const ExportCall &) = delete;
  ExportCall &operator=(const ExportCall &) = delete;

  // Null check with the family's code.
  ExportCall &require(const void *pointer) { return require(pointer, nullCode_); }
  // Null check with a code of its own (the one mixed case of the device family).
  ExportCall &require(const void *pointer, CAN_STATUS code) {
    return check(pointer != nullptr, code);
  }
  // Any other pre-check: ends the call with `code` unless `ok`.
  ExportCall &check(bool ok, CAN_STATUS code) {
    if (!answered_ && !ok)
      answer(code);
    return *this;
  }
  // Injection step: an armed entry under the export's name answers the call;
  // its detail value goes to `detailTo` (the byte it points at) when given.
  ExportCall &inject(void *detailTo = nullptr) {
    ACE_UINT32 status = 0;
    ACE_UINT8 detail = 0;
    if (!answered_ && takeArmed(status, detail)) {
      if (detailTo != nullptr)
        *static_cast<ACE_UINT8 *>(detailTo) = detail;
      answer(status);
    }
    return *this;
  }
  // Hand-over: runs the operation unless an earlier step answered.
  template <class Operation> CAN_STATUS run(Operation &&operation) {
    if (answered_)
      return status_;
    return guarded(name_, operation);
  }
  // Runs the operation first and consults the table afterwards: an armed
  // entry replaces the operation's status, but the operation has happened.
  template <class Operation> CAN_STATUS runThenInject(Operation &&operation) {
    if (answered_)
      return status_;
    const CAN_STATUS status = guarded(name_, operation);
    ACE_UINT32 injected = 0;
    ACE_UINT8 detail = 0;
    return takeArmed(injected, detail) ? injected : status;
  }

  // Runs any export body so that no exception gets out; an exception
  // becomes E_INVALID (allocation failure) and a log line.
  template <class Operation> static CAN_STATUS guarded(const char *name, Operation &operation) {
    try {
      return operation();
    } catch (const std::exception &failure) {
      logEscapedException(name, failure.what());
    } catch (...) {
      logEscapedException(name, "unknown exception");
    }
    return E_INVALID;
  }
  // The same for exports that give no result.
  template <class Operation> static void guardedVoid(const char *name, Operation &&operation) {
    FileWatch::CallScope scope;
    auto body = [&]() -> CAN_STATUS {
      operation();
      return E_SUCCESS;
    };
    guarded(name, body);
    AppendBuffer::callEnds();
  }

private:
  bool takeArmed(ACE_UINT32 &status, ACE_UINT8 &detail);
  void answer(CAN_STATUS status) {
    answered_ = true;
    status_ = status;
  }

  FileWatch::CallScope scope_;
  const char *name_;
  CAN_STATUS nullCode_;
  bool answered_ = false;
  CAN_STATUS status_ = E_SUCCESS;
};
