#include "ecu/RequestTable.h"

#include <ace/ACE.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <string>

namespace {

// FNV-1a over the characters of a head, one step per character, so that a
// look-up extends the hash of a shorter prefix to the next probed length.
constexpr std::uint64_t kHashStart = 14695981039346656037ull;
std::uint64_t extendHash(std::uint64_t hash, ACE_WCHAR_T c) {
  return (hash ^ static_cast<std::uint64_t>(c)) * 1099511628211ull;
}
size_t headHash(std::uint64_t hash, size_t bucket) {
  const std::uint64_t mixed = hash ^ ((bucket + 1) * 0x9E3779B97F4A7C15ull);
  return static_cast<size_t>(mixed ^ (mixed >> 32));
}

// Length of the literal head of a pattern: its characters before the first
// wildcard.
size_t headLengthOf(const ACE_WString &pattern) {
  const ACE_WCHAR_T *text = pattern.fast_rep();
  const size_t length = pattern.length();
  for (size_t i = 0; i < length; ++i)
    if (text[i] == L'?' || text[i] == L'*')
      return i;
  return length;
}

} // namespace

unsigned long ScenarioKeyHash::operator()(const ACE_WString &key) const {
  if (key.length() < 2)
    return 0;
  // The same bytes that ACE_WString::hash() hashes for a copy of the first
  // two characters, without allocating that copy on every look-up.
  return ACE::hash_pjw(reinterpret_cast<const char *>(key.fast_rep()), 2 * sizeof(ACE_WCHAR_T));
}

bool ScenarioKeyMatch::operator()(const ACE_WString &stored, const ACE_WString &asked) const {
  const size_t length = stored.length();
  if (asked.length() < length)
    return false;
  const ACE_WCHAR_T *pattern = stored.fast_rep();
  const ACE_WCHAR_T *request = asked.fast_rep();
  for (size_t i = 0; i < length; ++i) {
    if (pattern[i] == L'*')
      return true;
    if (pattern[i] != L'?' && pattern[i] != request[i])
      return false;
  }
  return true;
}

struct RequestTable::Entry {
  // The pattern as written, its text in the arena.
  ACE_WString pattern;
  size_t headLength;
  // Position in the order of adding: a larger one is nearer the bucket's head.
  size_t order;
  ResponseList *list;
  // The next older entry with the same bucket and head.
  Entry *older;
};

bool RequestTable::HeadEqual::operator()(const HeadKey &a, const HeadKey &b) const {
  return a.bucket == b.bucket && a.length == b.length &&
         std::char_traits<ACE_WCHAR_T>::compare(a.text, b.text, a.length) == 0;
}

RequestTable::RequestTable(size_t buckets) : headLengths_(buckets) {}

RequestTable::~RequestTable() { release(); }

void RequestTable::reset(size_t buckets) {
  release();
  decltype(heads_)().swap(heads_);
  decltype(entries_)().swap(entries_);
  headLengths_.assign(buckets, {});
}

void RequestTable::release() {
  for (Entry *entry : entries_) {
    delete entry->list;
    entry->~Entry();
  }
  entries_.clear();
  arena_.release();
}

const ResponseList &RequestTable::entryAt(size_t i) const { return *entries_[i]->list; }

size_t RequestTable::bucketOf(const ACE_WString &key) const {
  return ScenarioKeyHash()(key) % headLengths_.size();
}

ResponseList *RequestTable::find(const ACE_WString &asked) const {
  return find(asked, nullptr, nullptr);
}

ResponseList *RequestTable::find(const ACE_WString &asked,
                                 bool (*accept)(const ResponseList &, void *),
                                 void *context) const {
  if (headLengths_.empty())
    return nullptr;
  const size_t bucket = bucketOf(asked);
  const ACE_WCHAR_T *text = asked.fast_rep();
  const size_t length = asked.length();
  const Entry *best = nullptr;
  std::uint64_t hash = kHashStart;
  size_t hashed = 0;
  for (const size_t headLength : headLengths_[bucket]) {
    if (headLength > length)
      break;
    for (; hashed < headLength; ++hashed)
      hash = extendHash(hash, text[hashed]);
    const auto group = heads_.find(HeadKey{bucket, text, headLength, headHash(hash, bucket)});
    if (group == heads_.end())
      continue;
    // Newest first: the first that accepts the request is the group's
    // answer, and nothing older than the best so far can win.
    for (const Entry *entry = group->second; entry != nullptr; entry = entry->older) {
      if (best != nullptr && entry->order < best->order)
        break;
      if (ScenarioKeyMatch()(entry->pattern, asked) &&
          (accept == nullptr || accept(*entry->list, context))) {
        best = entry;
        break;
      }
    }
  }
  return best != nullptr ? best->list : nullptr;
}

ResponseList *RequestTable::add(const ACE_WString &pattern) {
  if (headLengths_.empty())
    return nullptr;
  const size_t bucket = bucketOf(pattern);
  const size_t headLength = headLengthOf(pattern);
  std::unique_ptr<ResponseList> list(new ResponseList);
  void *place = arena_.malloc(sizeof(Entry));
  if (place == nullptr)
    throw std::bad_alloc();
  // The pattern's text is copied into the arena, next to its entry.
  auto *entry = new (place) Entry{ACE_WString(pattern.fast_rep(), pattern.length(), &arena_),
                                  headLength, entries_.size(), nullptr, nullptr};
  if (entry->pattern.length() != pattern.length()) {
    entry->~Entry();
    throw std::bad_alloc();
  }
  try {
    if (entries_.size() == entries_.capacity())
      entries_.reserve(std::max<size_t>(64, 2 * entries_.size()));
    std::vector<size_t> &lengths = headLengths_[bucket];
    const auto at = std::lower_bound(lengths.begin(), lengths.end(), headLength);
    if (at == lengths.end() || *at != headLength)
      lengths.insert(at, headLength);
    std::uint64_t hash = kHashStart;
    for (size_t i = 0; i < headLength; ++i)
      hash = extendHash(hash, entry->pattern[i]);
    const HeadKey key{bucket, entry->pattern.fast_rep(), headLength, headHash(hash, bucket)};
    Entry *&newest = heads_.try_emplace(key, nullptr).first->second;
    entry->older = newest;
    newest = entry;
  } catch (...) {
    entry->~Entry();
    throw;
  }
  list->pattern = &entry->pattern;
  entry->list = list.release();
  entries_.push_back(entry);
  return entry->list;
}
