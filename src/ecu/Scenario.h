// One ECU's scenario: request patterns read from an XML file, each with the
// responses it hands out in rotation. The file is checked for changes before
// every look-up, so a tester's edit takes effect at the ECU's next answer.
#pragma once

#include "core/LecteurXML.h"
#include "ecu/RequestTable.h"

#include <ace/Basic_Types.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/SString.h>

class TDomData;

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
  void readEvent(const ACE_WString &path, const TDomData &event, size_t position);
  // The list that takes the responses written for `pattern`: the entry that
  // already matches it, or a new one. Null when the table takes no entry.
  ResponseList *entryFor(const ACE_WString &pattern);

  RequestTable requests;
  ACE_Recursive_Thread_Mutex lookupLock;
};
