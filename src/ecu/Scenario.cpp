#include "ecu/Scenario.h"

#include "core/CheckedArray.h"
#include "core/HexText.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "platform/TDomData.h"

#include <ace/Guard_T.h>

#include <new>
#include <string>

namespace {

const size_t kInitialBuckets = 64;
const size_t kLoadedBuckets = 32;

// The element names a scenario is read by, made once for every parse.
struct ElementNames {
  const ACE_WString evenement{L"EVENEMENT"}, requete{L"REQUETE"}, reponse{L"REPONSE"},
      trame{L"TRAME"};
};
const ElementNames &names() {
  static const ElementNames made;
  return made;
}

// Logs an EVENEMENT that the parse leaves out, with the file and the
// element's position among the file's EVENEMENT elements (from 1).
void logSkippedEvent(const ACE_WString &path, size_t position, const wchar_t *reason) {
  const std::wstring number = std::to_wstring(position);
  logMessage(ACE_WString(L"Scenario <") + path + ACE_WString(L">: EVENEMENT number ") +
             ACE_WString(number.c_str()) + ACE_WString(L" skipped, ") + ACE_WString(reason));
}

} // namespace

Scenario::Scenario(const ACE_WString &path) : LecteurXML(path), requests(kInitialBuckets) {}

Scenario::~Scenario() = default;

ACE_INT32 Scenario::findResponse(const ACE_WString &request, ACE_WString &response) {
  return findResponse(request, response, nullptr);
}

ACE_INT32 Scenario::findResponse(const ACE_WString &request, ACE_WString &response,
                                 ScenarioHit *hit) {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, -1);
  reloadIfChanged();
  return lookUp(request, response, hit);
}

ACE_INT32 Scenario::lookUp(const ACE_WString &request, ACE_WString &response, ScenarioHit *hit) {
  ResponseList *list = requests.find(request);
  if (list == nullptr)
    return -1;
  return answerFromEntry(*list, response, hit);
}

ACE_INT32 Scenario::answerFromEntry(ResponseList &entry, ACE_WString &response, ScenarioHit *hit) {
  ResponseList *list = &entry;
  // An entry written without any TRAME has nothing to hand out: it answers
  // as unknown, though it still hides the entries behind it in its bucket.
  const size_t count = list->responses.size();
  if (count == 0)
    return -1;
  response = list->responses[list->cursor];
  if (hit != nullptr) {
    hit->line = list->line;
    hit->pattern = list->pattern != nullptr ? *list->pattern : ACE_WString();
    hit->index = list->cursor + 1;
    hit->count = static_cast<ACE_UINT32>(count);
  }
  list->cursor = static_cast<ACE_UINT32>((list->cursor + 1) % count);
  return 0;
}

namespace {
// The state's verdict on the entries a request matches, newest first: the
// first refusal is kept to answer with when none is admitted.
struct StateFilter {
  const EcuState &state;
  const ResponseList *refusedEntry = nullptr;
  EcuState::Refusal refusal;
  static bool accept(const ResponseList &list, void *context) {
    auto &filter = *static_cast<StateFilter *>(context);
    if (!list.rules || list.responses.size() == 0)
      return true;
    EcuState::Refusal why;
    if (filter.state.admits(*list.rules, why))
      return true;
    if (filter.refusedEntry == nullptr) {
      filter.refusedEntry = &list;
      filter.refusal = why;
    }
    return false;
  }
};
} // namespace

ACE_INT32 Scenario::findResponse(const ACE_WString &request, ACE_WString &response,
                                 ScenarioHit *hit, StatefulAnswer &stateful) {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, -1);
  reloadIfChanged();
  if (!state)
    return lookUp(request, response, hit);
  stateful.stateful = true;
  const EcuState::Clock::time_point now = EcuState::Clock::now();
  state->requestArrives(now);
  std::vector<unsigned char> bytes, answer;
  if (readHexBytes(request, bytes) && state->serves(bytes, answer, now)) {
    response = bytesToWideHex(answer.data(), answer.size());
    stateful.byState = true;
    stateful.state = state->describe();
    return 0;
  }
  StateFilter filter{*state, nullptr, EcuState::Refusal()};
  ResponseList *list = requests.find(request, &StateFilter::accept, &filter);
  if (list != nullptr && answerFromEntry(*list, response, hit) == 0) {
    if (list->rules) {
      stateful.timing = list->rules->timing;
      state->answered(*list->rules, response);
    }
    stateful.state = state->describe();
    return 0;
  }
  if (filter.refusedEntry == nullptr) {
    stateful.state = state->describe();
    return -1;
  }
  // Only entries the state refused match: the ECU answers that it cannot
  // serve the request now.
  response = negativeAnswerTo(request, filter.refusal.code);
  stateful.refused = true;
  stateful.refusal = filter.refusal.reason;
  stateful.state = state->describe();
  if (hit != nullptr) {
    hit->line = filter.refusedEntry->line;
    hit->pattern =
        filter.refusedEntry->pattern != nullptr ? *filter.refusedEntry->pattern : ACE_WString();
    hit->index = 0;
    hit->count = static_cast<ACE_UINT32>(filter.refusedEntry->responses.size());
  }
  return 0;
}

