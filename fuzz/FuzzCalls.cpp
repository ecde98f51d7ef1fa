// A host's sequence of export calls, read from the input: each step picks an
// export and its arguments from a small pool of handles (null among them),
// records and values. The pool holds only what the contract allows a host to
// pass: handles the library gave and has not taken back, or null. Records
// the library hands out are released as a host must. The two calls that
// block for half a second or more (reset, firmware download) are left out.
#include "FuzzSupport.h"
#include "cansimu/cansimu.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

const char *const kArmable[] = {
    "CAN_DevEnumerate",      "CAN_DevReservation",  "CAN_DevSetMode",     "CAN_DevGetMode",
    "CAN_DevGetConfig",      "CAN_DevGetTension",   "CAN_DevGetVersion",  "CAN_DevSetSleep",
    "CAN_DevRunTest",        "CAN_PrtEnumerate",    "CAN_PrtReservation", "CAN_PrtGetMesPhys",
    "CAN_PrtSetVoie",        "CAN_PrtSetCanParam",  "CAN_PrtGetCanParam", "CAN_PrtDetBaudRate",
    "CAN_PrtLoadAssocTable", "CAN_PrtPortGetState", "CAN_PrtSendTrame",   "CAN_ChnEnumerate",
    "CAN_ChnCreate",         "CAN_ChnConfig",       "CAN_ChnOpenSession", "CAN_ChnCloseSession",
    "CAN_ChnSendDiag",       "CAN_DrvRxMsg",        "CAN_DevRxMsg",       "CAN_PrtRxMsg",
    "not an export"};

class Host {
public:
  Host() {
    const std::string scenario = (fuzz::scratchFolder() / "ecu.xml").string();
    const std::string scenarioXml =
        "<S><EVENEMENT><REQUETE><T>10</T></REQUETE><REPONSE><TRAME>5001</TRAME><TRAME>"
        "CHN_TYPE_SEND_FAILED_CRNEG,7F10,cNok</TRAME></REPONSE></EVENEMENT><EVENEMENT><REQUETE>"
        "<T>3E</T></REQUETE><REPONSE><TRAME>CHN_TYPE_REQ_1_0_EMITTED</TRAME></REPONSE>"
        "</EVENEMENT></S>";
    fuzz::writeScratch("ecu.xml", reinterpret_cast<const uint8_t *>(scenarioXml.data()),
                       scenarioXml.size());
    for (int plugged = 0; plugged < 2; ++plugged) {
      const std::string xml =
          "<B><CAN_SERIALNUMBER>F</CAN_SERIALNUMBER><CAN_DEVICESTATE>" +
          std::string(plugged ? "DEV_TYPE_RCON" : "OFF") +
          "</CAN_DEVICESTATE><DETBAUDRATE>E_SUCCESS</DETBAUDRATE><DETBAUDRATE>E_BUSOFF"
          "</DETBAUDRATE><UCE scenario='" +
          scenario + "' targetAddress='1' idRx='7E8' idTx='7E0'/><UCE scenario='" + scenario +
          "' targetAddress='2' idRx='7E9' idTx='7E1'/></B>";
      configs_[plugged] = xml;
    }
    configPath_ = writeConfig(1);
  }

  void run(fuzz::Choices &in) {
    init();
    for (int step = 0; step < 64 && in.more(); ++step)
      call(in);
    end();
  }

private:
  std::string writeConfig(int plugged) {
    const std::string &xml = configs_[plugged];
    const std::string path =
        fuzz::writeScratch("calls.xml", reinterpret_cast<const uint8_t *>(xml.data()), xml.size());
    fuzz::touchLater(path);
    return path;
  }
  void init() {
    CAN_DrvInit(configPath_.c_str());
    device_ = nullptr;
    port_ = nullptr;
    CAN_DEV_HANDLE device = nullptr;
    if (CAN_DevReservation("F", &device) == E_SUCCESS && device != nullptr)
      device_ = device;
    CAN_PRT_HANDLE port = nullptr;
    if (device_ != nullptr && CAN_PrtReservation(device_, 96, &port) == E_SUCCESS &&
        port != nullptr)
      port_ = port;
  }
  void end() {
    releaseEvents();
    CAN_DrvEnd();
    device_ = nullptr;
    port_ = nullptr;
    channels_.clear();
  }
  void releaseEvents() {
    for (CAN_EventDrv *event : driverEvents_)
      CAN_DrvFreeRxMsg(event);
    for (CAN_EventDev *event : deviceEvents_)
      CAN_DevFreeRxMsg(event);
    for (CAN_EventPort *event : portEvents_)
      CAN_PrtFreeRxMsg(event);
    for (CAN_EventChn *event : channelEvents_)
      CAN_ChnFreeRxMsg(event);
    driverEvents_.clear();
    deviceEvents_.clear();
    portEvents_.clear();
    channelEvents_.clear();
  }

