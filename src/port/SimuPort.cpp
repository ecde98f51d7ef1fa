#include "port/SimuPort.h"

#include "channel/SimuChannel.h"
#include "core/CodeNames.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "ecu/SimuECU.h"

#include <ace/Guard_T.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>

namespace {

// The ECU table's fixed number of buckets.
const size_t kEcuBuckets = 32;

// Why CAN_PrtLoadAssocTable refused a table, in its result record.
const ACE_UINT8 kAssocWrongMode = 14;
const ACE_UINT8 kAssocEmpty = 6;

// The position in the baud-rate script. It belongs to the process, not to a
// port: neither a configuration re-read nor CAN_DrvEnd moves it back.
ACE_UINT32 baudRateCursor = 0;

// The statuses a DETBAUDRATE text may name, compared whole and
// case-sensitively; any other text gives 4.
CAN_STATUS statusOfDetectionText(const ACE_WString &text) {
  for (const CodeName &outcome : CodeNames::detectionOutcomes()) {
    const size_t length = std::strlen(outcome.name);
    bool same = text.length() == length;
    for (size_t i = 0; same && i < length; ++i)
      same = text[i] == static_cast<ACE_WCHAR_T>(outcome.name[i]);
    if (same)
      return static_cast<CAN_STATUS>(outcome.value);
  }
  return E_INVALID;
}

// The six fields of a CAN parameter block, and no other byte of it.
template <class From, class To> void copySixParameters(const From &from, To &to) {
  to.param1 = from.param1;
  to.param2 = from.param2;
  to.param3 = from.param3;
  to.param4 = from.param4;
  to.param5 = from.param5;
  to.param6 = from.param6;
}

} // namespace

SimuPort::SimuPort() : ecuByIdTx(kEcuBuckets) {
  // ACE's table is left without buckets when they cannot be allocated.
  if (ecuByIdTx.total_size() == 0)
    throw std::bad_alloc();
}

SimuPort::~SimuPort() {
  // Answers still on their way are released before their queues go.
  delayedAnswers.stop();
  assocEntries.reset();
  // Each channel gives its ECUs back before it goes, as CAN_ChnFree would.
  while (!channels.empty()) {
    SimuChannel *channel = *channels.begin();
    removeChannel(*channel);
    delete channel;
  }
  freeEcus.clear();
  ecuByIdTx.unbind_all();
  ownedEcus.clear();
  // Records nobody read are released as CAN_PrtFreeRxMsg would release them.
  events.drain(releasePayload);
}

CAN_STATUS SimuPort::stateFor(ACE_UINT32 required) const {
  if (!deviceConnected)
    return E_DISCONNECTED;
  return mode == required ? E_SUCCESS : E_INVALID;
}

CAN_STATUS SimuPort::reserve(ACE_UINT32 number, void **handle) {
  *handle = nullptr;
  if ((number & 0xFFu) != portNumber)
    return E_NOT_FOUND;
  bool wasReserved = false;
  if (!reserved.compare_exchange_strong(wasReserved, true))
    return E_ALREADY_RESERVED;
  *handle = this;
  return E_SUCCESS;
}

CAN_STATUS SimuPort::free() {
  // Frames still on their way to the port's queue go with the reservation.
  delayedAnswers.cancel(this);
  reserved = false;
  return E_SUCCESS;
}

void SimuPort::describe(CAN_EnumPort &record) const {
  record.resultByte = 0;
  record.portNumber = portNumber;
  record.reserved = reserved ? 1 : 0;
}

CAN_STATUS SimuPort::getMesPhys(CAN_MesPhysPort &record, bool checkState) const {
  if (checkState) {
    const CAN_STATUS state = stateFor(3);
    if (state != E_SUCCESS)
      return state;
  }
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  record.resultByte = 0;
  record.batteryVoltage = batteryVoltage;
  record.canHmin = canHmin;
  record.canHmax = canHmax;
  record.canLmin = canLmin;
  record.canLmax = canLmax;
  return E_SUCCESS;
}

CAN_STATUS SimuPort::setCanParam(const CAN_ParamPort &params) {
  const CAN_STATUS state = stateFor(1);
  if (state != E_SUCCESS)
    return state;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  copySixParameters(params, canParams);
  return E_SUCCESS;
}

CAN_STATUS SimuPort::getCanParam(CAN_ParamPort &params, bool checkState) const {
  if (checkState) {
    const CAN_STATUS state = stateFor(1);
    if (state != E_SUCCESS)
      return state;
  }
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  copySixParameters(canParams, params);
  return E_SUCCESS;
}

CAN_STATUS SimuPort::getState(CAN_StatePort &record, bool checkState) const {
  if (checkState && !deviceConnected)
    return E_DISCONNECTED;
  record.resultByte = 0;
  record.word4 = 1;
  record.word8 = 1;
  record.word12 = 0;
  record.bytes16[0] = 0;
  record.bytes16[1] = 0xFF;
  record.bytes16[2] = 0;
  record.bytes16[3] = 0;
  return E_SUCCESS;
}

CAN_STATUS SimuPort::checkReady() const { return stateFor(1); }

