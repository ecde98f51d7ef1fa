#include "core/SimuDriver.h"

#include "core/BenchOutputs.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "device/SimuDevice.h"
#include "platform/AppendBuffer.h"
#include "platform/CodePage.h"
#include "platform/TDomData.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string>

namespace {
// Host threads may reach for the driver at once; the first creates it.
std::atomic<SimuDriver *> theDriver{nullptr};
std::mutex creationLock;
ACE_WString *storedPath = nullptr;
std::atomic<SimuDriver::ConfigurationStep> lastConfigurationStep{nullptr};
} // namespace

SimuDriver::SimuDriver(const ACE_WString &path)
    : LecteurXML(path), device(std::make_unique<SimuDevice>()) {
  // A driver whose queues could not be made for lack of memory is not made.
  if (!events.usable() || !device->events.usable() || !device->port->events.usable())
    throw std::bad_alloc();
  // The log and the trace are written every few milliseconds while the
  // driver lives, not at every call.
  AppendBuffer::startWriter();
}

SimuDriver::~SimuDriver() {
  device.reset();
  // Records nobody read are released as CAN_DrvFreeRxMsg would release them.
  events.drain(releasePayload);
}

SimuDriver *SimuDriver::instance() {
  SimuDriver *driver = theDriver.load();
  if (driver != nullptr)
    return driver;
  std::lock_guard<std::mutex> guard(creationLock);
  if (theDriver.load() == nullptr)
    theDriver = new SimuDriver(configPath());
  return theDriver.load();
}

SimuDriver *SimuDriver::existing() { return theDriver.load(); }

void SimuDriver::end() {
  // The driver stops being the instance before its destruction starts, so
  // that nothing reached through the instance meets it half destroyed.
  echoLogToConsole(false);
  delete theDriver.exchange(nullptr);
  AppendBuffer::stopWriter();
  setConfigPath(ACE_WString());
}

void SimuDriver::setConfigPath(const ACE_WString &path) {
  if (storedPath != nullptr)
    *storedPath = path;
}

const ACE_WString &SimuDriver::configPath() {
  static const ACE_WString empty;
  return storedPath != nullptr ? *storedPath : empty;
}

void SimuDriver::processAttach() {
  if (storedPath == nullptr)
    storedPath = new ACE_WString();
}

void SimuDriver::setLastConfigurationStep(ConfigurationStep step) {
  lastConfigurationStep.store(step);
}

void SimuDriver::processDetach() {
  delete storedPath;
  storedPath = nullptr;
}

bool SimuDriver::parse(const ACE_WString &path) {
  TDomData document;
  TDomData::LoadProblem problem;
  document.load(path, &problem, nullptr);
  const bool reread = readOnce;
  readOnce = true;
  if (document.isNull()) {
    logConfigurationProblem(path, problem, reread);
    return false;
  }
  // Files to write, named by the bench for hosts that cannot set variables.
  BenchOutputs::open(document, path);
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"MODECONSOLE", found, true);
  consoleMode = found.size() != 0;
  echoLogToConsole(consoleMode);
  // The device reads its section and hands the document on to its port.
  device->readConfiguration(document);
  // Faults and events the bench asks for, once the device and port hold the
  // values they describe.
  if (const ConfigurationStep step = lastConfigurationStep.load())
    step(document);
  if (reread)
    logMessage(L"Configuration <" + path + L"> re-read: applied");
  return true;
}

void SimuDriver::logConfigurationProblem(const ACE_WString &path,
                                         const TDomData::LoadProblem &problem, bool reread) {
  ACE_WString why = toWideString(problem.message.c_str());
  if (problem.line != 0)
    why = L"line " + decimalText(problem.line) + L": " + why;
  logMessage(L"Configuration <" + path + (reread ? L"> re-read: " : L"> read: ") + why +
             (reread ? L": kept the previous one" : L": nothing applied"));
}

CAN_STATUS SimuDriver::enumerate(CAN_EnumList &list) {
  if (list.records != nullptr) {
    logMessage(L"CAN_DevEnumerate: the list already holds records");
    return E_NULL_POINTER;
  }
  auto *record = static_cast<CAN_EnumDev *>(std::calloc(1, sizeof(CAN_EnumDev)));
  if (record == nullptr)
    return E_INVALID;
  device->describe(*record);
  list.count = 1;
  list.records = record;
  return E_SUCCESS;
}

CAN_STATUS SimuDriver::reserve(const char *name, void **handle) {
  return device->reserve(name, handle);
}

void SimuDriver::pushEndMarker() {
  const CAN_EventDrv marker = {};
  events.push(marker);
}

void SimuDriver::injectEvent(ACE_INT32 type, ACE_UINT8 detail) {
  if (type == 0) {
    pushEndMarker();
    return;
  }
  if (type != 100 && type != 101)
    return;
  auto *description = static_cast<CAN_EnumDev *>(std::calloc(1, sizeof(CAN_EnumDev)));
  if (description == nullptr)
    return;
  device->describe(*description);
  CAN_EventDrv event = {};
  event.type = static_cast<ACE_UINT32>(type);
  event.detail = detail;
  event.data = description;
  if (events.push(event) != 0)
    std::free(description);
}

CAN_STATUS SimuDriver::rxMsg(CAN_EventDrv **event, ACE_UINT32 *pending, ACE_UINT32 timeoutMs) {
  // An edited configuration is re-read here, before any waiting.
  reloadIfChanged();
  *event = events.popForHost(timeoutMs, *pending);
  return *event != nullptr ? E_SUCCESS : E_NO_EVENT;
}

void SimuDriver::releasePayload(CAN_EventDrv &event) {
  if ((event.type == 100 || event.type == 101) && event.data != nullptr)
    std::free(event.data);
  event.data = nullptr;
}

void SimuDriver::freeRxMsg(CAN_EventDrv *event) {
  if (event == nullptr)
    return;
  releasePayload(*event);
  std::free(event);
}