  // A handle of the pool, or (one time in eight) null.
  CAN_DEV_HANDLE device(fuzz::Choices &in) { return in.below(8) == 0 ? nullptr : device_; }
  CAN_PRT_HANDLE port(fuzz::Choices &in) { return in.below(8) == 0 ? nullptr : port_; }
  CAN_CHN_HANDLE channel(fuzz::Choices &in) {
    const size_t pick = in.below(channels_.size() + 1);
    return pick == channels_.size() ? nullptr : channels_[pick];
  }
  template <class T> T *record(fuzz::Choices &in, T &value) {
    return in.below(16) == 0 ? nullptr : &value;
  }

  void call(fuzz::Choices &in) {
    uint32_t pending = 0;
    uint8_t detail = 0;
    switch (in.below(24)) {
    case 0:
      end();
      init();
      break;
    case 1: {
      CAN_EventDrv *event = nullptr;
      if (CAN_DrvRxMsg(record(in, event), &pending, 1 + in.below(2)) == E_SUCCESS)
        driverEvents_.push_back(event);
      break;
    }
    case 2:
      CAN_DrvEndFifo();
      CAN_DevEndFifo(device(in));
      CAN_PrtEndFifo(port(in));
      CAN_ChnEndFifo(channel(in));
      break;
    case 3: {
      CAN_EnumList list = {};
      if (CAN_DevEnumerate(record(in, list)) == E_SUCCESS)
        std::free(list.records);
      list = {};
      if (CAN_PrtEnumerate(device(in), record(in, list)) == E_SUCCESS)
        std::free(list.records);
      list = {};
      if (CAN_ChnEnumerate(port(in), record(in, list)) == E_SUCCESS)
        std::free(list.records);
      break;
    }
    case 4: {
      CAN_DEV_HANDLE out = nullptr;
      CAN_DevReservation(in.below(4) == 0 ? "G" : "F", record(in, out));
      CAN_DevFree(device(in));
      break;
    }
    case 5:
      CAN_DevSetMode(device(in), in.below(5), record(in, detail));
      break;
    case 6: {
      CAN_ModeDev mode;
      // An armed status answers without filling the record: its port array
      // must read null then, as a host's zeroed record does.
      CAN_ConfigDev config = {};
      CAN_TensionDev tension;
      CAN_VersionDev version;
      CAN_TestDev test;
      CAN_DevGetMode(device(in), record(in, mode));
      if (CAN_DevGetConfig(device(in), record(in, config)) == E_SUCCESS)
        std::free(config.ports);
      CAN_DevGetTension(device(in), record(in, tension));
      CAN_DevGetVersion(device(in), record(in, version));
      CAN_DevSetSleep(device(in));
      CAN_DevRunTest(device(in), in.byte(), record(in, test));
      CAN_DevSndGenericFrame(device(in), record(in, detail));
      CAN_DevAutoConfig(device(in));
      CAN_DevAutoConfigRaz(device(in));
      break;
    }
    case 7: {
      CAN_EventDev *event = nullptr;
      if (CAN_DevRxMsg(device(in), record(in, event), &pending, 1) == E_SUCCESS)
        deviceEvents_.push_back(event);
      break;
    }
    case 8: {
      CAN_PRT_HANDLE out = nullptr;
      const uint32_t numbers[] = {96, 0x160, 97};
      CAN_PrtReservation(device(in), numbers[in.below(3)], record(in, out));
      if (in.below(4) == 0)
        CAN_PrtFree(port(in));
      break;
    }
    case 9: {
      CAN_MesPhysPort measures;
      CAN_ParamPort params = {};
      CAN_StatePort state;
      params.param4 = in.word();
      CAN_PrtGetMesPhys(port(in), record(in, measures));
      CAN_PrtSetCanParam(port(in), record(in, params));
      CAN_PrtGetCanParam(port(in), record(in, params));
      CAN_PrtPortGetState(port(in), record(in, state));
      break;
    }
    case 10: {
      struct {
        CAN_BaudSearchPort search;
        CAN_BaudSetting more[2];
      } request = {};
      request.search.candidateCount = static_cast<uint8_t>(in.below(3));
      CAN_BaudFoundPort found;
      CAN_PrtDetBaudRate(port(in), record(in, request.search), record(in, found));
      break;
    }
    case 11: {
      CAN_AssocEntry entries[4] = {};
      for (CAN_AssocEntry &entry : entries) {
        entry.ecuAddress = static_cast<uint8_t>(in.below(4));
        entry.idTx = 0x7E0 + static_cast<uint32_t>(in.below(3));
        entry.idRx = 0x7E8 + static_cast<uint32_t>(in.below(3));
      }
      const uint32_t count = static_cast<uint32_t>(in.below(5));
      CAN_AssocTable table = {count, in.below(16) == 0 ? nullptr : entries};
      AssocResult result;
      CAN_PrtLoadAssocTable(port(in), record(in, table), record(in, result));
      break;
    }
    case 12: {
      const char filter[8] = {};
      CAN_PrtSetVoie(port(in), in.byte(), record(in, detail));
      CAN_PrtSetHardFilt(port(in), filter, record(in, detail));
      CAN_PrtSetSoftFilt(port(in), filter, record(in, detail));
      CAN_PrtSetParamFlux(port(in), filter, 0);
      CAN_PrtRegulationOn(port(in), 0, filter);
      CAN_PrtRegulationOff(port(in), filter);
      CAN_PrtSetSndCycl(port(in), filter, 0, record(in, detail));
      CAN_PrtActSndCycl(port(in), 0, record(in, detail));
      CAN_PrtUpdSndCycl(port(in), filter, record(in, detail));
      CAN_PrtDActSndCycl(port(in), 0, record(in, detail));
      CAN_PrtDelSndCycl(port(in), 0, record(in, detail));
      CAN_PrtCtrlReinit(port(in), filter);
      break;
    }
    case 13: {
      const uint32_t ids[] = {0x7E0, 0x7E1, CAN_BROADCAST_ID, 0x123};
      CAN_FramePort frame = {ids[in.below(4)], 0, 0, static_cast<uint32_t>(in.below(10)), {}, 0};
      for (uint8_t &byte : frame.bytes)
        byte = in.byte();
      CAN_PrtSendTrame(port(in), record(in, frame), record(in, detail));
      break;
    }
    case 14: {
      CAN_EventPort *event = nullptr;
      if (CAN_PrtRxMsg(port(in), record(in, event), &pending, 1) == E_SUCCESS)
        portEvents_.push_back(event);
      break;
    }
    case 15: {
      CAN_CHN_HANDLE out = nullptr;
      if (CAN_ChnCreate(port(in), static_cast<uint32_t>(in.below(3)), 0, record(in, out)) ==
              E_SUCCESS &&
          out != nullptr)
        channels_.push_back(out);
      break;
    }
    case 16: {
      uint8_t start[8];
      for (uint8_t &byte : start)
        byte = in.byte();
      CAN_ChnConfigRec config = {};
      config.ecuAddress = static_cast<uint8_t>(in.below(4));
      config.startFrameLength = static_cast<uint32_t>(in.below(9));
      config.startFrame = in.below(16) == 0 ? nullptr : start;
      CAN_ChnConfig(channel(in), record(in, config));
      break;
    }
    case 17:
      if (in.below(2) == 0)
        CAN_ChnOpenSession(channel(in));
      else
        CAN_ChnCloseSession(channel(in));
      break;
    case 18: {
      uint8_t bytes[16];
      for (uint8_t &byte : bytes)
        byte = in.byte() % 4 == 0 ? 0x10 : 0x3E;
      CAN_DiagMsg request = {in.word(), static_cast<uint32_t>(in.below(17)),
                             in.below(16) == 0 ? nullptr : bytes};
      CAN_ChnSendDiag(channel(in), record(in, request));
      break;
    }
    case 19: {
      CAN_EventChn *event = nullptr;
      if (CAN_ChnRxMsg(channel(in), record(in, event), &pending, 1) == E_SUCCESS)
        channelEvents_.push_back(event);
      break;
    }
    case 20: {
      // A channel leaves the pool only when the library destroyed it.
      const size_t pick = in.below(channels_.size() + 1);
      if (pick == channels_.size())
        CAN_ChnFree(nullptr);
      else if (CAN_ChnFree(channels_[pick]) == E_SUCCESS)
        channels_.erase(channels_.begin() + static_cast<long>(pick));
      break;
    }
    case 21:
      setNextCANStatus(kArmable[in.below(sizeof kArmable / sizeof kArmable[0])],
                       in.below(4) == 0 ? in.word() : static_cast<uint32_t>(in.below(330)),
                       in.byte());
      break;
    case 22:
      releaseEvents();
      break;
    case 23:
      configPath_ = writeConfig(static_cast<int>(in.below(2)));
      break;
    }
  }

  std::string configs_[2];
  std::string configPath_;
  CAN_DEV_HANDLE device_ = nullptr;
  CAN_PRT_HANDLE port_ = nullptr;
  std::vector<CAN_CHN_HANDLE> channels_;
  std::vector<CAN_EventDrv *> driverEvents_;
  std::vector<CAN_EventDev *> deviceEvents_;
  std::vector<CAN_EventPort *> portEvents_;
  std::vector<CAN_EventChn *> channelEvents_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static Host host;
  fuzz::Choices in(data, size);
  host.run(in);
  return 0;
}
