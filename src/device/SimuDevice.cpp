#include "device/SimuDevice.h"

#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "platform/AppendBuffer.h"
#include "platform/CodePage.h"
#include "platform/TDomData.h"

#include <ace/Guard_T.h>
#include <ace/OS_NS_stdlib.h>
#include <ace/OS_NS_unistd.h>
#include <ace/Time_Value.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// The device's reset takes as long as the real box's processor reset.
const ACE_Time_Value kResetDuration(0, 500000);
const unsigned char kResetValue = 0xF4;

// Host record text fields hold 10 characters and the terminating zero.
constexpr size_t kVersionTextField = 11;

// The first element named `tag` anywhere in the document.
bool firstElement(const TDomData &document, const ACE_WString &tag, TDomData &element) {
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(tag, found, true);
  if (found.size() == 0)
    return false;
  element = found[0];
  return true;
}

ACE_WString contentOf(const TDomData &element) {
  ACE_WString text;
  element.getContent(text);
  return text;
}

ACE_WString attributeOf(const TDomData &element, const ACE_WString &name) {
  ACE_WString value;
  element.getAttributeValue(name, value);
  return value;
}

// A voltage attribute as strtod reads it in the "C" locale, narrowed to a
// float. Text with no number gives 0 and a value beyond the float range its
// infinity; both are logged so that a tester sees why the host reads them.
float voltageFrom(const ACE_WString &name, const ACE_WString &text) {
  const DecimalReading reading = readDecimal(text);
  if (!reading.isNumber)
    logMessage(ACE_WString(L"VOLTAGES ") + name + ACE_WString(L" <") + text +
               ACE_WString(L"> holds no number: read as 0"));
  if (reading.beyondFloat)
    logMessage(ACE_WString(L"VOLTAGES ") + name + ACE_WString(L" <") + text +
               ACE_WString(L"> is beyond a 32-bit float: read as infinite"));
  return reading.value;
}

// Copies a version text into its 11-byte host field, zero-filled. A text
// longer than 10 bytes is cut to its first 10, and the cut is logged.
void copyVersionText(char (&field)[kVersionTextField], const ACE_CString &text,
                     const wchar_t *name) {
  std::memset(field, 0, sizeof field);
  const size_t length = std::min<size_t>(text.length(), sizeof field - 1);
  std::memcpy(field, text.c_str(), length);
  if (length < text.length())
    logMessage(ACE_WString(name) + ACE_WString(L" <") + toWideString(text.c_str()) +
               ACE_WString(L"> is longer than 10 bytes: the host record gets <") +
               toWideString(field) + ACE_WString(L">"));
}

// The six version texts into a CAN_VersionDev or the head of a CAN_ConfigDev.
template <class Record> void copyVersions(Record &record, const FirmwareVersions &versions) {
  record.resultByte = 0;
  copyVersionText(record.bootVersion, versions.BootVersion, L"BootVersion");
  copyVersionText(record.bootDate, versions.BootDate, L"BootDate");
  copyVersionText(record.bootCheckSum, versions.BootCheckSum, L"BootCheckSum");
  copyVersionText(record.appVersion, versions.AppVersion, L"AppVersion");
  copyVersionText(record.appDate, versions.AppDate, L"AppDate");
  copyVersionText(record.appCheckSum, versions.AppCheckSum, L"AppCheckSum");
}

template <class T> T *allocateZeroed(size_t count = 1) {
  return static_cast<T *>(std::calloc(count, sizeof(T)));
}

} // namespace

SimuDevice::SimuDevice() : port(std::make_unique<SimuPort>()) {}

SimuDevice::~SimuDevice() {
  port.reset();
  // Records nobody read are released as CAN_DevFreeRxMsg would release them.
  events.drain(releasePayload);
}

void SimuDevice::readConfiguration(const TDomData &document) {
  readOwnElements(document);
  port->readConfiguration(document);
}

