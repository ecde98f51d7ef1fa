#include "ecu/AnswerNotes.h"

#include "core/LogMessage.h"
#include "core/LogText.h"
#include "core/NumberText.h"
#include "platform/CodePage.h"

#include <string>

namespace {

ACE_WString ecuText(const SimuECU &ecu) {
  return L"ECU " + identifierText(ecu.idTx) + L"/" + identifierText(ecu.idRx);
}

// Why the scenario holds no entry at all, when it does not parse.
ACE_WString parseProblemText(const AnswerOrigin &origin) {
  if (origin.problem.message.empty())
    return ACE_WString();
  ACE_WString text = L" (the scenario <" + origin.file + L"> does not parse";
  if (origin.problem.line != 0)
    text += L": line " + decimalText(origin.problem.line);
  return text + L": " + toWideString(origin.problem.message.c_str()) + L")";
}

ACE_WString reasonText(const AnswerOrigin &origin, bool answered) {
  switch (origin.kind) {
  case AnswerOrigin::Kind::Entry:
    return L"entry <" + origin.file + L">:" + decimalText(origin.hit.line) + L" " +
           origin.hit.pattern + L", response " + decimalText(origin.hit.index) + L" of " +
           decimalText(origin.hit.count);
  case AnswerOrigin::Kind::NoEntry:
    return (answered ? ACE_WString(L"no entry: negative fallback")
                     : ACE_WString(L"no entry: not answered on this channel")) +
           parseProblemText(origin);
  case AnswerOrigin::Kind::DialogClosed:
    return L"dialog closed: OPENDIALOG answered FALSE at <" + origin.file + L">:" +
           decimalText(origin.hit.line);
  case AnswerOrigin::Kind::State:
    return L"state <" + origin.file + L">: the declared state answered";
  case AnswerOrigin::Kind::Refused:
    return L"refused for its state: entry <" + origin.file + L">:" + decimalText(origin.hit.line) +
           L" " + origin.hit.pattern + L" " + origin.stateful.refusal;
  case AnswerOrigin::Kind::NoScenario:
    break;
  }
  return L"no scenario: the file could not be read";
}

} // namespace

bool answerNotesWanted() { return SessionReport::enabled() || logIsRead(); }

void reportScenarioEntries(SimuECU &ecu) {
  if (!SessionReport::enabled())
    return;
  const unsigned generation = ecu.scenarioGeneration();
  if (ecu.reportedGeneration.exchange(generation) == generation)
    return;
  std::vector<SessionReport::Entry> entries;
  for (const ScenarioHit &entry : ecu.scenarioEntries())
    if (entry.pattern != L"OPENDIALOG")
      entries.push_back(SessionReport::Entry{entry.line, entry.pattern});
  SessionReport::entriesRead(SessionReport::Ecu{ecu.idTx, ecu.idRx, ecu.scenarioPath()}, entries);
}

namespace {
// A negative response, plain or as the frame of a typed one.
bool isNegative(const ACE_WString &response) {
  const ACE_WCHAR_T *text = response.c_str();
  if (text[0] == L'7' && text[1] == L'F')
    return true;
  for (size_t i = 0; i + 2 < response.length(); ++i)
    if (text[i] == L',' && text[i + 1] == L'7' && text[i + 2] == L'F')
      return true;
  return false;
}
} // namespace

void noteAnswer(SimuECU &ecu, const ACE_WString &request, const AnswerOrigin &origin, bool answered,
                const ACE_WString &response) {
  if (logIsRead()) {
    // The line of every answer a scenario entry gave is joined in one go.
    if (origin.kind == AnswerOrigin::Kind::Entry)
      logMessage(
          joinedLine({L"Answer source: ECU ", NumberPiece::hex(ecu.idTx), L"/",
                      NumberPiece::hex(ecu.idRx), L", request ", request, L": entry <", origin.file,
                      L">:", NumberPiece::decimal(origin.hit.line), L" ", origin.hit.pattern,
                      L", response ", NumberPiece::decimal(origin.hit.index), L" of ",
                      NumberPiece::decimal(origin.hit.count)}));
    else
      logMessage(L"Answer source: " + ecuText(ecu) + L", request " + request + L": " +
                 reasonText(origin, answered));
    if (origin.stateful.stateful)
      logMessage(L"ECU state: " + ecuText(ecu) + L": " + origin.stateful.state);
  }
  if (!SessionReport::enabled())
    return;
  reportScenarioEntries(ecu);
  const SessionReport::Ecu reported{ecu.idTx, ecu.idRx, ecu.scenarioPath()};
  switch (origin.kind) {
  case AnswerOrigin::Kind::Entry:
    SessionReport::entryHit(reported, origin.hit.line, origin.hit.pattern, isNegative(response));
    break;
  case AnswerOrigin::Kind::NoEntry:
    SessionReport::unscripted(reported, request, answered);
    break;
  case AnswerOrigin::Kind::DialogClosed:
    SessionReport::dialogRefused(reported);
    break;
  case AnswerOrigin::Kind::Refused:
    SessionReport::entryRefused(reported, origin.hit.line, origin.hit.pattern,
                                origin.stateful.refusal);
    break;
  case AnswerOrigin::Kind::State:
  case AnswerOrigin::Kind::NoScenario:
    break;
  }
}

void noteSessionRefused(SimuECU &ecu, const AnswerOrigin &origin) {
  if (logIsRead())
    logMessage(L"Session refused by " + ecuText(ecu) + L": " + reasonText(origin, false));
  if (!SessionReport::enabled())
    return;
  reportScenarioEntries(ecu);
  SessionReport::dialogRefused(SessionReport::Ecu{ecu.idTx, ecu.idRx, ecu.scenarioPath()});
}
