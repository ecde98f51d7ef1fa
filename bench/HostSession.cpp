#include "HostSession.h"

#include "BenchFiles.h"

#include <cstring>
#include <functional>
#include <stdexcept>

namespace {

const char kSerial[] = "SIMU-BENCH";
const uint8_t kEcuAddress = 0x10;
const uint32_t kIdTx = 0x7E0, kIdRx = 0x7E8;
// The answer to 22F190: 62F190 and a 17-character VIN.
const uint8_t kVinAnswer[] = {0x62, 0xF1, 0x90, 0x56, 0x46, 0x31, 0x53, 0x49, 0x4D, 0x55,
                              0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x34, 0x32};

// An engine ECU's scenario of ordinary size: sessions, identification,
// routines, with a few wildcard patterns among literal ones.
std::string engineScenario() {
  std::string events = scenarioEvent("OPENDIALOG", "TRUE");
  for (const char *session : {"1001", "1002", "1003"})
    events += scenarioEvent(session, "50" + std::string(session + 2) + "003201F4");
  events += scenarioEvent("3E00", "7E00");
  events += scenarioEvent("1101", "5101");
  for (const char *identifier : {"F187", "F18C", "F191", "F1A0", "F1A1", "F195", "F197", "0100"})
    events +=
        scenarioEvent(std::string("22") + identifier, std::string("62") + identifier + "3031");
  events += scenarioEvent("22F190", "62F19056463153494D5530303030303030303432");
  events += scenarioEvent("22F4??", "7F2231");
  events += scenarioEvent("2E*", "6E");
  events += scenarioEvent("3101FF00", "7101FF0000");
  events += scenarioEvent("3103*", "7103");
  events += scenarioEvent("19020F", "5902FF");
  events += scenarioEvent("14FFFFFF", "54");
  events += scenarioEvent("2701", "6701A1B2C3D4");
  events += scenarioEvent("2702????????", "6702");
  return scenarioDocument(events);
}

void expect(CAN_STATUS status, const char *step) {
  if (status != E_SUCCESS)
    throw std::runtime_error(std::string(step) + " answered " + std::to_string(status));
}

} // namespace

HostSession::HostSession(const std::string &libraryPath, const std::string &outputs)
    : library(libraryPath) {
  // Files of its own for a session that writes outputs: rewriting another
  // session's files would make that one read them again.
  const std::string suffix =
      outputs.empty() ? "" : "-" + std::to_string(std::hash<std::string>()(outputs));
  const std::string scenario = benchFile("engine" + suffix + ".xml");
  writeBenchFile(scenario, engineScenario());
  const std::string configuration = benchFile("bench" + suffix + ".xml");
  writeBenchFile(configuration,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<BENCH><CAN_SERIALNUMBER>" +
                     std::string(kSerial) +
                     "</CAN_SERIALNUMBER><CAN_DEVICESTATE>DEV_TYPE_RCON</CAN_DEVICESTATE>" +
                     outputs + "<PORT><UCE targetAddress='10' idTx='7E0' idRx='7E8' scenario='" +
                     scenario + "'/></PORT></BENCH>\n");
  expect(library.DrvInit(configuration.c_str()), "CAN_DrvInit");
  expect(library.DevReservation(kSerial, &device_), "CAN_DevReservation");
  expect(library.PrtReservation(device_, 96, &port_), "CAN_PrtReservation");
  setMode(1);
  CAN_AssocEntry association = {};
  association.ecuAddress = kEcuAddress;
  association.idTx = kIdTx;
  association.idRx = kIdRx;
  const CAN_AssocTable table = {1, &association};
  AssocResult result;
  expect(library.PrtLoadAssocTable(port_, &table, &result), "CAN_PrtLoadAssocTable");
  expect(library.ChnCreate(port_, CHN_ONE_TO_ONE, 0, &channel_), "CAN_ChnCreate");
  CAN_ChnConfigRec config = {};
  config.ecuAddress = kEcuAddress;
  expect(library.ChnConfig(channel_, &config), "CAN_ChnConfig");
  expect(library.ChnOpenSession(channel_), "CAN_ChnOpenSession");
  frame_.canId = kIdTx;
  frame_.length = 2;
  frame_.bytes[0] = 0x3E;
}

void HostSession::setMode(uint32_t mode) {
  uint8_t detail = 0;
  expect(library.DevSetMode(device_, mode, &detail), "CAN_DevSetMode");
}

bool HostSession::sendRequest() { return library.ChnSendDiag(channel_, &message_) == E_SUCCESS; }

bool HostSession::receiveAnswer(uint32_t timeoutMs) {
  CAN_EventChn *event = nullptr;
  uint32_t pending = 0;
  // A read right after one that took a record without waiting may come
  // back at once with nothing (the queue's stale signal): read again.
  CAN_STATUS status = library.ChnRxMsg(channel_, &event, &pending, timeoutMs);
  if (status == E_NO_EVENT)
    status = library.ChnRxMsg(channel_, &event, &pending, timeoutMs);
  if (status != E_SUCCESS)
    return false;
  const auto *result = static_cast<const CAN_ChnResult *>(event->data);
  const bool whole = event->type == CHN_TYPE_RCV_SUCCESS && result != nullptr &&
                     result->frameLength == sizeof kVinAnswer &&
                     std::memcmp(result->frameData, kVinAnswer, sizeof kVinAnswer) == 0;
  library.ChnFreeRxMsg(event);
  return whole;
}

bool HostSession::rawFrameRoundTrip() {
  uint8_t detail = 0;
  if (library.PrtSendTrame(port_, &frame_, &detail) != E_SUCCESS)
    return false;
  CAN_EventPort *event = nullptr;
  uint32_t pending = 0;
  CAN_STATUS status = library.PrtRxMsg(port_, &event, &pending, 1000);
  if (status == E_NO_EVENT)
    status = library.PrtRxMsg(port_, &event, &pending, 1000);
  if (status != E_SUCCESS)
    return false;
  const auto *frame = static_cast<const CAN_FramePort *>(event->data);
  const bool whole = event->type == PRT_TYPE_FRAME && frame != nullptr && frame->canId == kIdRx &&
                     frame->length == 2 && frame->bytes[0] == 0x7E;
  library.PrtFreeRxMsg(event);
  return whole;
}
