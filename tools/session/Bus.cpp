#include "session/Bus.h"

#include "Errors.h"
#include "core/HexText.h"
#include "names/StatusNames.h"
#include "output/Output.h"
#include "output/Records.h"
#include "session/DeviceSteps.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr uint32_t kPortNumber = 96;
// Answers are indented under the step or the request they belong to.
constexpr size_t kStepIndent = 6;
constexpr size_t kAnswerIndent = 4;
// A request shows this many bytes in a call's line, then its length.
constexpr size_t kShownBytes = 8;

// The candidate setting a baud-rate detection offers: 500 kbit/s.
const CAN_BaudSetting kCandidate = {
    {0x01, 0xF4, 0x00, 0x00, 0x0D, 0x02, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}};

std::string shownBytes(const Bytes &bytes) {
  if (bytes.size() <= kShownBytes)
    return spacedHex(bytes);
  return spacedHex(bytes.data(), kShownBytes) + " ... " + std::to_string(bytes.size()) + " bytes";
}

std::string identifiers(const BenchEcu &ecu) {
  return canIdText(ecu.idTxValue) + "/" + canIdText(ecu.idRxValue);
}

} // namespace

std::vector<BenchEcu> readBench(const std::string &configuration) {
  XmlSource bench;
  const XmlSource::Outcome outcome = bench.load(configuration);
  if (outcome == XmlSource::Outcome::Unreadable)
    throw SetupError("cannot read the configuration " + configuration);
  if (outcome == XmlSource::Outcome::NotXml)
    throw SetupError(configuration + " is not an XML configuration");
  return readBenchEcus(bench);
}

Bus::Bus(const Session &session, std::vector<BenchEcu> ecus, Voice voice)
    : session_(session), ecus_(std::move(ecus)), voice_(voice) {}

void Bus::step(const std::string &call, CAN_STATUS status, const std::string &note) const {
  if (voice_ == Voice::Json) {
    if (status != E_SUCCESS)
      printError(call + " answered " + statusText(status));
    return;
  }
  if (voice_ == Voice::Steps || status != E_SUCCESS)
    printStep(call, status, note);
}

void Bus::request(const std::string &call, const std::string &shown, CAN_STATUS status,
                  const std::string &meaning) const {
  if (voice_ == Voice::Steps)
    return printStep(call + "(" + shown + ")", status, meaning);
  if (voice_ == Voice::Json)
    return step(call, status, meaning);
  std::printf("> %s%s\n", shown.c_str(), meaning.empty() ? "" : ("  " + meaning).c_str());
  if (status != E_SUCCESS)
    printStep(call, status, "");
}

CAN_STATUS Bus::reservePort() {
  CAN_PRT_HANDLE handle = nullptr;
  const CAN_STATUS status = session_.api().PrtReservation(session_.device(), kPortNumber, &handle);
  step("CAN_PrtReservation(96)", status, status == E_SUCCESS ? "port 96 is ours" : "");
  if (status == E_SUCCESS)
    port_ = handle;
  return status;
}

CAN_STATUS Bus::freePort() {
  const CAN_STATUS status = session_.api().PrtFree(port_);
  step("CAN_PrtFree()", status, status == E_SUCCESS ? "port released" : "");
  if (status == E_SUCCESS)
    port_ = nullptr;
  return status;
}

CAN_STATUS Bus::loadAssocTable() {
  std::vector<CAN_AssocEntry> entries;
  std::string table, left;
  for (const BenchEcu &ecu : ecus_) {
    if (!ecu.usable())
      continue;
    if (!ecu.addressed) {
      left += (left.empty() ? "" : ", ") + ecu.label();
      continue;
    }
    CAN_AssocEntry entry{};
    entry.ecuAddress = ecu.address;
    entry.idTx = ecu.idTxValue;
    entry.idRx = ecu.idRxValue;
    entries.push_back(entry);
    table += (table.empty() ? "" : ", ") + ecu.label() + " " + identifiers(ecu);
  }
  // An empty table still passes a valid pointer: the library judges it.
  CAN_AssocEntry none{};
  const CAN_AssocTable assoc = {static_cast<uint32_t>(entries.size()),
                                entries.empty() ? &none : entries.data()};
  AssocResult result{};
  const CAN_STATUS status = session_.api().PrtLoadAssocTable(port_, &assoc, &result);
  assocLoaded_ = assocLoaded_ || status == E_SUCCESS;
  step("CAN_PrtLoadAssocTable(" + std::to_string(entries.size()) + " ECUs)", status,
       status == E_SUCCESS ? "built from the bench"
                           : "error code " + std::to_string(result.errorCode));
  if (voice_ == Voice::Steps && status == E_SUCCESS) {
    printDetail(kStepIndent, table);
    if (!left.empty())
      printDetail(kStepIndent, "left out (no one-byte targetAddress): " + left);
  }
  return status;
}

