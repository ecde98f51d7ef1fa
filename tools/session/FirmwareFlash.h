// A firmware download as a host runs it: CAN_DevBoardTeleFirm blocks the
// calling thread while a second thread reads the DEV_TYPE_PROGRESS events
// from the device queue and feeds a progress bar. That thread reads the
// driver queue too, so that a configuration saved during the download is
// read again and an unplugged box shows while the download runs.
#pragma once

#include "session/Session.h"

#include <cstdint>
#include <string>

struct FlashOutcome {
  CAN_STATUS status = E_SUCCESS;
  DownloadResult result{};
  uint32_t progress = 0;       // last progress value read
  unsigned progressEvents = 0; // how many progress events were read
  bool unplugged = false;      // a DEV_TYPE_DISCONNECTED came during the download
};

// Downloads `image` (an absolute path), printing the bar and then the call's
// line under the name `shownName`. Other driver and device events that
// arrive during the download are printed after it. Ctrl-C (when the session
// lets it cut waits short) stops the bar; the call itself cannot be broken
// off, so this returns when it does.
FlashOutcome flashFirmware(const Session &session, const std::string &image,
                           const std::string &shownName);
