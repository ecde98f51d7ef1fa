// The extension attributes of a scenario's EVENEMENT: in which sessions the
// entry answers, which security level it needs, which session its answer
// enters, and how its answers are timed. A plain entry has none of them and
// gets no rules at all, so it answers exactly as before.
#pragma once

#include "platform/TDomData.h"

#include <ace/SString.h>

#include <memory>
#include <vector>

// A value the state reader refused: the element it sits on and why.
struct StateProblem {
  TDomData where;
  ACE_WString text;
};

// When an answer becomes readable: `pending` response-pending answers
// (7F SID 78), the first at once and the next ones `everyMs` apart, then the
// final answer `delayMs` after the last pending slot.
// The negative response code "request received, response pending".
const unsigned char kResponsePending = 0x78;

struct AnswerTiming {
  unsigned pending = 0;
  unsigned everyMs = 0;
  unsigned delayMs = 0;
  bool delayed() const { return pending > 0 || delayMs > 0; }
  unsigned pendingDueMs(unsigned index) const { return index * everyMs; }
  unsigned finalDueMs() const { return pending * everyMs + delayMs; }
};

struct EntryRules {
  // The sessions the entry answers in; empty: every session.
  std::vector<unsigned char> sessions;
  // The security level that must be unlocked; 0: none.
  unsigned char level = 0;
  // The code a refusal for the state answers with; -1: 7F for a session,
  // 33 for a locked level.
  int refusalCode = -1;
  // The session a positive answer of the entry enters; -1: none.
  int enters = -1;
  AnswerTiming timing;

  // The rules written on `event`; null when it carries none of the
  // attributes. A bad value is left out and reported in `problems`.
  static std::shared_ptr<const EntryRules> read(const TDomData &event,
                                                std::vector<StateProblem> &problems);
};

// Strict hex, as the extension attributes are written: an even number of
// digits (either case), nothing else. False leaves `bytes` unspecified.
bool readHexBytes(const ACE_WString &text, std::vector<unsigned char> &bytes);
// One byte written as two hex digits ("03").
bool readHexByte(const ACE_WString &text, unsigned char &value);
// A list of bytes separated by spaces or commas ("02 03").
bool readHexByteList(const ACE_WString &text, std::vector<unsigned char> &values);
// A decimal number of milliseconds (or a count), at most 24 hours.
bool readMilliseconds(const ACE_WString &text, unsigned &value);
// Two upper-case hex digits.
ACE_WString byteText(unsigned char value);
// The negative answer `code` to `request`: "7F", the request's service, the
// code (78: request received, response pending).
ACE_WString negativeAnswerTo(const ACE_WString &request, unsigned char code);
