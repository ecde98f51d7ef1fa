// The state of one stateful ECU: its current diagnostic session, its
// security access, and the data identifiers whose values stick. Declared in
// the scenario file with a STATE element (the entries' own rules need no
// declaration: an ECU whose entries carry rules starts in session 01):
//
//   <STATE default="01" s3="5000">
//     <SECURITY level="01" seed="11223344" key="xor:A5A5A5A5"/>
//     <DID id="F190" value="..." write="03" security="01"/>
//   </STATE>
//
// The state lives as long as the scenario as read: a re-read of the file
// starts it again. The scenario serialises every call.
#pragma once

#include "ecu/EntryRules.h"
#include "ecu/SecurityAccess.h"

#include <ace/SString.h>

#include <chrono>
#include <memory>
#include <vector>

class EcuState {
public:
  using Clock = std::chrono::steady_clock;
  using Bytes = std::vector<unsigned char>;

  // Why the state refused an entry, and the code it answers with.
  struct Refusal {
    ACE_WString reason; // "needs session 03, ECU in 01"
    unsigned char code = 0x7F;
  };

  // The state `document` declares; null when it has no STATE element and
  // `entriesHaveRules` is false (a plain scenario). Bad declarations are
  // left out and reported in `problems`.
  static std::unique_ptr<EcuState> read(const TDomData &document, bool entriesHaveRules,
                                        std::vector<StateProblem> &problems);

  // A request arrives at `now`: the session falls back to the default one
  // when the last request came more than the S3 time ago.
  void requestArrives(Clock::time_point now);
  // The answer of the declared state to `request` (security access,
  // reading or writing a declared identifier); false when the state does
  // not take the request and the scenario's entries answer it.
  bool serves(const Bytes &request, Bytes &response, Clock::time_point now);
  // Whether the entry's rules admit it now; false fills `refusal`.
  bool admits(const EntryRules &rules, Refusal &refusal) const;
  // The entry answered `response`: a positive answer enters its session.
  void answered(const EntryRules &rules, const ACE_WString &response);

  unsigned char session() const { return current; }
  // "session 03; level 01 unlocked; F190=56463153" for logs and the shell.
  ACE_WString describe() const;

  // Declarations, for `check`.
  unsigned char defaultSession() const { return defaultValue; }
  std::vector<unsigned char> securityLevels() const { return security.declaredLevels(); }

private:
  struct Did {
    unsigned identifier = 0;
    Bytes value;
    Bytes writeSessions;
    bool writable = false;
    unsigned char level = 0;
  };
  void readDids(const TDomData &state, std::vector<StateProblem> &problems);
  void enter(unsigned char session);
  Did *didAt(const Bytes &request, size_t offset);
  bool readDids(const Bytes &request, Bytes &response);
  Bytes writeDid(Did &did, const Bytes &request);

  unsigned char defaultValue = 0x01;
  unsigned char current = 0x01;
  unsigned s3Ms = 0;
  bool requestSeen = false;
  Clock::time_point lastRequest{};
  SecurityAccess security;
  std::vector<Did> dids;
};