CAN_STATUS SimuPort::detBaudRate(const CAN_BaudSearchPort *request, CAN_BaudFoundPort *answer) {
  const CAN_STATUS state = stateFor(1);
  if (state != E_SUCCESS)
    return state;
  if (request == nullptr || request->candidateCount == 0 || answer == nullptr)
    return E_NULL_POINTER;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  // A re-read may have shortened the script below the cursor.
  if (baudRateCursor >= baudRateResults.size())
    baudRateCursor = 0;
  const bool succeeds =
      baudRateResults.size() == 0 || baudRateResults[baudRateCursor] == ACE_WString(L"E_SUCCESS");
  const CAN_STATUS outcome =
      succeeds ? E_SUCCESS : statusOfDetectionText(baudRateResults[baudRateCursor]);
  ++baudRateCursor;
  if (succeeds) {
    answer->resultByte = 0;
    answer->found = request->candidates[0];
  }
  return outcome;
}

CAN_STATUS SimuPort::loadAssocTable(const CAN_AssocTable &table, AssocResult &result) {
  if (!deviceConnected)
    return E_DISCONNECTED;
  if (mode != 1) {
    result.errorCode = kAssocWrongMode;
    result.zero = 0;
    return E_BOARD_ERROR_1;
  }
  if (table.count == 0) {
    result.errorCode = kAssocEmpty;
    result.zero = 0;
    return E_BOARD_ERROR_1;
  }
  if (table.entries == nullptr) {
    logMessage(L"CAN_PrtLoadAssocTable: the table holds " + decimalText(table.count) +
               L" entries but its entry pointer is null");
    return E_NULL_POINTER;
  }
  // Copied before the held table is released, so a refusal keeps it.
  std::unique_ptr<CAN_AssocEntry[]> copy;
  const ACE_UINT64 bytes = static_cast<ACE_UINT64>(table.count) * sizeof(CAN_AssocEntry);
  if (bytes <= std::numeric_limits<size_t>::max())
    copy.reset(new (std::nothrow) CAN_AssocEntry[table.count]);
  if (!copy) {
    logMessage(L"CAN_PrtLoadAssocTable: no memory for a table of " + decimalText(table.count) +
               L" entries");
    return E_INVALID;
  }
  std::memcpy(copy.get(), table.entries, table.count * sizeof(CAN_AssocEntry));
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  assocEntries = std::move(copy);
  assocCount = table.count;
  return E_SUCCESS;
}

bool SimuPort::addressByIdRx(ACE_UINT32 idRx, ACE_UINT8 &address) const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, false);
  for (ACE_UINT32 i = 0; i < assocCount; ++i) {
    if (assocEntries[i].idRx == idRx) {
      address = assocEntries[i].ecuAddress;
      return true;
    }
  }
  return false;
}

bool SimuPort::idTxByAddress(ACE_UINT8 address, ACE_UINT32 &idTx) const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, false);
  for (ACE_UINT32 i = 0; i < assocCount; ++i) {
    if (assocEntries[i].ecuAddress == address) {
      idTx = assocEntries[i].idTx;
      return true;
    }
  }
  return false;
}

std::vector<SimuECU *> SimuPort::ecusInTableOrder() const {
  std::vector<SimuECU *> ecus;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, ecus);
  ecus.reserve(ecuByIdTx.current_size());
  for (EcuTable::const_iterator it = ecuByIdTx.begin(); it != ecuByIdTx.end(); ++it)
    ecus.push_back((*it).int_id_);
  return ecus;
}

size_t SimuPort::freeEcuCount() const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, 0);
  return freeEcus.size();
}

CAN_STATUS SimuPort::createChannel(ACE_UINT32 type, void **handle) {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  // A broadcast channel can only be the port's first.
  if (type == CHN_BROADCAST && !channels.empty())
    return E_CHANNEL_REFUSED;
  std::unique_ptr<SimuChannel> channel(new SimuChannel(*this, type));
  if (!channel->events.usable())
    return E_INVALID;
  channels.insert(channel.get());
  *handle = channel.release();
  return E_SUCCESS;
}

CAN_STATUS SimuPort::enumerateChannels(CAN_EnumList &list) const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  const size_t count = channels.size();
  auto *records =
      static_cast<CAN_ChnInfo *>(std::calloc(count == 0 ? 1 : count, sizeof(CAN_ChnInfo)));
  if (records == nullptr) {
    logMessage(L"CAN_ChnEnumerate: no memory for " + decimalText(count) + L" channel records");
    return E_INVALID;
  }
  size_t i = 0;
  for (const SimuChannel *channel : channels)
    channel->describe(records[i++]);
  list.count = static_cast<ACE_UINT32>(count);
  list.records = records;
  return E_SUCCESS;
}

bool SimuPort::attachEcus(ACE_UINT32 type, ACE_UINT8 address, PointerSet<SimuECU> &set) {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, false);
  set.clear();
  ACE_UINT32 idTx = 0;
  const bool known = idTxByAddress(address, idTx);
  if (type == CHN_BROADCAST) {
    set = freeEcus;
    freeEcus.clear();
    return !set.empty();
  }
  SimuECU *ecu = nullptr;
  if (known && ecuByIdTx.find(idTx, ecu) == 0) {
    set.insert(ecu);
    freeEcus.remove(ecu);
  }
  return !set.empty();
}

void SimuPort::removeChannel(SimuChannel &channel) {
  // The channel's delayed answers go with it.
  delayedAnswers.cancel(&channel);
  ACE_GUARD(ACE_Recursive_Thread_Mutex, guard, lock);
  for (SimuECU *ecu : channel.ecus)
    freeEcus.insert(ecu);
  channels.remove(&channel);
}

std::vector<SimuECU *> SimuPort::copyOf(const PointerSet<SimuECU> &set) const {
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, std::vector<SimuECU *>());
  return std::vector<SimuECU *>(set.begin(), set.end());
}