CAN_STATUS Bus::detectBaudRate() {
  CAN_BaudSearchPort search{};
  search.candidateCount = 1;
  search.candidates[0] = kCandidate;
  CAN_BaudFoundPort found{};
  const CAN_STATUS status = session_.api().PrtDetBaudRate(port_, &search, &found);
  step("CAN_PrtDetBaudRate(1 candidate)", status,
       status == E_SUCCESS ? "the bus runs at the candidate (500 kbit/s)" : "");
  return status;
}

CAN_STATUS Bus::showMeasures() {
  CAN_MesPhysPort values{};
  const CAN_STATUS status = session_.api().PrtGetMesPhys(port_, &values);
  step("CAN_PrtGetMesPhys()", status, status == E_SUCCESS ? describeMeasures(values) : "");
  return status;
}

CAN_STATUS Bus::sendFrame(uint32_t id, const Bytes &frame) {
  CAN_FramePort record{};
  record.canId = id;
  record.length = static_cast<uint32_t>(std::min(frame.size(), kFrameBytes));
  std::copy(frame.begin(), frame.begin() + record.length, record.bytes);
  uint8_t detail = 0;
  const CAN_STATUS status = session_.api().PrtSendTrame(port_, &record, &detail);
  request("CAN_PrtSendTrame", canIdText(id) + ": " + spacedHex(record.bytes, record.length), status,
          requestMeaning(record.bytes, record.length));
  return status;
}

CAN_STATUS Bus::createChannel(const BenchEcu *ecu, const Bytes &startFrame) {
  const DriverApi &api = session_.api();
  const uint32_t type = ecu != nullptr ? CHN_ONE_TO_ONE : CHN_BROADCAST;
  CAN_CHN_HANDLE handle = nullptr;
  const CAN_STATUS created = api.ChnCreate(port_, type, 0, &handle);
  step(std::string("CAN_ChnCreate(") + (ecu != nullptr ? "one-to-one" : "broadcast") + ")", created,
       created == E_CHANNEL_REFUSED ? "a broadcast channel must be the port's first" : "");
  if (created != E_SUCCESS)
    return created;
  channels_.push_back({handle, ecu == nullptr, false});

  // The start frame's bytes need a valid pointer even when there are none.
  Bytes frame = startFrame;
  frame.push_back(0);
  CAN_ChnConfigRec config{};
  config.ecuAddress = ecu != nullptr ? ecu->address : 0;
  config.startFrameLength = static_cast<uint32_t>(startFrame.size());
  config.startFrame = frame.data();
  const CAN_STATUS configured = api.ChnConfig(handle, &config);
  std::string call = "CAN_ChnConfig(";
  std::string note;
  if (ecu != nullptr) {
    call += "ECU " + hexByte(ecu->address) + ")";
    note = ecu->name() + ", " + identifiers(*ecu);
  } else {
    call += (startFrame.empty() ? "broadcast" : "start " + shownBytes(startFrame)) + ")";
    note = "broadcast to every free ECU";
  }
  step(call, configured, configured == E_SUCCESS ? note : "no ECU found for it");
  if (configured != E_SUCCESS) {
    const CAN_STATUS freed = api.ChnFree(handle);
    step("CAN_ChnFree()", freed, freed == E_SUCCESS ? "channel freed" : "");
    if (freed == E_SUCCESS)
      channels_.pop_back();
  }
  return configured;
}

CAN_STATUS Bus::openSession() {
  const CAN_STATUS status = session_.api().ChnOpenSession(channel());
  const char *opened = broadcast() ? "start frame sent" : "session open";
  if (status == E_SUCCESS)
    channels_.back().open = true;
  step("CAN_ChnOpenSession()", status,
       status == E_SUCCESS ? opened : "not configured, or the ECU refuses the dialog");
  return status;
}

CAN_STATUS Bus::closeSession() {
  const CAN_STATUS status = session_.api().ChnCloseSession(channel());
  step("CAN_ChnCloseSession()", status, status == E_SUCCESS ? "session closed" : "no session open");
  if (status == E_SUCCESS)
    channels_.back().open = false;
  return status;
}

CAN_STATUS Bus::sendRequest(const Bytes &bytes) {
  // The request's bytes need a valid pointer even when there are none.
  Bytes data = bytes;
  data.push_back(0);
  const CAN_DiagMsg message = {0, static_cast<uint32_t>(bytes.size()), data.data()};
  const CAN_STATUS status = session_.api().ChnSendDiag(channel(), &message);
  request("CAN_ChnSendDiag", shownBytes(bytes), status, requestMeaning(bytes.data(), bytes.size()));
  return status;
}

CAN_STATUS Bus::freeChannel() {
  const CAN_STATUS status = session_.api().ChnFree(channel());
  step("CAN_ChnFree()", status, status == E_SUCCESS ? "channel freed" : "close the session first");
  if (status == E_SUCCESS)
    channels_.pop_back();
  return status;
}

