// One ECU on the simulated bus: its two CAN identifiers, its scenario and
// the text that completes its negative responses. It decides whether it
// accepts a dialog and what it answers to a request; turning the answer into
// events is the channel's or the port's business.
#pragma once

#include "core/SimuObject.h"
#include "ecu/Scenario.h"

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <atomic>
#include <memory>
#include <vector>

// Where an ECU's answer came from, or why there was none.
struct AnswerOrigin {
  enum class Kind {
    Entry,        // a scenario entry answered (hit names it)
    NoEntry,      // no entry matched: the negative fallback, or silence
    DialogClosed, // "OPENDIALOG" answered "FALSE" (hit names that entry)
    NoScenario,   // the scenario file could not be read at all
    State,        // the ECU's declared state answered (security, identifiers)
    Refused       // entries matched, the state refused them (hit names one)
  };
  Kind kind = Kind::NoScenario;
  ScenarioHit hit;
  // NoEntry: whether the negative fallback was sent.
  bool negative = false;
  // The scenario's path, and why it holds no entry when it does not parse.
  ACE_WString file;
  TDomData::LoadProblem problem;
  // What the ECU's state made of the request (a scenario that keeps one).
  StatefulAnswer stateful;
};

class SimuECU : public SimuObject {
public:
  // Loads the scenario at `scenarioPath`. An unreachable file (logged by the
  // reader) leaves the ECU without a scenario: present on the bus, silent.
  SimuECU(ACE_UINT32 idRx, ACE_UINT32 idTx, const ACE_WString &scenarioPath,
          const ACE_WString &negativeCode);
  ~SimuECU() override;

  // False without a scenario, or when the scenario answers "OPENDIALOG" with
  // exactly "FALSE". The check is an ordinary look-up: it may reload the
  // file and advances the "OPENDIALOG" rotation.
  bool isDialogOpen();
  // The same check; a closed dialog's entry goes to `origin` when given.
  bool isDialogOpen(AnswerOrigin *origin);

  // Checks the dialog, then looks `request` (hex text) up. A request the
  // scenario does not know gets, when `answerUnknown` is set, the negative
  // response "7F" + its first two characters + the negative code (the code
  // alone for a request shorter than two characters). True when `response`
  // was set; otherwise `response` is left as it was.
  bool getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown);
  // The same, telling in `origin` (when given) where the answer came from.
  bool getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                   AnswerOrigin *origin);
  // The same, with the state of a stateful scenario taking part, and in
  // `timing` when the answer becomes readable (nothing delayed for a plain
  // scenario).
  bool getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                   AnswerOrigin *origin, AnswerTiming &timing);
  // The state of a stateful scenario now; empty otherwise.
  ACE_WString stateText() const { return scenario ? scenario->stateText() : ACE_WString(); }

  // The scenario path as configured (empty without a scenario).
  const ACE_WString &scenarioPath() const { return configuredPath; }
  // The scenario's entries and how often its file was read (for the
  // session report); empty and 0 without a scenario.
  std::vector<ScenarioHit> scenarioEntries() const;
  unsigned scenarioGeneration() const { return scenario ? scenario->generation() : 0; }

  bool hasScenario() const { return scenario != nullptr; }

  // The scenario read the session report last listed (AnswerNotes).
  std::atomic<unsigned> reportedGeneration{~0u};

  // Receive identifier: the ECU answers with it.
  const ACE_UINT32 idRx;
  // Transmit identifier: the ECU is addressed through it.
  const ACE_UINT32 idTx;

private:
  // The answer once the scenario was asked: its response when `found`,
  // otherwise the negative fallback when `answerUnknown`.
  bool answerOf(const ACE_WString &request, ACE_WString &response, bool answerUnknown,
                AnswerOrigin *origin, bool found);

  std::unique_ptr<Scenario> scenario;
  const ACE_WString negativeCode;
  const ACE_WString configuredPath;
};
