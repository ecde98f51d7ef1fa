#include "FirmwareFlash.h"

#include "Console.h"
#include "Output.h"
#include "ProgressBar.h"
#include "Records.h"

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

// How long the reader waits for each event; a download sends one every
// 50 ms, so a quiet queue this long after the call returned is drained.
constexpr uint32_t kReaderTimeoutMs = 200;

struct ProgressReader {
  ProgressReader(const Session &session, ProgressBar &bar) : session(session), bar(bar) {}

  const Session &session;
  ProgressBar &bar;
  // Set by the downloading thread once the call has returned, before it
  // queues the end marker that stops the reader; an end marker read earlier
  // is an older one. `endKnown` and `endQueued` say whether that marker
  // could be queued: without one the reader stops on a quiet queue.
  std::atomic<bool> downloadDone{false};
  std::atomic<bool> endKnown{false};
  std::atomic<bool> endQueued{false};
  unsigned progressEvents = 0;
  std::vector<std::string> otherEvents;

  void run() {
    const DriverApi &api = session.api();
    for (;;) {
      CAN_EventDev *event = nullptr;
      uint32_t pending = 0;
      const CAN_STATUS status = api.DevRxMsg(session.device(), &event, &pending, kReaderTimeoutMs);
      if (status != E_SUCCESS || event == nullptr) {
        if (endKnown && !endQueued)
          return;
        continue;
      }
      const uint32_t type = event->type;
      if (type == DEV_TYPE_PROGRESS) {
        ++progressEvents;
        bar.update(progressValue(*event));
      } else if (type != DEV_TYPE_ENDFIFO) {
        otherEvents.push_back(describeDeviceEvent(*event));
      }
      api.DevFreeRxMsg(event);
      if (type == DEV_TYPE_ENDFIFO && downloadDone)
        return;
    }
  }
};

std::string resultText(const DownloadResult &result) {
  char text[48];
  std::snprintf(text, sizeof text, "result {0x%02X, %u}", static_cast<unsigned>(result.errorCode),
                static_cast<unsigned>(result.written));
  return text;
}

} // namespace

FlashOutcome flashFirmware(const Session &session, const std::string &image,
                           const std::string &shownName) {
  const DriverApi &api = session.api();
  ProgressBar bar(outputIsTerminal());
  ProgressReader reader(session, bar);
  std::thread readerThread([&reader] { reader.run(); });

  FlashOutcome outcome;
  outcome.status = api.DevBoardTeleFirm(session.device(), image.c_str(), &outcome.result);
  // The end marker wakes the reader behind the last progress event.
  reader.downloadDone = true;
  reader.endQueued = api.DevEndFifo(session.device()) == E_SUCCESS;
  reader.endKnown = true;
  readerThread.join();

  outcome.progress = bar.percent();
  outcome.progressEvents = reader.progressEvents;
  bar.finish(std::to_string(outcome.progressEvents) + " events");
  printStep("CAN_DevBoardTeleFirm(" + shownName + ")", outcome.status, resultText(outcome.result));
  for (const std::string &other : reader.otherEvents)
    printNote("  event during the download", other);
  return outcome;
}
