// One ECU's scenario: request patterns read from an XML file, each with the
// responses it hands out in rotation. The file is checked for changes before
// every look-up, so a tester's edit takes effect at the ECU's next answer.
#pragma once

#include "core/LecteurXML.h"
#include "ecu/EcuState.h"
#include "ecu/RequestTable.h"

#include <ace/Basic_Types.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

#include "platform/TDomData.h"

#include <atomic>
#include <memory>
#include <vector>

// Which entry answered a look-up: the line of its EVENEMENT, its pattern,
// and which of its responses (from 1, of how many) was handed out.
struct ScenarioHit {
  ACE_UINT32 line = 0;
  ACE_WString pattern;
  ACE_UINT32 index = 0, count = 0;
};

// What the ECU's state made of a request, for a scenario that keeps one.
struct StatefulAnswer {
  // The scenario keeps a state (a STATE element, or entries with rules).
  bool stateful = false;
  // The state itself answered (security access, a declared identifier).
  bool byState = false;
  // Entries matched but the state refused them all: the response is the
  // refusal's negative answer, `refusal` says why, the hit names the entry.
  bool refused = false;
  ACE_WString refusal;
  // When the answer becomes readable.
  AnswerTiming timing;
  // The state after the answer ("session 03; level 01 unlocked").
  ACE_WString state;
};

class Scenario : public LecteurXML {
public:
  // Keeps the path; the table starts empty with 64 buckets. Reads nothing.
  explicit Scenario(const ACE_WString &path);
  ~Scenario() override;

  // Re-reads the file if it changed, then looks `request` up in its bucket,
  // most recently added entry first. On a match with responses: sets
  // `response` to the entry's current response, advances its rotation and
  // returns 0. Otherwise returns -1 and leaves `response` as it was.
  // Look-ups on one scenario are serialised by its own lock.
  ACE_INT32 findResponse(const ACE_WString &request, ACE_WString &response);
  // The same look-up; on a match `hit` (when given) names the entry.
  ACE_INT32 findResponse(const ACE_WString &request, ACE_WString &response, ScenarioHit *hit);
  // The look-up of a host's request. In a scenario that keeps a state, the
  // state answers what it declares, entries it refuses do not match, and a
  // request that only refused entries match gets their refusal (0 all the
  // same); `stateful` tells what happened. A plain scenario answers as
  // findResponse does.
  ACE_INT32 findResponse(const ACE_WString &request, ACE_WString &response, ScenarioHit *hit,
                         StatefulAnswer &stateful);
  // The state now; empty for a scenario that keeps none.
  ACE_WString stateText() const;

  // Why the file as last read gave no entries: the parser's complaint, or
  // an empty message when it parsed.
  TDomData::LoadProblem parseProblem() const;
  // Every entry, in file order: its line and pattern (count 0).
  std::vector<ScenarioHit> entries() const;
  // Counts the reads of the file, so that a reader of entries() knows when
  // to look again.
  unsigned generation() const { return generation_.load(); }

  // Number of buckets of the request table (64 before the first load, 32 after).
  size_t bucketCount() const { return requests.bucketCount(); }
  // Number of stored request patterns.
  size_t entryCount() const { return requests.entryCount(); }

protected:
  // Reads the scenario file. A file that is not an XML document leaves the
  // table empty; malformed EVENEMENT elements are logged and skipped. Always
  // true.
  bool parse(const ACE_WString &path) override;
  void initContent() override;
  void clearContent() override;

private:
  void readEvent(const ACE_WString &path, const TDomData &event, size_t position, unsigned line,
                 std::vector<StateProblem> &problems);
  // The list that takes the responses written for `pattern`: the entry that
  // already matches it, or a new one. Null when the table takes no entry.
  ResponseList *entryFor(const ACE_WString &pattern);

  // The plain look-up, once the file is checked and the lock held.
  ACE_INT32 lookUp(const ACE_WString &request, ACE_WString &response, ScenarioHit *hit);
  ACE_INT32 answerFromEntry(ResponseList &list, ACE_WString &response, ScenarioHit *hit);

  RequestTable requests;
  // Null for a plain scenario; made again by every read of the file.
  std::unique_ptr<EcuState> state;
  bool entriesHaveRules = false;
  mutable ACE_Recursive_Thread_Mutex lookupLock;
  TDomData::LoadProblem problem;
  std::atomic<unsigned> generation_{0};
};