void SimuDevice::readOwnElements(const TDomData &document) {
  ACE_GUARD(ACE_Recursive_Thread_Mutex, guard, valuesLock);
  TDomData element;
  // The connection state: "CAN_DEVICESTATE" decides alone when present.
  if (firstElement(document, L"CAN_DEVICESTATE", element) ||
      firstElement(document, L"DEVICESTATE", element))
    configuredConnected = contentOf(element) == ACE_WString(L"DEV_TYPE_RCON");
  else
    configuredConnected = true;

  if (firstElement(document, L"CAN_SERIALNUMBER", element))
    serialNumber = contentOf(element);

  // Absent or empty attributes keep the values read before.
  if (firstElement(document, L"CAN_FIRMWAREVERSION", element)) {
    const struct {
      const wchar_t *name;
      ACE_CString FirmwareVersions::*member;
    } texts[] = {{L"BootVersion", &FirmwareVersions::BootVersion},
                 {L"BootDate", &FirmwareVersions::BootDate},
                 {L"BootCheckSum", &FirmwareVersions::BootCheckSum},
                 {L"AppVersion", &FirmwareVersions::AppVersion},
                 {L"AppDate", &FirmwareVersions::AppDate},
                 {L"AppCheckSum", &FirmwareVersions::AppCheckSum}};
    for (const auto &text : texts) {
      const ACE_WString value = attributeOf(element, text.name);
      if (!value.empty())
        versions.*text.member = toAnsiString(value);
    }
  }

  if (firstElement(document, L"VOLTAGES", element)) {
    const struct {
      const wchar_t *name;
      float SimuDevice::*member;
    } voltages[] = {{L"VBatt", &SimuDevice::batteryVoltage},
                    {L"APCKelmora", &SimuDevice::apcKelmora},
                    {L"APCDravik", &SimuDevice::apcDravik}};
    for (const auto &voltage : voltages) {
      const ACE_WString value = attributeOf(element, voltage.name);
      if (!value.empty())
        this->*voltage.member = voltageFrom(voltage.name, value);
    }
  }

  // The switch is off unless this read finds it on. strtol, unlike atoi,
  // is defined for numbers beyond an int, and any non-zero one means on.
  simulateUploadFailure = false;
  if (firstElement(document, L"DEVICES", element)) {
    const ACE_WString value = attributeOf(element, L"SimulateUploadFailure");
    if (!value.empty())
      simulateUploadFailure = ACE_OS::strtol(toAnsiString(value).c_str(), nullptr, 10) != 0;
  }
}

CAN_STATUS SimuDevice::reserve(const char *name, void **handle) {
  *handle = nullptr;
  if (!isNamed(name)) {
    logMessage(ACE_WString(L"CAN_DevReservation: no device is named <") + toWideString(name) +
               ACE_WString(L">"));
    return E_NOT_FOUND;
  }
  if (reserved)
    return E_ALREADY_RESERVED;
  if (!connected)
    return E_DISCONNECTED;
  bool wasReserved = false;
  if (!reserved.compare_exchange_strong(wasReserved, true))
    return E_ALREADY_RESERVED;
  *handle = this;
  return E_SUCCESS;
}

bool SimuDevice::isNamed(const char *name) const {
  const ACE_WString asked = toWideString(name);
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, valuesLock, false);
  return asked == serialNumber;
}

