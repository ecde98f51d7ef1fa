#include "ecu/SimuECU.h"

#include "core/LogMessage.h"
#include "ecu/AnswerNotes.h"
#include "platform/FileSystem.h"

namespace {
// Made once: every request looks it up.
const ACE_WString &openDialog() {
  static const ACE_WString request(L"OPENDIALOG");
  return request;
}

// The path as the system opens it: below the working directory, joined with
// the separator that directory is written with.
ACE_WString underWorkingDirectory(const ACE_WString &path) {
  const ACE_WString directory = workingDirectory();
  const bool backslashes = directory.find(L'\\') != ACE_WString::npos;
  ACE_WString joined = directory + (backslashes ? L"\\" : L"/") + path;
  if (!backslashes)
    for (size_t i = directory.length(); i < joined.length(); ++i)
      if (joined[i] == L'\\')
        joined[i] = L'/';
  return joined;
}
} // namespace

SimuECU::SimuECU(ACE_UINT32 idRx, ACE_UINT32 idTx, const ACE_WString &scenarioPath,
                 const ACE_WString &negativeCode)
    : idRx(idRx), idTx(idTx), scenario(new Scenario(scenarioPath)), negativeCode(negativeCode),
      configuredPath(scenarioPath) {
  // A relative path is opened from the host's working directory, which is
  // rarely where the bench is: the log says which file that was.
  if (scenarioPath.length() != 0 && !isAbsolutePath(scenarioPath) && logIsRead())
    logMessage(L"Scenario path <" + scenarioPath + L"> is relative: opened as <" +
               underWorkingDirectory(scenarioPath) + L"> (from the working directory)");
  // A file that exists always loads; only an unreachable one fails.
  if (!scenario->load())
    scenario.reset();
  // The report lists every entry from the start, so unused ones show.
  reportScenarioEntries(*this);
}

SimuECU::~SimuECU() = default;

bool SimuECU::isDialogOpen() { return isDialogOpen(nullptr); }

bool SimuECU::isDialogOpen(AnswerOrigin *origin) {
  if (!scenario) {
    if (origin != nullptr)
      origin->kind = AnswerOrigin::Kind::NoScenario;
    return false;
  }
  ACE_WString answer;
  if (scenario->findResponse(openDialog(), answer, origin != nullptr ? &origin->hit : nullptr) != 0)
    return true;
  if (answer != L"FALSE")
    return true;
  if (origin != nullptr) {
    origin->kind = AnswerOrigin::Kind::DialogClosed;
    origin->file = configuredPath;
  }
  return false;
}

bool SimuECU::getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown) {
  return getResponse(request, response, answerUnknown, nullptr);
}

bool SimuECU::getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                          AnswerOrigin *origin) {
  if (!isDialogOpen(origin))
    return false;
  const bool found =
      scenario->findResponse(request, response, origin != nullptr ? &origin->hit : nullptr) == 0;
  return answerOf(request, response, answerUnknown, origin, found);
}

bool SimuECU::answerOf(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                       AnswerOrigin *origin, bool found) {
  if (found) {
    if (origin != nullptr) {
      origin->kind = AnswerOrigin::Kind::Entry;
      origin->file = configuredPath;
    }
    return true;
  }
  if (origin != nullptr) {
    origin->kind = AnswerOrigin::Kind::NoEntry;
    origin->negative = answerUnknown;
    origin->file = configuredPath;
    origin->problem = scenario->parseProblem();
  }
  if (!answerUnknown)
    return false;
  if (request.length() >= 2)
    response = ACE_WString(L"7F") + request.substring(0, 2) + negativeCode;
  else
    response = negativeCode;
  return true;
}

bool SimuECU::getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                          AnswerOrigin *origin, AnswerTiming &timing) {
  if (!isDialogOpen(origin))
    return false;
  StatefulAnswer stateful;
  ScenarioHit *hit = origin != nullptr ? &origin->hit : nullptr;
  const bool found = scenario->findResponse(request, response, hit, stateful) == 0;
  timing = stateful.timing;
  if (!found || !stateful.stateful) {
    const bool answered = answerOf(request, response, answerUnknown, origin, found);
    if (origin != nullptr)
      origin->stateful = stateful;
    return answered;
  }
  if (origin != nullptr) {
    origin->kind = stateful.byState   ? AnswerOrigin::Kind::State
                   : stateful.refused ? AnswerOrigin::Kind::Refused
                                      : AnswerOrigin::Kind::Entry;
    origin->file = configuredPath;
    origin->stateful = stateful;
  }
  return true;
}

std::vector<ScenarioHit> SimuECU::scenarioEntries() const {
  return scenario ? scenario->entries() : std::vector<ScenarioHit>();
}
