#include "session/Session.h"

#include "Errors.h"
#include "files/Paths.h"
#include "library/LibraryLookup.h"
#include "output/Output.h"
#include "output/Records.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

// The first non-blank character of an XML file (after a UTF-8 byte-order
// mark) is '<'; anything else is not a configuration at all.
bool looksLikeXml(const std::string &path) {
  FILE *file = std::fopen(path.c_str(), "rb");
  if (file == nullptr)
    return false;
  char head[256];
  const size_t read = std::fread(head, 1, sizeof head, file);
  std::fclose(file);
  size_t at = read >= 3 && static_cast<unsigned char>(head[0]) == 0xEF ? 3 : 0;
  while (at < read && (head[at] == ' ' || head[at] == '\t' || head[at] == '\r' || head[at] == '\n'))
    ++at;
  return at < read && head[at] == '<';
}

} // namespace

Session::Session(const std::string &library, const std::string &configuration)
    : startFolder_(fs::current_path().string()),
      configuration_(fs::absolute(configuration).string()) {
  if (!fileReadable(configuration))
    throw SetupError("cannot read the configuration " + configuration);
  if (!looksLikeXml(configuration))
    throw SetupError(configuration + " is not an XML configuration");
  const LibraryChoice choice = chooseLibrary(library);
  libraryPath_ = choice.path;
  library_ = std::make_unique<LibraryLoader>(libraryPath_);
  if (!library_->loaded())
    throw SetupError("cannot load the library " + libraryPath_ + ": " + library_->error() +
                     (choice.missed.empty() ? "" : "\n  (" + choice.missed + "; --library PATH)"));
  std::string missing;
  if (!api_.resolve(*library_, missing))
    throw SetupError(libraryPath_ + " does not export " + missing);
}

Session::~Session() {
  end();
  std::error_code error;
  fs::current_path(startFolder_, error);
}

std::string Session::userPath(const std::string &path) const {
  return (fs::path(startFolder_) / path).string();
}

CAN_STATUS Session::start() {
  std::error_code error;
  fs::current_path(fs::path(configuration_).parent_path(), error);
  const CAN_STATUS status = api_.DrvInit(configuration_.c_str());
  started_ = true;
  return status;
}

void Session::end() {
  if (!started_)
    return;
  api_.DrvEnd();
  started_ = false;
  device_ = nullptr;
}

CAN_STATUS Session::reserve(bool quiet, const std::string &name) {
  if (!name.empty())
    deviceName_ = name;
  else if (const CAN_STATUS listed = listDevices(quiet); listed != E_SUCCESS)
    return listed;

  CAN_DEV_HANDLE handle = nullptr;
  const CAN_STATUS reserved = api_.DevReservation(deviceName_.c_str(), &handle);
  if (!quiet || reserved != E_SUCCESS)
    printStep("CAN_DevReservation(\"" + deviceName_ + "\")", reserved,
              reserved == E_SUCCESS ? "the box is ours" : "");
  if (reserved != E_SUCCESS)
    return reserved;
  device_ = handle;
  return reserved;
}

void Session::noteConnection(uint32_t deviceEventType) const {
  if (deviceEventType == DEV_TYPE_DISCONNECTED || deviceEventType == DEV_TYPE_CONNECTED)
    connected_ = deviceEventType == DEV_TYPE_CONNECTED;
}

CAN_STATUS Session::listDevices(bool quiet) {
  CAN_EnumList list{0, nullptr};
  const CAN_STATUS listed = api_.DevEnumerate(&list);
  if (listed != E_SUCCESS || list.count == 0 || list.records == nullptr) {
    printStep("CAN_DevEnumerate(list)", listed, "no device listed");
    std::free(list.records);
    return listed != E_SUCCESS ? listed : E_NOT_FOUND;
  }
  const auto &first = *static_cast<const CAN_EnumDev *>(list.records);
  if (!quiet)
    printStep("CAN_DevEnumerate(list)", listed,
              std::to_string(list.count) + " device: " + describeDevice(first));
  deviceName_ = fieldText(first.name);
  std::free(list.records);
  return E_SUCCESS;
}

CAN_STATUS Session::freeDevice(bool quiet) {
  const CAN_STATUS status = api_.DevFree(device_);
  if (!quiet || status != E_SUCCESS)
    printStep("CAN_DevFree()", status, status == E_SUCCESS ? "reservation released" : "");
  if (status == E_SUCCESS)
    device_ = nullptr;
  return status;
}