namespace {

ReadEvent fieldsOf(const CAN_EventChn &event) {
  ReadEvent fields;
  fields.type = event.type;
  const char *name = channelEventName(event.type);
  fields.name = name != nullptr ? name : std::to_string(event.type);
  const auto *result = static_cast<const CAN_ChnResult *>(event.data);
  if (result == nullptr)
    return fields;
  fields.resultCode = result->resultCode;
  const bool framed = event.type == CHN_TYPE_RCV_CORRUPTED_FRAME ||
                      event.type == CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT ||
                      event.type == CHN_TYPE_RCV_SUCCESS ||
                      event.type == CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED;
  if (framed && result->frameData != nullptr)
    fields.frame = bytesToHex(result->frameData, result->frameLength).c_str();
  return fields;
}

ReadEvent fieldsOf(const CAN_EventPort &event) {
  ReadEvent fields;
  fields.type = event.type;
  const char *name = portEventName(event.type);
  fields.name = name != nullptr ? name : std::to_string(event.type);
  const auto *frame = static_cast<const CAN_FramePort *>(event.data);
  if (event.type == PRT_TYPE_FRAME && frame != nullptr)
    fields.frame = bytesToHex(frame->bytes, frame->length < 8 ? frame->length : 8).c_str();
  return fields;
}

} // namespace

template <class Event, class Read, class Describe, class Free>
Reading Bus::readEvents(const char *name, uint32_t timeoutMs, bool untilEmpty, const Read &read,
                        const Describe &describe, const Free &release,
                        const std::function<void()> &wake, const char *endFifo) const {
  const size_t indent = voice_ == Voice::Steps ? kStepIndent : kAnswerIndent;
  Reading reading;
  for (unsigned count = 0;; ++count) {
    Event *event = nullptr;
    uint32_t pending = 0;
    bool cut = false;
    const CAN_STATUS status =
        readCancellable(session_.wait(), wake, read, release, &event, &pending, cut);
    reading.status = status;
    if (cut) {
      printCutWait(name, timeoutMs, endFifo);
      return reading;
    }
    if (status != E_SUCCESS || event == nullptr) {
      if (voice_ == Voice::Json || quietMisses_)
        return reading;
      if (voice_ == Voice::Steps)
        printStep(waitCall(name, timeoutMs), status,
                  status != E_NO_EVENT        ? ""
                  : count == 0 && !untilEmpty ? "no answer"
                                              : "queue empty");
      else if (count == 0)
        std::printf("< no answer: %s %s\n", name, statusText(status).c_str());
      return reading;
    }
    reading.read.push_back(fieldsOf(*event));
    if (voice_ != Voice::Json) {
      const EventText text = describe(*event, kLineWidth - indent);
      if (voice_ == Voice::Steps)
        printStep(waitCall(name, timeoutMs), status, text.summary);
      else
        std::printf("< %s\n", text.summary.c_str());
      for (const std::string &line : text.details)
        printDetail(indent, line);
    }
    reading.endOfReception = reading.endOfReception || event->type == CHN_TYPE_END_OF_RCV;
    reading.answers += event->type != 0 && event->type != CHN_TYPE_END_OF_RCV;
    ++reading.events;
    release(event);
    if (pending == 0 && !untilEmpty)
      return reading;
  }
}

Reading Bus::readChannel(uint32_t timeoutMs, bool untilEmpty) {
  const DriverApi &api = session_.api();
  CAN_CHN_HANDLE handle = channel();
  return readEvents<CAN_EventChn>(
      "CAN_ChnRxMsg", timeoutMs, untilEmpty,
      [&](CAN_EventChn **event, uint32_t *pending) {
        return api.ChnRxMsg(handle, event, pending, timeoutMs);
      },
      describeChannelEvent, api.ChnFreeRxMsg, [&] { api.ChnEndFifo(handle); }, "CAN_ChnEndFifo");
}

Reading Bus::readPort(uint32_t timeoutMs, bool untilEmpty) {
  const DriverApi &api = session_.api();
  return readEvents<CAN_EventPort>(
      "CAN_PrtRxMsg", timeoutMs, untilEmpty,
      [&](CAN_EventPort **event, uint32_t *pending) {
        return api.PrtRxMsg(port_, event, pending, timeoutMs);
      },
      describePortEvent, api.PrtFreeRxMsg, [&] { api.PrtEndFifo(port_); }, "CAN_PrtEndFifo");
}

void Bus::drainChannel() {
  const DriverApi &api = session_.api();
  CAN_EventChn *event = nullptr;
  uint32_t pending = 0;
  while (api.ChnRxMsg(channel(), &event, &pending, 1) == E_SUCCESS && event != nullptr)
    api.ChnFreeRxMsg(event);
}
