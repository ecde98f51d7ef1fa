#include "ecu/SimuECU.h"

namespace {
// Made once: every request looks it up.
const ACE_WString &openDialog() {
  static const ACE_WString request(L"OPENDIALOG");
  return request;
}
} // namespace

SimuECU::SimuECU(ACE_UINT32 idRx, ACE_UINT32 idTx, const ACE_WString &scenarioPath,
                 const ACE_WString &negativeCode)
    : idRx(idRx), idTx(idTx), scenario(new Scenario(scenarioPath)), negativeCode(negativeCode) {
  // A file that exists always loads; only an unreachable one fails.
  if (!scenario->load())
    scenario.reset();
}

SimuECU::~SimuECU() = default;

bool SimuECU::isDialogOpen() {
  if (!scenario)
    return false;
  ACE_WString answer;
  if (scenario->findResponse(openDialog(), answer) != 0)
    return true;
  return answer != L"FALSE";
}

bool SimuECU::getResponse(const ACE_WString &request, ACE_WString &response, bool answerUnknown) {
  if (!isDialogOpen())
    return false;
  if (scenario->findResponse(request, response) == 0)
    return true;
  if (!answerUnknown)
    return false;
  if (request.length() >= 2)
    response = ACE_WString(L"7F") + request.substring(0, 2) + negativeCode;
  else
    response = negativeCode;
  return true;
}
