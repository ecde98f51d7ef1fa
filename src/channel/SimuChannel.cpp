#include "channel/SimuChannel.h"

#include "core/HexText.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "ecu/AnswerNotes.h"
#include "ecu/SimuECU.h"

#include <ace/Guard_T.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {
// The configuration warning names the address with "%02X".
ACE_WString addressText(ACE_UINT8 address) {
  static const wchar_t digits[] = L"0123456789ABCDEF";
  const wchar_t text[] = {digits[address >> 4], digits[address & 0xF], L'\0'};
  return ACE_WString(text);
}
} // namespace

SimuChannel::SimuChannel(ChannelPort &port, ACE_UINT32 channelType)
    : channelType(channelType), port(port) {}

SimuChannel::~SimuChannel() {
  // Records nobody read are released as CAN_ChnFreeRxMsg would release them.
  events.drain(releasePayload);
}

CAN_STATUS SimuChannel::configure(const CAN_ChnConfigRec &record) {
  if (record.startFrame == nullptr && record.startFrameLength != 0) {
    logMessage(L"CAN_ChnConfig: the start frame pointer is null for a frame of " +
               decimalText(record.startFrameLength) + L" bytes: configuration refused");
    return E_INVALID;
  }
  const ACE_WString startText = bytesToWideHex(record.startFrame, record.startFrameLength);
  {
    ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
    echo.ecuAddress = record.ecuAddress;
    echo.echoByte1 = record.echoByte1;
    echo.echoByte2 = record.echoByte2;
    echo.echoWord = record.echoWord;
    startFrameText = startText;
  }
  if (port.attachEcus(channelType, record.ecuAddress, ecus)) {
    configured = true;
    return E_SUCCESS;
  }
  // A failed configuration keeps `configured` as it was, with no ECU at all.
  logMessage(L"Warn : no simulation file found for ecu at addr $" + addressText(record.ecuAddress) +
             L" or ecu addr information not referenced in Assoc table");
  return E_INVALID;
}

CAN_STATUS SimuChannel::openSession() {
  if (!configured)
    return E_INVALID;
  if (channelType != CHN_ONE_TO_ONE) {
    ACE_WString startText;
    {
      ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
      startText = startFrameText;
    }
    exchange(nullptr, startText);
    sessionOpen = true;
    return E_SUCCESS;
  }
  // On a dead bus no ECU can take the dialog.
  if (port.channelsCutOff()) {
    sessionOpen = false;
    logMessage(L"Loss of communication: the box is unplugged, no ECU takes the session");
    return E_INVALID;
  }
  // Every ECU is asked: each check may re-read its scenario and advances
  // the rotation of its "OPENDIALOG" answer.
  sessionOpen = false;
  bool accepted = false;
  const bool notes = answerNotesWanted();
  for (SimuECU *ecu : port.copyOf(ecus)) {
    AnswerOrigin origin;
    if (ecu->isDialogOpen(notes ? &origin : nullptr))
      accepted = true;
    else if (notes)
      noteSessionRefused(*ecu, origin);
  }
  sessionOpen = accepted;
  return accepted ? E_SUCCESS : E_INVALID;
}

CAN_STATUS SimuChannel::closeSession() {
  if (!configured || !sessionOpen)
    return E_INVALID;
  sessionOpen = false;
  return E_SUCCESS;
}

CAN_STATUS SimuChannel::rxMsg(CAN_EventChn **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs) {
  *event = events.popForHost(timeoutMs, *pending);
  return *event != nullptr ? E_SUCCESS : E_NO_EVENT;
}

void SimuChannel::freeRxMsg(CAN_EventChn *event) {
  if (event == nullptr)
    return;
  releasePayload(*event);
  std::free(event);
}

void SimuChannel::releasePayload(CAN_EventChn &event) {
  if (event.request != nullptr) {
    auto *copy = static_cast<CAN_DiagMsg *>(event.request);
    std::free(copy->data);
    std::free(copy);
    event.request = nullptr;
  }
  if (event.data == nullptr)
    return;
  auto *result = static_cast<CAN_ChnResult *>(event.data);
  switch (event.type) {
  case CHN_TYPE_RCV_CORRUPTED_FRAME:
  case CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT:
  case CHN_TYPE_RCV_SUCCESS:
  case CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED:
    std::free(result->frameData);
    std::free(result);
    break;
  case CHN_TYPE_CRSNDDIAGFRAME:
  case CHN_TYPE_SEND_FAILED_CRNEG:
    std::free(result);
    break;
  default:
    return;
  }
  event.data = nullptr;
}

CAN_STATUS SimuChannel::endFifo() {
  if (sessionOpen)
    return E_INVALID;
  // A marker the queue refuses is lost; the call succeeds all the same.
  const CAN_EventChn marker = {};
  events.push(marker);
  return E_SUCCESS;
}

CAN_STATUS SimuChannel::free() {
  if (sessionOpen)
    return E_INVALID;
  port.removeChannel(*this);
  configured = false;
  return E_SUCCESS;
}

void SimuChannel::describe(CAN_ChnInfo &record) const {
  const Echo values = echoValues();
  record.echoWord = values.echoWord;
  record.echoByte2 = values.echoByte2;
  record.ecuAddress = values.ecuAddress;
  record.channelType = channelType;
  record.echoByte1 = values.echoByte1;
  record.sessionOpen = sessionOpen ? 1 : 0;
}

SimuChannel::Echo SimuChannel::echoValues() const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, Echo());
  return echo;
}
