// One ECU on the simulated bus: its two CAN identifiers, its scenario and
// the text that completes its negative responses. It decides whether it
// accepts a dialog and what it answers to a request; turning the answer into
// events is the channel's or the port's business.
#pragma once

#include "core/SimuObject.h"
#include "ecu/Scenario.h"

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <memory>

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

  // Checks the dialog, then looks `request` (hex text) up. A request the
  // scenario does not know gets, when `answerUnknown` is set, the negative
  // response "7F" + its first two characters + the negative code (the code
  // alone for a request shorter than two characters). True when `response`
  // was set; otherwise `response` is left as it was.
  bool getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown);

  bool hasScenario() const { return scenario != nullptr; }

  // Receive identifier: the ECU answers with it.
  const ACE_UINT32 idRx;
  // Transmit identifier: the ECU is addressed through it.
  const ACE_UINT32 idTx;

private:
  std::unique_ptr<Scenario> scenario;
  const ACE_WString negativeCode;
};
