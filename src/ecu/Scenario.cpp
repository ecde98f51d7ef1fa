#include "ecu/Scenario.h"

#include "core/LogMessage.h"
#include "platform/TDomData.h"

#include <ace/ACE.h>
#include <ace/Guard_T.h>

#include <memory>
#include <string>

namespace {

const size_t kInitialBuckets = 64;
const size_t kLoadedBuckets = 32;

// Logs an EVENEMENT that the parse leaves out, with the file and the
// element's position among the file's EVENEMENT elements (from 1).
void logSkippedEvent(const ACE_WString &path, size_t position, const wchar_t *reason) {
  const std::wstring number = std::to_wstring(position);
  logMessage(ACE_WString(L"Scenario <") + path + ACE_WString(L">: EVENEMENT number ") +
             ACE_WString(number.c_str()) + ACE_WString(L" skipped, ") + ACE_WString(reason));
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

Scenario::Scenario(const ACE_WString &path)
    : LecteurXML(path), requests(kInitialBuckets, nullptr, &entryArena) {}

Scenario::~Scenario() {
  freeResponseLists();
  requests.close();
}

ACE_INT32 Scenario::findResponse(const ACE_WString &request, ACE_WString &response) {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, -1);
  reloadIfChanged();
  ResponseList *list = nullptr;
  if (requests.find(request, list) != 0)
    return -1;
  // An entry written without any TRAME has nothing to hand out: it answers
  // as unknown, though it still hides the entries behind it in its bucket.
  const size_t count = list->responses.size();
  if (count == 0)
    return -1;
  response = list->responses[list->cursor];
  list->cursor = static_cast<ACE_UINT32>((list->cursor + 1) % count);
  return 0;
}

bool Scenario::parse(const ACE_WString &path) {
  TDomData document;
  document.load(path);
  if (document.isNull())
    return true;
  clearContent();
  initContent();
  ACE_Array<TDomData> events;
  document.getSubNodesByTagName(L"EVENEMENT", events, true);
  for (size_t i = 0; i < events.size(); ++i)
    readEvent(path, events[i], i + 1);
  return true;
}

void Scenario::initContent() { requests.open(kLoadedBuckets, nullptr, &entryArena); }

void Scenario::clearContent() {
  freeResponseLists();
  requests.close();
  entryArena.release();
}

void Scenario::freeResponseLists() {
  for (RequestTable::iterator it = requests.begin(); it != requests.end(); ++it)
    delete (*it).int_id_;
}

// One EVENEMENT: the content of the first child element of its first
// REQUETE is the pattern; each TRAME below its first REPONSE is a response.
void Scenario::readEvent(const ACE_WString &path, const TDomData &event, size_t position) {
  ACE_Array<TDomData> found;
  event.getSubNodesByTagName(L"REQUETE", found, true);
  if (found.size() == 0) {
    logSkippedEvent(path, position, L"it has no REQUETE element");
    return;
  }
  TDomData patternNode;
  found[0].getFirstChildElement(patternNode, true);
  if (patternNode.isNull()) {
    logSkippedEvent(path, position, L"its REQUETE has no child element");
    return;
  }
  ACE_WString pattern;
  patternNode.getContent(pattern);

  event.getSubNodesByTagName(L"REPONSE", found, true);
  if (found.size() == 0) {
    logSkippedEvent(path, position, L"it has no REPONSE element");
    return;
  }
  ACE_Array<TDomData> frames;
  found[0].getSubNodesByTagName(L"TRAME", frames, true);
  ACE_Array<ACE_WString> responses(frames.size());
  for (size_t i = 0; i < frames.size(); ++i)
    frames[i].getContent(responses[i]);
  addEntry(pattern, responses);
}

// The pattern is looked up as a request would be: if an entry of its bucket
// already matches it, that entry takes the new responses; otherwise a new
// entry goes to the head of the bucket, ahead of every earlier one.
void Scenario::addEntry(const ACE_WString &pattern, const ACE_Array<ACE_WString> &responses) {
  // A table whose buckets could not be allocated takes no entry.
  if (requests.total_size() == 0)
    return;
  std::unique_ptr<ResponseList> fresh(new ResponseList);
  ResponseList *list = fresh.get();
  // The key borrows the pattern's text; the copy the table stores takes its
  // text from the arena, next to its entry.
  const ACE_WString key(pattern.fast_rep(), pattern.length(), &entryArena, false);
  // trybind searches exactly like find and binds at the bucket's head only
  // when nothing matched; otherwise it hands back the matching entry's list.
  const int bound = requests.trybind(key, list);
  if (bound == -1)
    return;
  if (bound == 0)
    fresh.release();
  list->responses = responses;
  list->cursor = 0;
}
