// One ECU's scenario: request patterns read from an XML file, each with the
// responses it hands out in rotation. The file is checked for changes before
// every look-up, so a tester's edit takes effect at the ECU's next answer.
#pragma once

#include "core/LecteurXML.h"
#include "ecu/EntryArena.h"

#include <ace/Basic_Types.h>
#include <ace/Containers_T.h>
#include <ace/Hash_Map_Manager_T.h>
#include <ace/Null_Mutex.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

class TDomData;

// Bucket hash of a request: only its first two characters count, so every
// request of one service identifier lands in one bucket. Keys shorter than
// two characters hash to 0.
struct ScenarioKeyHash {
  unsigned long operator()(const ACE_WString &key) const;
};

// The pattern rule, called with the stored pattern first and the request
// second (it is not symmetric). The request must be at least as long as the
// pattern; '?' accepts any one character, '*' accepts everything from there
// on, any other character must be equal. A longer request matches the
// pattern that begins it.
struct ScenarioKeyMatch {
  bool operator()(const ACE_WString &stored, const ACE_WString &asked) const;
};

// The responses of one stored request, in file order, and the index of the
// one the next matching look-up hands out.
struct ResponseList {
  ACE_UINT32 cursor = 0;
  ACE_Array<ACE_WString> responses;
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

  // Number of buckets of the request table (64 before the first load, 32 after).
  size_t bucketCount() const { return requests.total_size(); }
  // Number of stored request patterns.
  size_t entryCount() const { return requests.current_size(); }

protected:
  // Reads the scenario file. A file that is not an XML document leaves the
  // table empty; malformed EVENEMENT elements are logged and skipped. Always
  // true.
  bool parse(const ACE_WString &path) override;
  void initContent() override;
  void clearContent() override;

private:
  using RequestTable = ACE_Hash_Map_Manager_Ex<ACE_WString, ResponseList *, ScenarioKeyHash,
                                               ScenarioKeyMatch, ACE_Null_Mutex>;

  void freeResponseLists();
  void readEvent(const ACE_WString &path, const TDomData &event, size_t position);
  void addEntry(const ACE_WString &pattern, const ACE_Array<ACE_WString> &responses);

  // Holds the table's entries and keys; declared first so it outlives them.
  EntryArena entryArena;
  RequestTable requests;
  ACE_Recursive_Thread_Mutex lookupLock;
};