ACE_WString Scenario::stateText() const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, ACE_WString());
  return state ? state->describe() : ACE_WString();
}

TDomData::LoadProblem Scenario::parseProblem() const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, TDomData::LoadProblem());
  return problem;
}

std::vector<ScenarioHit> Scenario::entries() const {
  std::vector<ScenarioHit> listed;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lookupLock, listed);
  const size_t count = requests.entryCount();
  listed.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const ResponseList &entry = requests.entryAt(i);
    ScenarioHit listedEntry;
    listedEntry.line = entry.line;
    listedEntry.pattern = entry.pattern != nullptr ? *entry.pattern : ACE_WString();
    listed.push_back(listedEntry);
  }
  return listed;
}

bool Scenario::parse(const ACE_WString &path) {
  TDomData document;
  std::vector<size_t> lineStarts;
  problem = TDomData::LoadProblem();
  document.load(path, &problem, &lineStarts);
  ++generation_;
  if (document.isNull())
    return true;
  clearContent();
  initContent();
  ACE_Array<TDomData> events;
  document.getSubNodesByTagName(names().evenement, events, true);
  std::vector<StateProblem> problems;
  entriesHaveRules = false;
  for (size_t i = 0; i < events.size(); ++i)
    readEvent(path, events[i], i + 1, events[i].sourceLine(lineStarts), problems);
  // A re-read starts the state again from what the file declares.
  state = EcuState::read(document, entriesHaveRules, problems);
  for (const StateProblem &problem : problems)
    logMessage(ACE_WString(L"Scenario <") + path + ACE_WString(L">:") +
               decimalText(problem.where.sourceLine(lineStarts)) + ACE_WString(L" ") +
               problem.text);
  return true;
}

void Scenario::initContent() { requests.reset(kLoadedBuckets); }

// The table is closed: no entry and no bucket until initContent.
void Scenario::clearContent() {
  requests.reset(0);
  state.reset();
}

// One EVENEMENT: the content of the first child element of its first
// REQUETE is the pattern; each TRAME below its first REPONSE is a response.
void Scenario::readEvent(const ACE_WString &path, const TDomData &event, size_t position,
                         unsigned line, std::vector<StateProblem> &problems) {
  ACE_Array<TDomData> found;
  event.getSubNodesByTagName(names().requete, found, true);
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

  event.getSubNodesByTagName(names().reponse, found, true);
  if (found.size() == 0) {
    logSkippedEvent(path, position, L"it has no REPONSE element");
    return;
  }
  ACE_Array<TDomData> frames;
  found[0].getSubNodesByTagName(names().trame, frames, true);
  ResponseList *list = entryFor(pattern);
  if (list == nullptr)
    return;
  // The responses written last replace whatever the entry held.
  resizeArray(list->responses, frames.size());
  for (size_t i = 0; i < frames.size(); ++i)
    frames[i].getContent(list->responses[i]);
  list->cursor = 0;
  list->line = line;
  list->rules = EntryRules::read(event, problems);
  entriesHaveRules = entriesHaveRules || list->rules != nullptr;
}

// The pattern is looked up as a request would be: if an entry of its bucket
// already matches it, that entry takes the new responses; otherwise a new
// entry goes to the head of the bucket, ahead of every earlier one.
ResponseList *Scenario::entryFor(const ACE_WString &pattern) {
  if (ResponseList *found = requests.find(pattern))
    return found;
  try {
    return requests.add(pattern);
  } catch (const std::bad_alloc &) {
    // Without memory the pattern gets no entry, as a full table would give.
    return nullptr;
  }
}
