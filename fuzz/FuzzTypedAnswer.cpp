// A scenario answer as the exchange splits it into an event: the input is the
// text of a TRAME, answered to a broadcast and a one-to-one channel, by an ECU
// in the association table and by one outside it (whose answer goes to the
// port). Every record is read back and released.
#include "FuzzSupport.h"
#include "cansimu/cansimu.h"

#include <string>

namespace {

struct Bench {
  std::string scenario;
  CAN_PRT_HANDLE port = nullptr;
  CAN_CHN_HANDLE channels[2] = {};
};

std::string escaped(const uint8_t *data, size_t size) {
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    if (c == '&')
      text += "&amp;";
    else if (c == '<')
      text += "&lt;";
    else if (c == '>')
      text += "&gt;";
    else if (data[i] >= 0x20 || c == '\t' || c == '\n' || c == '\r')
      text += c;
  }
  return text;
}

void writeScenario(const Bench &bench, const std::string &answer) {
  const std::string xml = "<S><EVENEMENT><REQUETE><T>10</T></REQUETE><REPONSE><TRAME>" + answer +
                          "</TRAME></REPONSE></EVENEMENT></S>";
  fuzz::writeScratch("answer.xml", reinterpret_cast<const uint8_t *>(xml.data()), xml.size());
  fuzz::touchLater(bench.scenario);
}

Bench &bench() {
  static Bench made = [] {
    Bench b;
    b.scenario = (fuzz::scratchFolder() / "answer.xml").string();
    writeScenario(b, "50");
    const std::string config = "<B><CAN_SERIALNUMBER>F</CAN_SERIALNUMBER><UCE scenario='" +
                               b.scenario + "' targetAddress='1' idRx='7E8' idTx='7E0'/>" +
                               "<UCE scenario='" + b.scenario +
                               "' targetAddress='2' idRx='7E9' idTx='7E1'/></B>";
    const std::string path = fuzz::writeScratch(
        "bench.xml", reinterpret_cast<const uint8_t *>(config.data()), config.size());
    CAN_DrvInit(path.c_str());
    CAN_DEV_HANDLE device = nullptr;
    uint8_t detail = 0;
    CAN_DevReservation("F", &device);
    CAN_PrtReservation(device, 96, &b.port);
    CAN_DevSetMode(device, 1, &detail);
    CAN_AssocEntry entry = {{}, 0x10, {}, 0x7E0, 0x7E8, 0};
    const CAN_AssocTable table = {1, &entry};
    AssocResult result;
    CAN_PrtLoadAssocTable(b.port, &table, &result);
    const uint32_t types[2] = {CHN_BROADCAST, CHN_ONE_TO_ONE};
    for (int i = 0; i < 2; ++i) {
      CAN_ChnCreate(b.port, types[i], 0, &b.channels[i]);
      CAN_ChnConfigRec config = {};
      config.ecuAddress = 0x10;
      CAN_ChnConfig(b.channels[i], &config);
      CAN_ChnOpenSession(b.channels[i]);
    }
    return b;
  }();
  return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Bench &b = bench();
  writeScenario(b, escaped(data, size));
  uint8_t bytes[] = {0x10};
  const CAN_DiagMsg request = {0, 1, bytes};
  // Everything is queued before the calls return: read until none is left.
  uint32_t pending = 0;
  for (CAN_CHN_HANDLE channel : b.channels) {
    CAN_ChnSendDiag(channel, &request);
    CAN_EventChn *event = nullptr;
    while (CAN_ChnRxMsg(channel, &event, &pending, 1) == E_SUCCESS) {
      CAN_ChnFreeRxMsg(event);
      if (pending == 0)
        break;
    }
  }
  CAN_EventPort *frame = nullptr;
  while (CAN_PrtRxMsg(b.port, &frame, &pending, 1) == E_SUCCESS) {
    CAN_PrtFreeRxMsg(frame);
    if (pending == 0)
      break;
  }
  return 0;
}
