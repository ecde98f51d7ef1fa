// A host session on the simulated bus, through the library's exports: the
// configuration and the ECU's scenario written out, the device and its port
// reserved, the association table loaded and a one-to-one channel open. The
// ECU (idTx 7E0, idRx 7E8, address 10) answers the request 22F190 with a
// 20-byte frame and the raw frame 3E00 with 7E00.
#pragma once

#include "HostLibrary.h"

#include <cstdint>
#include <string>

class HostSession {
public:
  // Loads the library at `libraryPath` and opens the session; throws
  // std::runtime_error when a step is refused. `outputs` goes into the
  // configuration as it is (LOGFILE, TRACEFILE, REPORTFILE elements).
  explicit HostSession(const std::string &libraryPath, const std::string &outputs = "");

  // Sets the device's mode: 1 for diagnostic requests, 2 for raw frames.
  void setMode(uint32_t mode);

  // One diagnostic request sent; false when the call is refused.
  bool sendRequest();
  // Reads one channel event, waiting up to `timeoutMs`, checks that it is
  // the ECU's answer and releases it. False for anything else.
  bool receiveAnswer(uint32_t timeoutMs);
  // CAN_ChnSendDiag, CAN_ChnRxMsg and CAN_ChnFreeRxMsg: true when the
  // answer came back whole.
  bool diagnosticRoundTrip() { return sendRequest() && receiveAnswer(1000); }
  // CAN_PrtSendTrame, CAN_PrtRxMsg and CAN_PrtFreeRxMsg, in mode 2.
  bool rawFrameRoundTrip();

  HostLibrary library;

private:
  CAN_DEV_HANDLE device_ = nullptr;
  CAN_PRT_HANDLE port_ = nullptr;
  CAN_CHN_HANDLE channel_ = nullptr;
  uint8_t request_[3] = {0x22, 0xF1, 0x90};
  CAN_DiagMsg message_ = {0, 3, request_};
  CAN_FramePort frame_ = {};
};
