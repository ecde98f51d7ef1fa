// The request table of a scenario: request patterns filed in buckets by the
// hash of their first two characters, each bucket ordered newest first. The
// entry that answers a request is the first one of the request's bucket,
// from the newest, whose pattern accepts the request.
//
// Walking a bucket costs its length, and a scenario may hold thousands of
// requests of one service, all in one bucket. The table reaches the same
// entry through an index instead. Every pattern has a literal head: its
// characters before the first '?' or '*', or all of them. A pattern only
// accepts a request that begins with its head, so the candidates for a
// request are the patterns whose head is one of the request's prefixes. The
// index maps (bucket, head) to the entries with that head, newest first, and
// each bucket keeps the lengths of the heads it holds: a look-up probes one
// prefix of the request per length, tests the entries with a probed head
// (all of them literal but the few with wildcards), and the newest that
// accepts the request is the bucket walk's answer.
#pragma once

#include "ecu/EntryArena.h"
#include "ecu/EntryRules.h"

#include <ace/Basic_Types.h>
#include <ace/Containers_T.h>
#include <ace/SString.h>

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

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
  // Where the entry was written: the pattern as stored in the table, and
  // the line of its EVENEMENT (0 when unknown).
  const ACE_WString *pattern = nullptr;
  ACE_UINT32 line = 0;
  // What the entry asks of the ECU's state; null for a plain entry.
  std::shared_ptr<const EntryRules> rules;
};

class RequestTable {
public:
  // An empty table with `buckets` buckets (none: every look-up fails).
  explicit RequestTable(size_t buckets);
  ~RequestTable();
  RequestTable(const RequestTable &) = delete;
  RequestTable &operator=(const RequestTable &) = delete;

  // Frees every response list and every entry; the table is then empty,
  // with `buckets` buckets.
  void reset(size_t buckets);

  size_t bucketCount() const { return headLengths_.size(); }
  size_t entryCount() const { return entries_.size(); }
  // The list of the i-th entry, in the order of adding.
  const ResponseList &entryAt(size_t i) const;

  // The list of the entry that answers `asked`: the newest entry of its
  // bucket whose pattern ScenarioKeyMatch accepts it. Null when none does.
  ResponseList *find(const ACE_WString &asked) const;
  // The same, passing over the entries `accept` (called with `context`)
  // refuses, as if they did not match.
  ResponseList *find(const ACE_WString &asked, bool (*accept)(const ResponseList &, void *),
                     void *context) const;

  // Files `pattern` as the newest entry of its bucket, with an empty list,
  // and returns that list; null when the table has no bucket. Only for a
  // pattern that find() does not match: each pattern is filed once. Throws
  // std::bad_alloc without memory, the table unchanged.
  ResponseList *add(const ACE_WString &pattern);

private:
  struct Entry;
  // A bucket and a head: the text is the head's first character, in the
  // request being looked up or in a stored pattern.
  struct HeadKey {
    size_t bucket;
    const ACE_WCHAR_T *text;
    size_t length;
    size_t hash;
  };
  struct HeadHash {
    size_t operator()(const HeadKey &key) const { return key.hash; }
  };
  struct HeadEqual {
    bool operator()(const HeadKey &a, const HeadKey &b) const;
  };

  size_t bucketOf(const ACE_WString &key) const;
  void release();

  // Holds the entries and their pattern texts; declared first so that it
  // outlives them.
  EntryArena arena_;
  // Every entry, oldest first; each owns its response list.
  std::vector<Entry *> entries_;
  // (bucket, head) -> the newest entry with that head; older ones follow it.
  std::unordered_map<HeadKey, Entry *, HeadHash, HeadEqual> heads_;
  // Per bucket, the lengths of its entries' heads, ascending, each once.
  std::vector<std::vector<size_t>> headLengths_;
};
