// session/: the session over the library and the steps the commands take through it.
// One host session with the simulated box: the library loaded and its
// exports resolved, the configuration checked, and (once started) the
// driver, ended when the session goes. Every command builds on it.
#pragma once

#include "library/DriverApi.h"
#include "session/CancellableWait.h"
#include "system/LibraryLoader.h"

#include <memory>
#include <string>

class Session {
public:
  // Loads `library` (the one the lookup finds when empty) and checks that
  // `configuration` is a readable XML file. Throws SetupError.
  Session(const std::string &library, const std::string &configuration);
  ~Session();
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  const DriverApi &api() const { return api_; }
  // True when the loaded library exports a function of that name.
  bool exports(const std::string &name) const { return library_->symbol(name.c_str()) != nullptr; }
  const std::string &libraryPath() const { return libraryPath_; }
  // The configuration as an absolute path: what CAN_DrvInit receives.
  const std::string &configuration() const { return configuration_; }
  // A path the user typed, made absolute against the directory the program
  // started in (the session works in the configuration's folder).
  std::string userPath(const std::string &path) const;

  // CAN_DrvInit with the configuration. The session works in the
  // configuration's folder from then on, so that scenario paths written
  // relative to it resolve as they do for a host started there.
  CAN_STATUS start();
  // CAN_DrvEnd, once; the device handle is gone with the driver.
  void end();

  // Lists the devices and reserves the first one by its name (or reserves
  // `name` without listing): the handle is kept for the device calls.
  // Prints one line per call (`quiet`: only a call that fails). The
  // commands reserve through reserveDevice (DeviceSteps.h), which also reads
  // the queues once.
  CAN_STATUS reserve(bool quiet = false, const std::string &name = "");
  // CAN_DevFree on the reserved device, printed likewise.
  CAN_STATUS freeDevice(bool quiet = false);
  CAN_DEV_HANDLE device() const { return device_; }
  const std::string &deviceName() const { return deviceName_; }
  // False once a DEV_TYPE_DISCONNECTED event was read (until a connected one).
  bool connected() const { return connected_; }
  void noteConnection(uint32_t deviceEventType) const;

  // The wait that Ctrl-C may cut short, for the queue reads of the session
  // (null: none).
  CancellableWait *wait() const { return wait_; }
  void setWait(CancellableWait *wait) { wait_ = wait; }

private:
  std::string libraryPath_;
  std::unique_ptr<LibraryLoader> library_;
  DriverApi api_;
  CAN_STATUS listDevices(bool quiet);

  std::string startFolder_;
  std::string configuration_;
  bool started_ = false;
  CAN_DEV_HANDLE device_ = nullptr;
  std::string deviceName_;
  mutable bool connected_ = true;
  CancellableWait *wait_ = nullptr;
};
