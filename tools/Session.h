// One host session with the simulated box: the library loaded and its
// exports resolved, the configuration checked, and (once started) the
// driver, ended when the session goes. Every command builds on it.
#pragma once

#include "DriverApi.h"
#include "LibraryLoader.h"

#include <memory>
#include <string>

class Session {
public:
  // Loads `library` (the default one when empty) and checks that
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

  // Lists the devices and reserves the first one by its name: the handle
  // is kept for the device calls. Prints one line per call (`quiet`: only
  // a call that fails).
  CAN_STATUS reserveDevice(bool quiet = false);
  // CAN_DevFree on the reserved device, printed likewise.
  CAN_STATUS freeDevice(bool quiet = false);
  CAN_DEV_HANDLE device() const { return device_; }
  const std::string &deviceName() const { return deviceName_; }

private:
  std::string libraryPath_;
  std::unique_ptr<LibraryLoader> library_;
  DriverApi api_;
  std::string startFolder_;
  std::string configuration_;
  bool started_ = false;
  CAN_DEV_HANDLE device_ = nullptr;
  std::string deviceName_;
};

// The library this program loads without --library: the one built beside
// it when that file is there, else the installed library by name.
std::string defaultLibraryPath();
