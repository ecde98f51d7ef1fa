// The port event queue: the host's timed read, the end marker, the release
// of records, and the events a test harness injects, each with its payload.
#include "port/SimuPort.h"

#include <cstdlib>
#include <cstring>

namespace {

// The plain payloads of injectable types: zeroed bytes, the harness's value
// at byte 0 where `value` says so, and 1 at byte 4 where `flagAt4` does.
// 311, 313 and 320 carry a record the port fills; 324 and 325 carry nothing.
struct PlainPayload {
  ACE_INT32 firstType, lastType;
  size_t size;
  bool value, flagAt4;
};
const PlainPayload kPlainPayloads[] = {
    {300, 306, 1, true, false},
    {307, 307, 16, true, true},
    {308, 309, 1, true, false},
    {310, 310, 12, true, false},
    {312, 312, 2, true, false},
    {314, 314, 12, true, false},
    {315, 315, 8, true, false},
    {316, 319, 1, true, false},
    {321, 321, 16, true, true},
    {322, 322, 1, true, false},
    {323, 323, sizeof(CAN_FramePort), false, false},
    {400, 400, 24, true, false},
    {401, 401, 24, false, false},
};

bool isKnownType(ACE_INT32 type) {
  return (type >= 300 && type <= 325) || type == 400 || type == 401;
}

// Types whose record carries a payload that CAN_PrtFreeRxMsg releases.
bool carriesPayload(ACE_UINT32 type) {
  return (type >= 300 && type <= 323) || type == 400 || type == 401;
}

// A zeroed, malloc'd record the port fills with `fill`; null without memory.
template <class Record, class Fill> void *filledRecord(Fill fill) {
  auto *record = static_cast<Record *>(std::calloc(1, sizeof(Record)));
  if (record != nullptr)
    fill(*record);
  return record;
}

} // namespace

CAN_STATUS SimuPort::rxMsg(CAN_EventPort **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs) {
  if (!deviceConnected)
    return E_DISCONNECTED;
  *event = events.popForHost(timeoutMs, *pending);
  return *event != nullptr ? E_SUCCESS : E_NO_EVENT;
}

CAN_STATUS SimuPort::endFifo() {
  return queueEvent(PRT_TYPE_ENDFIFO, nullptr) ? E_SUCCESS : E_INVALID;
}

void SimuPort::freeRxMsg(CAN_EventPort *event) {
  if (event == nullptr)
    return;
  releasePayload(*event);
  std::free(event);
}

void SimuPort::releasePayload(CAN_EventPort &event) {
  if (carriesPayload(event.type))
    std::free(event.data);
  event.data = nullptr;
}

void SimuPort::injectEvent(ACE_INT32 type, ACE_UINT8 value) {
  if (type == static_cast<ACE_INT32>(PRT_TYPE_ENDFIFO)) {
    endFifo();
    return;
  }
  if (!isKnownType(type))
    return;
  void *payload = buildInjectedPayload(type, value);
  // A payload that cannot be allocated loses the event, as a full queue would.
  if (payload == nullptr && type != 324 && type != 325)
    return;
  queueEvent(static_cast<ACE_UINT32>(type), payload);
}

void *SimuPort::buildInjectedPayload(ACE_INT32 type, ACE_UINT8 value) const {
  // The records are filled by the getters without their state checks.
  switch (type) {
  case PRT_TYPE_CAN_PARAM:
    return filledRecord<CAN_ParamPort>([this](CAN_ParamPort &r) { getCanParam(r, false); });
  case PRT_TYPE_STATE:
    return filledRecord<CAN_StatePort>([this](CAN_StatePort &r) { getState(r, false); });
  case PRT_TYPE_MES_PHYS:
    return filledRecord<CAN_MesPhysPort>([this](CAN_MesPhysPort &r) { getMesPhys(r, false); });
  default:
    break;
  }
  for (const PlainPayload &shape : kPlainPayloads) {
    if (type < shape.firstType || type > shape.lastType)
      continue;
    auto *bytes = static_cast<unsigned char *>(std::calloc(1, shape.size));
    if (bytes != nullptr && shape.value)
      bytes[0] = value;
    if (bytes != nullptr && shape.flagAt4)
      bytes[4] = 1;
    return bytes;
  }
  return nullptr;
}

bool SimuPort::queueEvent(ACE_UINT32 type, void *payload) {
  CAN_EventPort event = {};
  event.type = type;
  event.data = payload;
  if (events.push(event) == 0)
    return true;
  std::free(payload);
  return false;
}