CAN_STATUS SimuDevice::enumeratePorts(CAN_EnumList &list) const {
  if (!connected)
    return E_DISCONNECTED;
  auto *record = allocateZeroed<CAN_EnumPort>();
  if (record == nullptr)
    return E_INVALID;
  port->describe(*record);
  list.count = 1;
  list.records = record;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::reservePort(ACE_UINT32 number, void **handle) {
  if (!connected)
    return E_DISCONNECTED;
  return port->reserve(number, handle);
}

CAN_STATUS SimuDevice::free() {
  if (port->reserved)
    return E_INVALID;
  reserved = false;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::setMode(ACE_UINT32 newMode) {
  if (!connected)
    return E_DISCONNECTED;
  port->mode = newMode;
  mode = newMode;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::getMode(CAN_ModeDev &record, bool checkConnected) const {
  if (checkConnected && !connected)
    return E_DISCONNECTED;
  record.resultByte = 0;
  record.mode = mode;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::getConfig(CAN_ConfigDev &record, bool checkConnected) const {
  if (checkConnected && !connected)
    return E_DISCONNECTED;
  auto *ports = allocateZeroed<CAN_EnumPort>();
  if (ports == nullptr)
    return E_INVALID;
  port->describe(*ports);
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, valuesLock, E_INVALID);
  copyVersions(record, versions);
  record.count = 1;
  record.ports = ports;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::getTension(CAN_TensionDev &record, bool checkConnected) const {
  if (checkConnected && !connected)
    return E_DISCONNECTED;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, valuesLock, E_INVALID);
  record.resultByte = 0;
  record.batteryVoltage = batteryVoltage;
  record.apcKelmora = apcKelmora;
  record.apcDravik = apcDravik;
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::getVersion(CAN_VersionDev &record) const {
  if (!connected)
    return E_DISCONNECTED;
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, valuesLock, E_INVALID);
  copyVersions(record, versions);
  return E_SUCCESS;
}

CAN_STATUS SimuDevice::setSleep() const { return connected ? E_SUCCESS : E_DISCONNECTED; }

CAN_STATUS SimuDevice::hc16Reset() {
  if (!connected)
    return E_DISCONNECTED;
  auto *value = allocateZeroed<unsigned char>();
  if (value == nullptr)
    return E_INVALID;
  *value = kResetValue;
  AppendBuffer::callEnds();
  ACE_OS::sleep(kResetDuration);
  return queueEvent(DEV_TYPE_RESET, value) ? E_SUCCESS : E_INVALID;
}

CAN_STATUS SimuDevice::endFifo() {
  if (!connected)
    return E_DISCONNECTED;
  return queueEvent(DEV_TYPE_ENDFIFO, nullptr) ? E_SUCCESS : E_INVALID;
}

CAN_STATUS SimuDevice::rxMsg(CAN_EventDev **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs) {
  // The host sees a configured change of connection here, as an event.
  // A queue that refuses it leaves the state changed all the same.
  if (connected && !configuredConnected) {
    setConnected(false);
    queueEvent(DEV_TYPE_DISCONNECTED, nullptr);
    logMessage(L"Connection: the box is now unplugged (the configuration says so)");
  } else if (!connected && configuredConnected) {
    setConnected(true);
    queueEvent(DEV_TYPE_CONNECTED, nullptr);
    logMessage(L"Connection: the box is now plugged in (the configuration says so)");
  }
  *event = events.popForHost(timeoutMs, *pending);
  return *event != nullptr ? E_SUCCESS : E_NO_EVENT;
}

void SimuDevice::freeRxMsg(CAN_EventDev *event) {
  if (event == nullptr)
    return;
  releasePayload(*event);
  std::free(event);
}

void SimuDevice::releasePayload(CAN_EventDev &event) {
  switch (event.type) {
  case DEV_TYPE_CONFIG:
    if (event.data != nullptr) {
      auto *config = static_cast<CAN_ConfigDev *>(event.data);
      if (config->count != 0 && config->ports != nullptr) {
        std::free(config->ports);
        config->ports = nullptr;
      }
      std::free(event.data);
    }
    break;
  case DEV_TYPE_DISCONNECTED:
  case DEV_TYPE_CONNECTED:
  case DEV_TYPE_STATUS_PAIR:
  case DEV_TYPE_TENSION:
  case DEV_TYPE_STATUS:
  case DEV_TYPE_MODE:
  case DEV_TYPE_RESET:
    std::free(event.data);
    break;
  default:
    // The end marker carries nothing, a progress event its value.
    return;
  }
  event.data = nullptr;
}

void SimuDevice::injectEvent(ACE_INT32 type, ACE_UINT8 value) {
  if (type == static_cast<ACE_INT32>(DEV_TYPE_ENDFIFO)) {
    endFifo();
  } else if (type == static_cast<ACE_INT32>(DEV_TYPE_PROGRESS)) {
    queueProgress(value);
  } else if (void *payload = buildInjectedPayload(type, value)) {
    queueEvent(static_cast<ACE_UINT32>(type), payload);
  }
}

void *SimuDevice::buildInjectedPayload(ACE_INT32 type, ACE_UINT8 value) const {
  switch (type) {
  case DEV_TYPE_DISCONNECTED:
  case DEV_TYPE_CONNECTED:
    if (auto *record = allocateZeroed<CAN_EnumDev>()) {
      describe(*record);
      return record;
    }
    return nullptr;
  case DEV_TYPE_STATUS_PAIR:
    if (auto *bytes = allocateZeroed<unsigned char>(2)) {
      bytes[0] = value;
      return bytes;
    }
    return nullptr;
  case DEV_TYPE_STATUS:
  case DEV_TYPE_RESET:
    if (auto *byte = allocateZeroed<unsigned char>()) {
      *byte = value;
      return byte;
    }
    return nullptr;
  case DEV_TYPE_CONFIG:
    if (auto *record = allocateZeroed<CAN_ConfigDev>()) {
      if (getConfig(*record, false) == E_SUCCESS)
        return record;
      std::free(record);
    }
    return nullptr;
  case DEV_TYPE_TENSION:
    if (auto *record = allocateZeroed<CAN_TensionDev>()) {
      getTension(*record, false);
      return record;
    }
    return nullptr;
  case DEV_TYPE_MODE:
    if (auto *record = allocateZeroed<CAN_ModeDev>()) {
      getMode(*record, false);
      return record;
    }
    return nullptr;
  default:
    return nullptr;
  }
}

bool SimuDevice::queueEvent(ACE_UINT32 type, void *payload) {
  CAN_EventDev event = {};
  event.type = type;
  event.data = payload;
  if (events.push(event) == 0)
    return true;
  releasePayload(event);
  return false;
}

bool SimuDevice::queueProgress(ACE_UINT32 value) {
  CAN_EventDev event = {};
  event.type = DEV_TYPE_PROGRESS;
  event.data = reinterpret_cast<void *>(static_cast<std::uintptr_t>(value));
  return events.push(event) == 0;
}

void SimuDevice::setConnected(bool state) {
  port->setDeviceConnected(state);
  connected = state;
}

void SimuDevice::describe(CAN_EnumDev &record) const {
  std::memset(&record, 0, sizeof record);
  ACE_GUARD(ACE_Recursive_Thread_Mutex, guard, valuesLock);
  const auto name = toAnsi(serialNumber.c_str());
  const size_t length = std::min<size_t>(std::strlen(name.get()), sizeof record.name - 1);
  std::memcpy(record.name, name.get(), length);
  record.fixedOne = 1;
  record.reserved = reserved ? 1 : 0;
  record.disconnected = connected ? 0 : 1;
}
